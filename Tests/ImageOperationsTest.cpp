// ztImage against slow references in double precision.
#include "TestSupport.h"

#include "ztImage.h"

#include <cmath>
#include <random>

namespace
{

using ImageOperationsTest = SceneTest;

/// How much a source pixel counts for a new one, along one direction.
double weigh(int sourcePixel, int sourceSize, int newPixel, int newSize, ztImageGenericFilter const& filter)
{
    double const step = double(sourceSize) / newSize;
    return filter.filter((sourcePixel + 0.5 - (newPixel + 0.5) * step) / std::max(step, 1.0));
}

/// A channel of a resampled pixel: all pixels of the source, each with its weight.
double resampled(osg::Image const& source, int width, int height, int x, int y, int channel,
                 ztImageGenericFilter const& filter)
{
    double sum = 0, weights = 0;
    for (int i = 0; i < source.width * source.height; ++i)
    {
        double const weight = weigh(i % source.width, source.width, x, width, filter) *
                              weigh(i / source.width, source.height, y, height, filter);
        sum += weight * source.pixels[std::size_t(4 * i + channel)];
        weights += weight;
    }
    return sum / weights;
}

TEST_F(ImageOperationsTest, ScaleAgreesWithTheReference)
{
    osg::ImagePtr const source = makeImage(17, 11);
    std::mt19937 random(1);
    for (osg::UInt8& byte : source->pixels)
        byte = osg::UInt8(random());
    ztImageBilinearFilter wide;
    wide.support = 2.5;
    for (ztImageBilinearFilter const& filter : {ztImageBilinearFilter(), wide})
        for (auto const& [width, height] : {std::pair{17, 11}, {34, 22}, {5, 3}, {1, 1}, {40, 2}, {3, 29}, {16, 12}})
        {
            osg::ImagePtr scaled = makeImage(1, 1), even = makeImage(31, 7, {200, 100, 50, 250});
            ASSERT_TRUE(ztImage::scale(source, width, height, scaled, filter));
            ASSERT_EQ(std::pair(scaled->width, scaled->height), std::pair(width, height));
            for (int i = 0; i < width * height * 4; ++i)
                ASSERT_NEAR(scaled->pixels[std::size_t(i)],
                            resampled(*source, width, height, i / 4 % width, i / 4 / width, i % 4, filter), 1.0)
                    << width << 'x' << height << ' ' << i;
            ASSERT_TRUE(ztImage::scale(even, width, height, even, filter)) << "onto itself";
            EXPECT_EQ(even->pixels, makeImage(width, height, {200, 100, 50, 250})->pixels) << "an even colour stays";
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
                                                    {"too wide", source, 1 << 25, 1},
                                                    {"too high", source, 1, 1 << 25}})
    {
        osg::ImagePtr destination = makeImage(3, 3);
        Recorder recorder;
        EXPECT_FALSE(ztImage::scale(from, width, height, destination, ztImageBilinearFilter())) << name;
        EXPECT_EQ(recorder.text({{"destination", destination}}), "!destination") << name;
        EXPECT_EQ(std::pair(destination->width, destination->height), std::pair(0, 0)) << name;
        EXPECT_EQ(destination->pixelBuffer(), nullptr) << name;
    }
    osg::ImagePtr null;
    EXPECT_FALSE(ztImage::scale(source, 5, 5, null, ztImageBilinearFilter()));
}

TEST_F(ImageOperationsTest, TriangleFilter)
{
    ztImageBilinearFilter filter;
    for (auto const& [x, expected] :
         {std::pair{0.0, 1.0}, {0.25, 0.75}, {-0.25, 0.75}, {1.0, 0.0}, {-1.0, 0.0}, {2.0, 0.0}})
        EXPECT_EQ(filter.filter(x), expected) << x;
    osg::ImagePtr const source = makeImage(2, 1, {1, 2, 3, 4});
    source->pixels[0] = 9;
    for (double support : {0.0, -1.0, std::nan("")})
    {
        filter.support = support;
        osg::ImagePtr scaled = makeImage(1, 1);
        ASSERT_TRUE(ztImage::scale(source, 4, 1, scaled, filter));
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(pixelAt(scaled, x, 0)[0], x < 2 ? 9 : 1) << support << ": no weight, so the nearest pixel";
    }
}

