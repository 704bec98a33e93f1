// ztImage: what its operations accept, where they write and what they mark.
#include "TestSupport.h"

#include "ztImage.h"
#include "ztPixels.h"

#include <cmath>
#include <random>

using ImageOperationsTest = SceneTest;

TEST_F(ImageOperationsTest, ScaleResamplesOntoItself)
{
    osg::ImagePtr image = makeImage(17, 11);
    std::mt19937 random(1);
    for (osg::UInt8& byte : image->pixels)
        byte = osg::UInt8(random());
    ztImageBilinearFilter filter;
    filter.support = 2.5;
    std::vector<osg::UInt8> expected(34 * 5 * 4);
    ztPixels::resample(image->pixels.data(), 17, 11, expected.data(), 34, 5,
                       {2.5, [](double x) { return std::max(2.5 - std::abs(x), 0.0); }});
    ASSERT_TRUE(ztImage::scale(image, 34, 5, image, filter));
    EXPECT_EQ(std::pair(image->width, image->height), std::pair(34, 5));
    EXPECT_EQ(image->pixels, expected);
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

TEST_F(ImageOperationsTest, StraightAlphaIsPremultipliedInPlace)
{
    osg::ImagePtr const image = makeImage(3, 2, {255, 128, 7, 100});
    Recorder recorder;
    ztImage::premultiply(image);
    ztImage::premultiply(osg::NullFC);
    EXPECT_EQ(recorder.take({{"image", image}}), "!image.pixels");
    EXPECT_EQ(image->pixels, makeImage(3, 2, {100, 50, 3, 100})->pixels);
}

TEST_F(ImageOperationsTest, BlendIsModulated)
{
    using Row = std::tuple<char const*, osg::Color4f, float, float, std::array<int, 4>>;
    // (100, 50, 0, 200) over (40, 80, 120, 255)
    for (auto const& [name, color, opacity, additive, expected] : {
             Row{"colour", {0.5f, 2, 1, 1}, 1, 0, {59, 117, 26, 255}},
             Row{"green", {1, 2, 1, 1}, 1, 0, {109, 117, 26, 255}},
             {"blue", {1, 1, 0.5f, 1}, 1, 0, {109, 67, 26, 255}},
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
    EXPECT_EQ(blend(target, source, -3), "blended !.pixels");
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
