// ztImage against slow references in double precision.
#include "TestSupport.h"

#include "ztImage.h"

#include <cmath>
#include <random>

namespace
{

class ImageOperationsTest : public SceneTest
{
  protected:
    /// Random pixels of premultiplied alpha.
    osg::ImagePtr makeNoise(int width, int height, unsigned seed)
    {
        osg::ImagePtr const image = makeImage(width, height);
        std::mt19937 random(seed);
        for (std::size_t i = 0; i < image->pixels.size(); ++i)
            image->pixels[i] = osg::UInt8(random());
        ztImage::premultiply(image);
        return image;
    }
};

/// A channel of a resampled pixel: all pixels of the source, each with its weight.
double resampled(osg::ImagePtr const& source, int width, int height, int x, int y, int channel,
                 ztImageGenericFilter const& filter)
{
    double const stepX = double(source->width) / width, stepY = double(source->height) / height;
    double sum = 0, weights = 0;
    for (int row = 0; row < source->height; ++row)
        for (int column = 0; column < source->width; ++column)
        {
            double const distanceX = (column + 0.5) - (x + 0.5) * stepX, distanceY = (row + 0.5) - (y + 0.5) * stepY;
            double const weight =
                filter.filter(distanceX / std::max(stepX, 1.0)) * filter.filter(distanceY / std::max(stepY, 1.0));
            sum += weight * pixelAt(source, column, row)[std::size_t(channel)];
            weights += weight;
        }
    return sum / weights;
}

TEST_F(ImageOperationsTest, ScaleAgreesWithTheReference)
{
    osg::ImagePtr const source = makeNoise(17, 11, 1);
    ztImageBilinearFilter wide;
    wide.support = 2.5;
    for (ztImageBilinearFilter const& filter : {ztImageBilinearFilter(), wide})
        for (auto const& [width, height] : {std::pair{17, 11}, {34, 22}, {5, 3}, {1, 1}, {40, 2}, {3, 29}, {16, 12}})
        {
            osg::ImagePtr scaled = makeImage(1, 1);
            ASSERT_TRUE(ztImage::scale(source, width, height, scaled, filter));
            ASSERT_EQ(scaled->width, width);
            ASSERT_EQ(scaled->height, height);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    for (int c = 0; c < 4; ++c)
                        ASSERT_NEAR(pixelAt(scaled, x, y)[std::size_t(c)],
                                    resampled(source, width, height, x, y, c, filter), 1.0)
                            << width << 'x' << height << ' ' << x << ' ' << y;
        }
}

TEST_F(ImageOperationsTest, ScaleKeepsAnEvenColour)
{
    osg::ImagePtr image = makeImage(31, 7, {200, 100, 50, 250});
    for (auto const& [width, height] : {std::pair{100, 3}, {2, 90}, {31, 7}})
    {
        ASSERT_TRUE(ztImage::scale(image, width, height, image, ztImageBilinearFilter())) << "onto itself";
        EXPECT_EQ(image->pixels, makeImage(width, height, {200, 100, 50, 250})->pixels);
    }
}

TEST_F(ImageOperationsTest, ScaleOfWhatCannotBeIsEmpty)
{
    osg::ImagePtr const source = makeImage(4, 4, {1, 2, 3, 4}), empty = makeImage(0, 0);
    for (auto const& [name, from, width, height] : {std::tuple{"no width", source, 0, 5},
                                                    {"negative height", source, 5, -1},
                                                    {"no bytes", empty, 5, 5},
                                                    {"null", osg::ImagePtr(), 5, 5},
                                                    {"too large", source, 30000, 30000},
                                                    {"too wide", source, 1 << 25, 1}})
    {
        osg::ImagePtr destination = makeImage(3, 3);
        EXPECT_FALSE(ztImage::scale(from, width, height, destination, ztImageBilinearFilter())) << name;
        EXPECT_EQ(destination->width, 0) << name;
        EXPECT_EQ(destination->height, 0) << name;
        EXPECT_EQ(destination->pixelBuffer(), nullptr) << name;
    }
    osg::ImagePtr null;
    EXPECT_FALSE(ztImage::scale(source, 5, 5, null, ztImageBilinearFilter()));
}

TEST_F(ImageOperationsTest, FilterWithoutWeightTakesTheNearestPixel)
{
    osg::ImagePtr const source = makeNoise(4, 1, 2);
    for (double support : {0.0, -1.0, std::nan("")})
    {
        ztImageBilinearFilter filter;
        filter.support = support;
        osg::ImagePtr scaled = makeImage(1, 1);
        ASSERT_TRUE(ztImage::scale(source, 8, 1, scaled, filter));
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(pixelAt(scaled, x, 0), pixelAt(source, x / 2, 0)) << support << ' ' << x;
    }
}

TEST_F(ImageOperationsTest, TriangleFilter)
{
    ztImageBilinearFilter const filter;
    for (auto const& [x, expected] :
         {std::pair{0.0, 1.0}, {0.25, 0.75}, {-0.25, 0.75}, {1.0, 0.0}, {-1.0, 0.0}, {2.0, 0.0}})
        EXPECT_EQ(filter.filter(x), expected) << x;
}

TEST_F(ImageOperationsTest, BlendIsExactForEveryAlphaAndTarget)
{
    // Columns are the source's alpha, rows the target's value; the source's colour is its alpha, and half of
    // it.
    osg::ImagePtr const source = makeImage(256, 256), target = makeImage(256, 256);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
            for (int c = 0; c < 4; ++c)
            {
                std::size_t const i = std::size_t((y * 256 + x) * 4 + c);
                source->pixels[i] = osg::UInt8(c == 1 ? x / 2 : x);
                target->pixels[i] = osg::UInt8(y);
            }
    ASSERT_TRUE(ztImage::blendImage(target, source, {0, 0, 0}, {1, 1, 1, 1}, 1, 0));
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(pixelAt(target, x, y)[std::size_t(c)],
                          std::lround((c == 1 ? x / 2 : x) + y * (255 - x) / 255.0))
                    << x << ' ' << y;
}

TEST_F(ImageOperationsTest, BlendIsModulated)
{
    struct Row
    {
        char const* name;
        osg::Color4f color;
        float opacity, additive;
        std::array<int, 4> expected;
    };
    // (100, 50, 0, 200) over (40, 80, 120, 255)
    for (Row const& row : {
             Row{"as it is", {1, 1, 1, 1}, 1, 0, {109, 67, 26, 255}},
             {"colour", {0.5f, 2, 1, 1}, 1, 0, {59, 117, 26, 255}},
             {"alpha of the colour", {1, 1, 1, 0.5f}, 1, 0, {74, 74, 73, 255}},
             {"opacity", {1, 1, 1, 1}, 0.5f, 0, {74, 74, 73, 255}},
             {"added", {1, 1, 1, 1}, 1, 1, {140, 130, 120, 255}},
             {"half added", {1, 1, 1, 1}, 1, 0.5f, {124, 99, 73, 255}},
             {"nothing", {1, 1, 1, 1}, 0, 0, {40, 80, 120, 255}},
             {"beyond the range", {9, -9, 1, 1}, 1, 0, {255, 0, 26, 255}},
             {"not a number", {std::nanf(""), 1, 1, 1}, 1, 0, {0, 67, 26, 255}},
         })
    {
        osg::ImagePtr const target = makeImage(1, 1, {40, 80, 120, 255});
        ztImage::blendImage(target, makeImage(1, 1, {100, 50, 0, 200}), {0, 0, 0}, row.color, row.opacity,
                            row.additive);
        EXPECT_EQ(pixelAt(target, 0, 0), row.expected) << row.name;
    }
}

TEST_F(ImageOperationsTest, BlendMarksWhatItWrites)
{
    osg::ImagePtr const target = makeImage(4, 4), source = makeImage(9, 9, {255, 255, 255, 255});
    auto const blend = [](osg::ImagePtr const& onto, osg::ImagePtr const& image, float x) {
        Recorder recorder;
        bool const blended = ztImage::blendImage(onto, image, {x, -2.9f, 0}, {1, 1, 1, 1}, 1, 0);
        return (blended ? "blended " : "") + recorder.text();
    };
    EXPECT_EQ(blend(target, source, -3), "blended !8");
    EXPECT_EQ(target->pixels, makeImage(4, 4, {255, 255, 255, 255})->pixels) << "cut at all four edges";
    EXPECT_EQ(blend(target, source, 4), "") << "beside the target";
    EXPECT_EQ(blend(target, source, -9), "");
    EXPECT_EQ(blend(osg::NullFC, source, 0), "");
    EXPECT_EQ(blend(target, makeImage(0, 0), 0), "");

    osg::ImagePtr const self = makeImage(2, 1, {255, 0, 0, 255});
    self->pixels = {1, 2, 3, 255, 4, 5, 6, 255};
    ztImage::blendImage(self, self, {1, 0, 0}, {1, 1, 1, 1}, 1, 0);
    EXPECT_EQ(self->pixels, (std::vector<osg::UInt8>{1, 2, 3, 255, 1, 2, 3, 255})) << "onto itself, shifted";
}

TEST_F(ImageOperationsTest, PremultiplyRoundsEveryPair)
{
    osg::ImagePtr const image = makeImage(256, 256);
    for (std::size_t i = 0; i < image->pixels.size(); ++i)
        image->pixels[i] = osg::UInt8(i % 4 == 3 ? i / 1024 : i / 4);
    ztImage::premultiply(image);
    for (int alpha = 0; alpha < 256; ++alpha)
        for (int value = 0; value < 256; ++value)
        {
            int const expected = int(std::lround(value * alpha / 255.0));
            ASSERT_EQ(pixelAt(image, value, alpha), (std::array{expected, expected, expected, alpha}));
        }
    ztImage::premultiply(osg::NullFC);
}

} // namespace
