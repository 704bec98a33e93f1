// ztImage: sizes that can't be, and what blending's colour and factors do.
#include "TestSupport.h"

#include "ztImage.h"

#include <cmath>

using ImageOperationsTest = SceneTest;

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
