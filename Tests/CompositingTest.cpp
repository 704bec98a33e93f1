// Overlays stamped onto an image, against pictures that QPainter and plain loops make of the same parts.
#include "TestSupport.h"

#include "ztImage.h"

#include <QImage>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace
{

using CompositingTest = SceneTest;
using ztOverlays::blendOverlaysOntoImage;

// The lines of a text painted by hand with the same font, its lower left corner at a place of the frame, and a
// translucent picture over it.
TEST_F(CompositingTest, TextAndPictureAgreeWithQPainter)
{
    // Scripts that are shaped, run from right to left or beyond 16 bits, and bytes that are no UTF-8.
    char const* const lines[] = {
        "Camera 7 \u05e9\u05dc\u05d5\u05dd 12 \u5b57\u5e55 \U0001F600",
        "f/2.8 \u0628\u0628\u0628 \u0939\u093f\u0928\u094d\u0926\u0940 a\u0301\u0302 \xff\xfe \xc3"};
    osg::OverlayPtr const overlay = makeText(std::string(lines[0]) + '\n' + lines[1]);
    overlay->size = 21;
    overlay->textColor = {0.9f, 0.8f, 0.2f, 0.9f};
    overlay->backgroundColor = {0.1f, 0.2f, 0.4f};
    overlay->backgroundTransparency = {0.4f, 0.4f, 0.4f};
    overlay->anchor = {0.37f, 0.61f};
    osg::ImagePtr const frame = makeImage(640, 360);
    for (std::size_t i = 0; i < frame->pixels.size(); ++i)
        frame->pixels[i] = osg::UInt8(i % 4 == 3 ? 255 : (i * 7 + i / 9) % 256);
    QImage expected = QImage(frame->pixelBuffer(), 640, 360, QImage::Format_RGBA8888_Premultiplied).mirrored();

    QFont const font("DejaVu Sans", 21);
    QTextLayout first(lines[0], font), second(lines[1], font);
    double height = 0, width = 0;
    for (QTextLayout* layout : {&first, &second})
    {
        layout->beginLayout();
        QTextLine line = layout->createLine();
        line.setLeadingIncluded(true);
        line.setLineWidth(1e9);
        line.setPosition({0, height});
        height += line.height();
        layout->endLayout();
        width = std::max(width, layout->maximumWidth());
    }
    QImage label(int(width), int(height), QImage::Format_ARGB32_Premultiplied);
    label.fill(QColor(25, 51, 102, 153));
    QPainter painter(&label);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setPen(QColor(229, 204, 51, 229));
    for (QTextLayout* layout : {&first, &second})
        layout->draw(&painter, {0, 0});
    painter.end();
    int const left = int(640 * 0.37f - 0.37f * float(label.width()));
    int const bottom = int(360 * 0.61f - 0.61f * float(label.height()));
    QPainter(&expected).drawImage(left, 360 - bottom - label.height(), label);

    osg::ImagePtr const picture = makeImage(90, 70);
    for (std::size_t i = 0; i < picture->pixels.size(); ++i)
        picture->pixels[i] = osg::UInt8(i % 4 == 3 ? i / 360 * 3 : i * 5 % (i / 360 * 3 + 1));
    osg::OverlayPtr const over = makePicture(picture);
    over->size = 70;
    over->offset = {250.6f, 170.3f};
    QImage const pixels(picture->pixelBuffer(), 90, 70, QImage::Format_RGBA8888_Premultiplied);
    QPainter(&expected).drawImage(250, 360 - 170 - 70, pixels.mirrored());

    expected = expected.mirrored();
    blendOverlaysOntoImage({overlay, over}, frame, osg::NullFC);
    for (std::size_t i = 0; i < frame->pixels.size(); ++i)
        ASSERT_NEAR(frame->pixels[i], expected.constBits()[i], 1) << i;
}

TEST_F(CompositingTest, WhiteTextOnWhiteStaysWhite)
{
    osg::ImagePtr const frame = makeImage(300, 100, {255, 255, 255, 255});
    osg::OverlayPtr const overlay = makeText("White on white");
    overlay->size = 23;
    blendOverlaysOntoImage({overlay}, frame, osg::NullFC);
    EXPECT_GE(*std::min_element(frame->pixels.begin(), frame->pixels.end()), 254);
}

TEST_F(CompositingTest, LaterOverlaysLieOnTop)
{
    osg::OverlayPtr const red = makePicture(makeImage(1, 1, {255, 0, 0, 255}));
    osg::OverlayPtr const green = makePicture(makeImage(1, 1, {0, 128, 0, 128}));
    red->size = green->size = 4;
    osg::ImagePtr const frame = makeImage(8, 8);
    blendOverlaysOntoImage({red, green}, frame, osg::NullFC);
    EXPECT_EQ(pixelAt(frame, 3, 3), (std::array{127, 128, 0, 255}));
}

// A white 20 by 10 picture on a black 40 by 30 frame: where its first pixel comes to lie.
TEST_F(CompositingTest, Corners)
{
    using Row = std::tuple<char const*, osg::Vec2f, int, int, osg::Vec3f>;
    for (auto const& [name, offset, left, bottom, texCoord] : {
             Row{"inside", {3, 4}, 3, 4, {}},
             {"truncated", {3.9f, 4.9f}, 3, 4, {}},
             {"at the origin", {-0.0f, 0}, 0, 0, {}},
             {"negative x counts from the right", {-10, 4}, 31, 4, {}},
             {"negative y counts from the top", {3, -0.5f}, 3, 30, {}},
             {"both", {-5, -5}, 36, 26, {}},
             {"cut at right and top", {35, 25}, 35, 25, {}},
             {"far left wraps once", {-50, 0}, -9, 0, {}},
             {"far outside", {1e30f, 0}, 100, 0, {}},
             {"not a number", {std::nanf(""), 0}, 0, 0, {}},
             {"a corner within the picture", {13, 14.5f}, 3, 12, {0.5f, 0.25f, 0}},
         })
    {
        osg::OverlayPtr const overlay = makePicture(makeImage(20, 10, {255, 255, 255, 255}));
        overlay->size = 10;
        overlay->offset = offset;
        overlay->foreground->texCoords[0] = texCoord;
        osg::ImagePtr const frame = makeImage(40, 30);
        blendOverlaysOntoImage({overlay}, frame, osg::NullFC);
        for (int i = 0; i < 40 * 30; ++i)
        {
            int const x = i % 40 - left, y = i / 40 - bottom;
            bool const inside = x >= 0 && x < 20 && y >= 0 && y < 10;
            ASSERT_EQ(frame->pixels[std::size_t(4 * i)], inside ? 255 : 0) << name << ' ' << x << ' ' << y;
        }
    }
}

TEST_F(CompositingTest, ResamplesOnlyAPictureOfAnotherSize)
{
    // The last two are the size of what is blended.
    using Row = std::tuple<char const*, int, int, int, int, int, int>;
    for (auto const& [name, contentType, imageWidth, imageHeight, targetHeight, width, height] : {
             Row{"fractions cut", 1, 100, 50, 201, 100, 50},
             {"as large", 1, 200, 100, 400, 200, 100},
             {"twice as large", 1, 200, 100, 800, 400, 200},
             {"a fraction of the width cut", 1, 31, 7, 28, 30, 7},
             {"other content types never", 2, 200, 100, 800, 200, 100},
             {"no size", 1, 200, 100, 0, 0, 0},
         })
    {
        osg::ImagePtr const picture = makeImage(imageWidth, imageHeight, {255, 255, 255, 255});
        osg::OverlayPtr const overlay = makePicture(picture);
        overlay->contentType = contentType;
        overlay->sizeMode = osg::Overlay::SizeRelative;
        overlay->size = targetHeight ? 0.25f : 0.0f;
        osg::ImagePtr const frame = makeImage(500, std::max(targetHeight, 1));
        ztOverlays::updateOverlay(overlay, 1, 1);
        Recorder recorder;
        blendOverlaysOntoImage({overlay}, frame, osg::NullFC);
        bool const copied = recorder.text().find(" x") != std::string::npos;
        EXPECT_EQ(copied, width != imageWidth) << name << ": a copy is made and goes";
        EXPECT_EQ(std::count(frame->pixels.begin(), frame->pixels.end(), 255), 4 * width * height) << name;
        EXPECT_EQ(shownImage(overlay), picture) << name;
        EXPECT_EQ(picture->getRefCount(), 3) << name;
    }
}

TEST_F(CompositingTest, RestoresTheViewportsLayout)
{
    osg::ViewportPtr const viewport = makeViewport(200, 100);
    auto const tile = osg::create<osg::TileCameraDecorator>();
    tile->fullWidth = tile->fullHeight = 999;
    osg::setRefdCP(viewport->camera, tile);
    osg::OverlayPtr const relative = makeText("relative"), absolute = makeText("absolute");
    relative->sizeMode = osg::Overlay::SizeRelative;
    relative->size = 0.2f;
    relative->anchor = absolute->anchor = {0.5f, 1};
    for (osg::OverlayPtr const& overlay : {relative, absolute})
        ztOverlays::updateOverlay(overlay, 200, 100);
    std::string const before = corners(relative) + corners(absolute);
    osg::ImagePtr const frame = makeImage(800, 400);

    Recorder recorder;
    blendOverlaysOntoImage({relative, absolute}, frame, viewport);
    EXPECT_EQ(corners(relative) + corners(absolute), before) << "the plain size of the viewport";
    std::vector<std::pair<char const*, osg::FieldContainerPtr>> const names{
        {"R", shownImage(relative)}, {"A", shownImage(absolute)}, {"F", frame}};
    EXPECT_EQ(recorder.marks(names), "!R !1000 !8 !8 !8F !8F !R !1000 !8 !8") << "the relative text is rendered twice";

    blendOverlaysOntoImage({relative, absolute}, frame, osg::NullFC);
    EXPECT_EQ(shownImage(relative)->height, 80) << "without a viewport the layout stays the frame's";
    recorder.clear();
    blendOverlaysOntoImage({relative, absolute}, frame, osg::NullFC);
    EXPECT_EQ(recorder.marks(names), "!8F !8F") << "and nothing is rendered again";
}

TEST_F(CompositingTest, NothingToDoIsNoHarm)
{
    osg::ViewportPtr const viewport = makeViewport(10, 10);
    osg::OverlayPtr const text = makeText("text"), empty = makePicture(osg::NullFC), blank = makeText("");
    osg::ImagePtr const frame = makeImage(20, 20, {9, 9, 9, 255});
    blendOverlaysOntoImage({text}, osg::NullFC, viewport);
    EXPECT_TRUE(text->dirty) << "no target: no overlay is touched";
    blendOverlaysOntoImage({}, frame, viewport);
    blendOverlaysOntoImage({osg::NullFC, empty, blank}, frame, viewport);
    blendOverlaysOntoImage({text}, makeImage(0, 0), viewport);
    EXPECT_EQ(frame->pixels, makeImage(20, 20, {9, 9, 9, 255})->pixels);
}

} // namespace
