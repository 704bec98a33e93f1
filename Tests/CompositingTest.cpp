// Overlays stamped onto an image, against pictures that QPainter and plain loops make of the same parts.
#include "TestSupport.h"
#include "ztImage.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

using CompositingTest = SceneTest;
using ztOverlays::blendOverlaysOntoImage;

// A translucent picture over a text on a frame of many colours.
TEST_F(CompositingTest, TextAndPictureAgreeWithQPainter)
{
    osg::ImagePtr const picture = makeImage(90, 70), frame = makeImage(640, 360);
    for (std::size_t i = 0; i < picture->pixels.size(); ++i)
        picture->pixels[i] = osg::UInt8(i % 4 == 3 ? i / 360 * 3 : i * 5 % (i / 360 * 3 + 1));
    for (std::size_t i = 0; i < frame->pixels.size(); ++i)
        frame->pixels[i] = osg::UInt8(i % 4 == 3 ? 255 : (i * 7 + i / 9) % 256);
    osg::OverlayPtr const text = makeText("Camera 7\nf/2.8", 40), over = makePicture(picture, 70);
    text->backgroundTransparency = {0.4f, 0.4f, 0.4f};
    text->anchor = {0.37f, 0.61f};
    over->offset = {250.6f, 170.3f};
    QImage expected = toQImage(frame);
    blendOverlaysOntoImage({text, over}, frame, osg::NullFC);

    QImage const label = toQImage(shownImage(text)), stamped = toQImage(frame);
    int const left = int(640 * 0.37f - 0.37f * float(label.width()));
    int const bottom = int(360 * 0.61f - 0.61f * float(label.height()));
    QPainter painter(&expected);
    painter.drawImage(left, 360 - bottom - label.height(), label);
    painter.drawImage(250, 360 - 170 - 70, toQImage(picture));
    painter.end();
    for (int i = 0; i < 640 * 360 * 4; ++i)
        ASSERT_NEAR(stamped.constBits()[i], expected.constBits()[i], 1) << i;
}

TEST_F(CompositingTest, WhiteTextOnWhiteStaysWhite)
{
    osg::ImagePtr const frame = makeImage(300, 100, {255, 255, 255, 255});
    blendOverlaysOntoImage({makeText("White on white", 23)}, frame, osg::NullFC);
    EXPECT_GE(*std::min_element(frame->pixels.begin(), frame->pixels.end()), 254);
}

// Content type and a picture's size, its size and offset as overlay; left, bottom, width and height of the white.
static std::tuple<char const*, int, int, int, float, osg::Vec2f, osg::Vec3f, std::array<int, 4>> const whites[] = {
    {"at the origin", 1, 20, 10, 10, {-0.0f, 0}, {}, {0, 0, 20, 10}},
    {"negative x: from the right, once", 1, 20, 10, 10, {-70, 4}, {}, {-9, 4, 20, 10}},
    {"negative y: from the top", 1, 20, 10, 10, {3, -20.5f}, {}, {3, 20, 20, 10}},
    {"not a number", 1, 20, 10, 10, {std::nanf(""), 0}, {}, {0, 0, 20, 10}},
    {"corner in the picture", 1, 20, 10, 10, {13, 14.5f}, {0.5f, 0.25f, 0}, {3, 12, 20, 10}},
    {"fraction of the height cut", 1, 20, 10, 10.4f, {}, {}, {0, 0, 20, 10}},
    {"fraction of the width cut", 1, 31, 7, 7, {}, {}, {0, 0, 30, 7}},
    {"twice as large", 1, 20, 10, 20, {}, {}, {0, 0, 40, 20}},
    {"higher, but no wider", 1, 1, 10, 15, {}, {}, {0, 0, 1, 15}},
    {"other content types never", 2, 20, 10, 20, {}, {}, {0, 0, 20, 10}},
    {"no size", 1, 20, 10, 0, {}, {}, {0, 0, 0, 0}},
};

// White pictures on a black 60 by 40 frame: where they come to lie, and which of them are resampled.
TEST_F(CompositingTest, CornersAndSizes)
{
    for (auto const& [name, contentType, imageWidth, imageHeight, size, offset, texCoord, white] : whites)
    {
        osg::OverlayPtr const overlay = makePicture(makeImage(imageWidth, imageHeight, {255, 255, 255, 255}), size);
        overlay->contentType = contentType;
        overlay->offset = offset;
        overlay->foreground->texCoords[0] = texCoord;
        osg::ImagePtr const frame = makeImage(60, 40);
        ztOverlays::updateOverlay(overlay, 1, 1);
        Recorder recorder;
        blendOverlaysOntoImage({overlay}, frame, osg::NullFC);
        // A copy is made and goes.
        EXPECT_EQ(recorder.take().find(" x") != std::string::npos, white[2] != imageWidth || white[3] != imageHeight)
            << name;
        for (int i = 0; i < 60 * 40; ++i)
        {
            int const x = i % 60 - white[0], y = i / 60 - white[1];
            bool const inside = x >= 0 && x < white[2] && y >= 0 && y < white[3];
            ASSERT_EQ(frame->pixels[std::size_t(4 * i)], inside ? 255 : 0) << name << ' ' << x << ' ' << y;
        }
    }
}

