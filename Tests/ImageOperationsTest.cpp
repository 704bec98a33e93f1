// ztImage against slow references in double precision.
#include "TestSupport.h"

#include "ztImage.h"

#include <cmath>
#include <random>

using ImageOperationsTest = SceneTest;

/// A channel of a resampled pixel: all pixels of the source, each with its weight, or the nearest if none has any.
static double resampled(osg::Image const& source, int width, int height, int x, int y, int channel, double support)
{
    auto const weigh = [support](int sourcePixel, double step, int pixel) {
        double const distance = std::abs(sourcePixel + 0.5 - (pixel + 0.5) * step) / std::max(step, 1.0);
        return distance < support ? support - distance : 0.0;
    };
    double sum = 0, weights = 0, stepX = double(source.width) / width, stepY = double(source.height) / height;
    for (int i = 0; i < source.width * source.height; ++i)
    {
        double const weight = weigh(i % source.width, stepX, x) * weigh(i / source.width, stepY, y);
        sum += weight * source.pixels[std::size_t(4 * i + channel)];
        weights += weight;
    }
    int const nearest = int((y + 0.5) * stepY) * source.width + int((x + 0.5) * stepX);
    return weights > 0 ? sum / weights : source.pixels[std::size_t(4 * nearest + channel)];
}

TEST_F(ImageOperationsTest, ScaleAgreesWithTheReference)
{
    osg::ImagePtr const source = makeImage(17, 11);
    std::mt19937 random(1);
    for (osg::UInt8& byte : source->pixels)
        byte = osg::UInt8(random());
    ztImageBilinearFilter filter;
    for (double support : {1.0, 2.5, 0.7, 0.1, 0.0, -1.0, std::nan("")})
        for (auto const& [width, height] : {std::pair{17, 11}, {34, 22}, {5, 3}, {1, 1}, {40, 2}, {3, 29}, {16, 12}})
        {
            filter.support = support;
            osg::ImagePtr scaled = makeImage(17, 11);
            scaled->pixels = source->pixels;
            ASSERT_TRUE(ztImage::scale(scaled, width, height, scaled, filter)) << "onto itself";
            ASSERT_EQ(std::pair(scaled->width, scaled->height), std::pair(width, height));
            for (int i = 0; i < width * height * 4; ++i)
                ASSERT_NEAR(scaled->pixels[std::size_t(i)],
                            resampled(*source, width, height, i / 4 % width, i / 4 / width, i % 4, support), 1.0)
                    << i;
        }
}

TEST_F(ImageOperationsTest, ScaleOfWhatCannotBeIsEmpty)
{
    osg::ImagePtr source = makeImage(4, 4, {1, 2, 3, 4}), null;
    auto const isRefused = [this](osg::ImagePtr const& from, int width, int height) {
        osg::ImagePtr destination = makeImage(3, 3);
        Recorder recorder;
        bool const scaled = ztImage::scale(from, width, height, destination, ztImageBilinearFilter());
        return !scaled && recorder.take() == "!" && destination->width == 0 && destination->height == 0;
    };
    for (auto const& [width, height] : {std::pair{0, 5}, {5, -1}, {30000, 30000}, {1 << 25, 1}, {1, 1 << 25}})
        EXPECT_TRUE(isRefused(source, width, height)) << width << 'x' << height;
    EXPECT_TRUE(isRefused(makeImage(0, 0), 5, 5) && isRefused(null, 5, 5));
    EXPECT_FALSE(ztImage::scale(source, 5, 5, null, ztImageBilinearFilter()));
}

// So many that every pair of bytes is met.
TEST_F(ImageOperationsTest, BytesAreBlendedAndMultipliedExactly)
{
    osg::ImagePtr const source = makeImage(512, 512), target = makeImage(512, 512), straight = makeImage(512, 512);
    std::mt19937 random(2);
    for (osg::ImagePtr const& image : {source, target, straight})
        for (osg::UInt8& byte : image->pixels)
            byte = osg::UInt8(random());
    auto const below = target->pixels, colors = straight->pixels;
    Recorder recorder;
    ASSERT_TRUE(ztImage::blendImage(target, source, {0, 0, 0}, {1, 1, 1, 1}, 1, 0));
    ztImage::premultiply(straight);
    ztImage::premultiply(osg::NullFC);
    EXPECT_EQ(recorder.take({{"target", target}, {"straight", straight}}), "!8target !8straight");
    for (std::size_t i = 0; i < below.size(); ++i)
    {
        double const sum = source->pixels[i] + below[i] * (255 - source->pixels[i | 3]) / 255.0;
        ASSERT_EQ(target->pixels[i], std::min(std::lround(sum), 255l)) << i;
        ASSERT_EQ(straight->pixels[i], i % 4 == 3 ? colors[i] : std::lround(colors[i] * colors[i | 3] / 255.0)) << i;
    }
}

TEST_F(ImageOperationsTest, BlendIsModulated)
{
    using Row = std::tuple<char const*, osg::Color4f, float, float, std::array<int, 4>>;
    // (100, 50, 0, 200) over (40, 80, 120, 255)
    for (auto const& [name, color, opacity, additive, expected] : {
             Row{"colour", {0.5f, 2, 1, 1}, 1, 0, {59, 117, 26, 255}},
             {"alpha and opacity", {1, 1, 1, 0.5f}, 0.5f, 0, {57, 77, 96, 255}},
             {"half added", {1, 1, 1, 1}, 1, 0.5f, {124, 99, 73, 255}},
             {"beyond the range and no number", {9, -9, std::nanf(""), 1}, 1, 0, {255, 0, 0, 255}},
         })
    {
        osg::ImagePtr const target = makeImage(1, 1, {40, 80, 120, 255});
        ztImage::blendImage(target, makeImage(1, 1, {100, 50, 0, 200}), {0, 0, 0}, color, opacity, additive);
        EXPECT_EQ(pixelAt(target, 0, 0), expected) << name;
    }
}

TEST_F(ImageOperationsTest, BlendWritesWhereTheImagesMeet)
{
    osg::ImagePtr const target = makeImage(4, 4), source = makeImage(9, 9, {255, 255, 255, 255});
    osg::ImagePtr const noBytes = makeImage(0, 0);
    noBytes->width = noBytes->height = 9;
    auto const blend = [](osg::ImagePtr const& onto, osg::ImagePtr const& image, float x) {
        Recorder recorder;
        bool const blended = ztImage::blendImage(onto, image, {x, -2.9f, 0}, {1, 1, 1, 1}, 1, 0);
        return (blended ? "blended " : "") + recorder.take();
    };
    EXPECT_EQ(blend(target, source, -3), "blended !8");
    EXPECT_EQ(target->pixels, std::vector<osg::UInt8>(64, 255)) << "cut at all four edges";
    for (float x : {4.0f, -9.0f, 3e9f, -3e9f})
        EXPECT_EQ(blend(target, source, x), "") << "beside the target";
    for (osg::ImagePtr const& none : {osg::ImagePtr(), noBytes})
        EXPECT_EQ(blend(none, source, 0) + blend(target, none, 0), "");

    osg::ImagePtr const self = makeImage(3, 1);
    self->pixels = {1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255};
    ztImage::blendImage(self, self, {1, 0, 0}, {1, 1, 1, 1}, 1, 0);
    EXPECT_EQ(self->pixels, (std::vector<osg::UInt8>{1, 2, 3, 255, 1, 2, 3, 255, 4, 5, 6, 255})) << "onto itself";
}