TEST_F(ImageOperationsTest, EveryPairOfBytesIsExact)
{
    // Columns are the alpha, rows the target's value and the colour to premultiply; the blended colour is the alpha,
    // and half of it.
    auto const alpha = [](std::size_t i) { return int(i / 4 % 256); };
    auto const value = [](std::size_t i) { return int(i / 1024); };
    osg::ImagePtr const source = makeImage(256, 256), target = makeImage(256, 256), straight = makeImage(256, 256);
    for (std::size_t i = 0; i < target->pixels.size(); ++i)
    {
        source->pixels[i] = osg::UInt8(i % 4 == 1 ? alpha(i) / 2 : alpha(i));
        target->pixels[i] = osg::UInt8(value(i));
        straight->pixels[i] = osg::UInt8(i % 4 == 3 ? alpha(i) : value(i));
    }
    Recorder recorder;
    ASSERT_TRUE(ztImage::blendImage(target, source, {0, 0, 0}, {1, 1, 1, 1}, 1, 0));
    ztImage::premultiply(straight);
    EXPECT_EQ(recorder.text({{"target", target}, {"straight", straight}}), "!8target !8straight");
    for (std::size_t i = 0; i < target->pixels.size(); ++i)
    {
        ASSERT_EQ(target->pixels[i], std::lround(source->pixels[i] + value(i) * (255 - alpha(i)) / 255.0)) << i;
        ASSERT_EQ(straight->pixels[i], i % 4 == 3 ? alpha(i) : std::lround(value(i) * alpha(i) / 255.0)) << i;
    }
    ztImage::premultiply(osg::NullFC);
}

TEST_F(ImageOperationsTest, BlendIsModulated)
{
    using Row = std::tuple<char const*, osg::Color4f, float, float, std::array<int, 4>>;
    // (100, 50, 0, 200) over (40, 80, 120, 255)
    for (auto const& [name, color, opacity, additive, expected] : {
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
        osg::ImagePtr const target = makeImage(1, 1, {40, 80, 120, 255}), source = makeImage(1, 1, {100, 50, 0, 200});
        ztImage::blendImage(target, source, {0, 0, 0}, color, opacity, additive);
        EXPECT_EQ(pixelAt(target, 0, 0), expected) << name;
    }
}

TEST_F(ImageOperationsTest, BlendWritesWhereTheImagesMeet)
{
    osg::ImagePtr const target = makeImage(4, 4), source = makeImage(9, 9, {255, 255, 255, 255});
    osg::ImagePtr const white = makeImage(4, 4, {255, 255, 255, 255}), noBytes = makeImage(0, 0);
    noBytes->width = noBytes->height = 9;
    auto const blend = [](osg::ImagePtr const& onto, osg::ImagePtr const& image, float x) {
        Recorder recorder;
        bool const blended = ztImage::blendImage(onto, image, {x, -2.9f, 0}, {1, 1, 1, 1}, 1, 0);
        return (blended ? "blended " : "") + recorder.text();
    };
    EXPECT_EQ(blend(target, source, -3), "blended !8");
    EXPECT_EQ(target->pixels, white->pixels) << "cut at all four edges";
    blend(target, makeImage(9, 9, {255, 255, 255, 100}), 0);
    EXPECT_EQ(target->pixels, white->pixels) << "colour above alpha stops at white";
    for (float x : {4.0f, -9.0f, 3e9f, -3e9f})
        EXPECT_EQ(blend(target, source, x), "") << "beside the target";
    for (osg::ImagePtr const& none : {osg::ImagePtr(), makeImage(0, 0), noBytes})
        EXPECT_EQ(blend(none, source, 0) + blend(target, none, 0), "");

    osg::ImagePtr const self = makeImage(3, 1);
    self->pixels = {1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255};
    ztImage::blendImage(self, self, {1, 0, 0}, {1, 1, 1, 1}, 1, 0);
    EXPECT_EQ(self->pixels, (std::vector<osg::UInt8>{1, 2, 3, 255, 1, 2, 3, 255, 4, 5, 6, 255})) << "onto itself";
}

} // namespace