TEST_F(CompositingTest, RestoresTheViewportsLayout)
{
    osg::ViewportPtr const viewport = makeViewport(200, 100, createTile(999, 999));
    osg::OverlayPtr const relative = makeText("relative", 0.2f, osg::Overlay::SizeRelative), absolute = makeText("abs");
    for (osg::OverlayPtr const& overlay : {relative, absolute})
        ztOverlays::updateOverlay(overlay, 200, 100);
    relative->anchor = absolute->anchor = {0.5f, 1};
    osg::ImagePtr const frame = makeImage(800, 400);
    Recorder::Names const names{{"R", shownImage(relative)}, {"A", shownImage(absolute)}, {"F", frame}};
    Recorder recorder;
    blendOverlaysOntoImage({relative, absolute}, frame, viewport);
    EXPECT_EQ(recorder.take(names), "!R !.dirty !.positions !.positions +R !F.pixels -R +A !F.pixels -A !R !.dirty "
                                    "!.positions !.positions")
        << "a text is rendered twice";
    for (osg::OverlayPtr const& overlay : {relative, absolute})
        ztOverlays::updateOverlay(overlay, 200, 100);
    EXPECT_EQ(recorder.take(), "") << "the plain size of the viewport";
}

TEST_F(CompositingTest, NothingToDoIsNoHarm)
{
    osg::OverlayPtr const text = makeText("text");
    osg::ImagePtr const frame = makeImage(20, 20, {9, 9, 9, 255});
    blendOverlaysOntoImage({text}, osg::NullFC, osg::NullFC);
    EXPECT_TRUE(text->dirty) << "no target: no overlay is touched";
    blendOverlaysOntoImage({osg::NullFC, makePicture(osg::NullFC), makeText("")}, frame, makeViewport(10, 10));
    blendOverlaysOntoImage({text}, makeImage(0, 0), osg::NullFC);
    EXPECT_EQ(frame->pixels, makeImage(20, 20, {9, 9, 9, 255})->pixels);
}

TEST_F(CompositingTest, PicturesAreScaledToSidesUpToTheMost)
{
    constexpr int most = 1 << 24;
    osg::ImagePtr destination = makeImage(1, 1);
    for (auto const& [width, height, isPossible] : {std::tuple{most, 1, true}, {1, most, true}, {1, most + 1, false}})
    {
        EXPECT_EQ(ztImage::scale(makeImage(1, 1), width, height, destination, ztImageBilinearFilter()), isPossible);
        EXPECT_EQ(destination->height, isPossible ? height : 0);
    }
    EXPECT_EQ(ztImageBilinearFilter().filter(1.5), 0.0);
}

// A text takes the foreground over from the picture that it covers, in the first pass and in the second.
TEST_F(CompositingTest, SharedForegroundShowsWhatItHoldsAtEachTurn)
{
    osg::ImagePtr const white = makeImage(20, 10, {255, 255, 255, 255}), frame = makeImage(60, 40);
    osg::OverlayPtr const picture = makePicture(white, 20), text = makeText("text", 30);
    text->backgroundColor = {0, 1, 0};
    text->backgroundTransparency = {};
    osg::setRefdCP(text->image, white);
    osg::setRefdCP(text->foreground, picture->foreground);
    blendOverlaysOntoImage({picture, text}, frame, osg::NullFC);
    using Pixel = std::array<int, 4>;
    EXPECT_EQ(pixelAt(frame, 19, 9), (Pixel{255, 255, 255, 255})) << "the picture, at its own size";
    EXPECT_EQ(pixelAt(frame, 39, 19), (Pixel{0, 255, 0, 255})) << "the text, at the picture's";
    EXPECT_EQ(pixelAt(frame, 40, 19), Pixel());
}

TEST_F(CompositingTest, TargetStaysWhileAnOverlayLetsGoOfIt)
{
    osg::OverlayPtr const overlay = makeText("text");
    ztOverlays::updateOverlay(overlay, 100, 100);
    osg::ImagePtr const target = shownImage(overlay), picture = makeImage(4, 4);
    osg::setRefdCP(overlay->image, picture);
    overlay->contentType = 2;
    overlay->dirty = false;
    Recorder recorder;
    blendOverlaysOntoImage({overlay}, target, osg::NullFC);
    EXPECT_EQ(recorder.take({{"T", target}, {"P", picture}}), "+T +P -T !.image !.positions +P !T.? -P xT");
    EXPECT_EQ(shownImage(overlay), picture);
}
