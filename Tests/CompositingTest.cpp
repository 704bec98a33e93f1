// Overlays stamped onto an image, against pictures that QPainter and plain loops make of the same parts.
#include "TestSupport.h"

#include "ztImage.h"

#include <QImage>
#include <QPainter>
#include <QTextLayout>

#include <cmath>

namespace
{

class CompositingTest : public SceneTest
{
  protected:
    static void stamp(std::vector<osg::OverlayPtr> const& overlays, osg::ImagePtr const& target,
                      osg::ViewportPtr const& viewport = osg::NullFC)
    {
        ztOverlays::blendOverlaysOntoImage(overlays, target, viewport);
    }

    /// A frame with another colour at every pixel.
    osg::ImagePtr makeFrame(int width, int height)
    {
        osg::ImagePtr const frame = makeImage(width, height);
        for (std::size_t i = 0; i < frame->pixels.size(); ++i)
            frame->pixels[i] = osg::UInt8(i % 4 == 3 ? 255 : (i * 7 + i / 9) % 256);
        return frame;
    }
};

QImage toQImage(osg::ImagePtr const& image)
{
    return QImage(image->pixelBuffer(), image->width, image->height, QImage::Format_RGBA8888_Premultiplied).mirrored();
}

/// The largest difference of any channel of any pixel.
int difference(QImage const& a, QImage const& b)
{
    if (a.size() != b.size() || a.format() != b.format())
        return 256;
    int largest = 0;
    for (qsizetype i = 0; i < a.sizeInBytes(); ++i)
        largest = std::max(largest, std::abs(a.constBits()[i] - b.constBits()[i]));
    return largest;
}

// The lines of a text painted by hand with the same font, its lower left corner at a place of the frame.
TEST_F(CompositingTest, TextAgreesWithQPainter)
{
    osg::OverlayPtr const overlay = makeText("Camera 7\nf/2.8  35 mm");
    overlay->size = 21;
    overlay->textColor = {0.9f, 0.8f, 0.2f, 0.9f};
    overlay->backgroundColor = {0.1f, 0.2f, 0.4f};
    overlay->backgroundTransparency = {0.4f, 0.4f, 0.4f};
    overlay->anchor = {0.37f, 0.61f};
    osg::ImagePtr const frame = makeFrame(640, 360);
    QImage expected = toQImage(frame).copy();

    QTextLayout first("Camera 7", QFont("DejaVu Sans", 21)), second("f/2.8  35 mm", QFont("DejaVu Sans", 21));
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

    stamp({overlay}, frame);
    EXPECT_LE(difference(toQImage(frame), expected), 1);
}

TEST_F(CompositingTest, UnscaledPictureAgreesWithQPainterAtEachAlpha)
{
    for (int alpha : {0, 1, 128, 254, 255})
    {
        osg::ImagePtr const picture = makeImage(40, 30);
        for (std::size_t i = 0; i < picture->pixels.size(); ++i)
            picture->pixels[i] = osg::UInt8(i % 4 == 3 ? alpha : int(i * 5) % (alpha + 1));
        osg::OverlayPtr const overlay = makePicture(picture);
        overlay->size = 30;
        overlay->anchor = {0.5f, 0.25f};
        osg::ImagePtr const frame = makeFrame(101, 90);
        QImage expected = toQImage(frame).copy();
        QPainter(&expected).drawImage(30, 90 - 15 - 30, toQImage(picture));
        stamp({overlay}, frame);
        EXPECT_LE(difference(toQImage(frame), expected), 1) << alpha;
    }
}

TEST_F(CompositingTest, WhiteTextOnWhiteStaysWhite)
{
    osg::ImagePtr const frame = makeImage(300, 100, {255, 255, 255, 255});
    osg::OverlayPtr const overlay = makeText("White on white");
    overlay->size = 23.0f;
    stamp({overlay}, frame);
    int least = 255;
    for (osg::UInt8 channel : frame->pixels)
        least = std::min<int>(least, channel);
    EXPECT_GE(least, 254);
}

TEST_F(CompositingTest, LaterOverlaysLieOnTop)
{
    osg::OverlayPtr const red = makePicture(makeImage(1, 1, {255, 0, 0, 255}));
    osg::OverlayPtr const green = makePicture(makeImage(1, 1, {0, 128, 0, 128}));
    red->size = green->size = 4;
    for (auto const& [overlays, pixel] : {std::pair{std::vector{red, green}, std::array{127, 128, 0, 255}},
                                          std::pair{std::vector{green, red}, std::array{255, 0, 0, 255}}})
    {
        osg::ImagePtr const frame = makeImage(8, 8, {0, 0, 255, 255});
        stamp(overlays, frame);
        EXPECT_EQ(pixelAt(frame, 3, 3), pixel);
        EXPECT_EQ(pixelAt(frame, 4, 3), (std::array{0, 0, 255, 255}));
    }
}

// A white 10 by 10 picture on a black 40 by 30 frame: where its first pixel comes to lie, and how many show.
TEST_F(CompositingTest, Corners)
{
    struct Row
    {
        char const* name;
        osg::Vec2f offset;
        int left, bottom, pixels;
    };
    for (Row const& row : {
             Row{"inside", {3, 4}, 3, 4, 100},
             {"truncated", {3.9f, 4.9f}, 3, 4, 100},
             {"at the origin", {-0.0f, 0}, 0, 0, 100},
             {"negative x counts from the right", {-10, 4}, 31, 4, 90},
             {"negative y counts from the top", {3, -0.5f}, 3, 30, 0},
             {"both", {-5, -5}, 36, 26, 16},
             {"cut at right and top", {35, 25}, 35, 25, 25},
             {"far left wraps once", {-50, 0}, -9, 0, 10},
             {"far outside", {1e30f, 0}, 0, 0, 0},
             {"not a number", {std::nanf(""), 0}, 0, 0, 100},
         })
    {
        osg::OverlayPtr const overlay = makePicture(makeImage(10, 10, {255, 255, 255, 255}));
        overlay->size = 10;
        overlay->offset = row.offset;
        osg::ImagePtr const frame = makeImage(40, 30);
        stamp({overlay}, frame);
        int pixels = 0;
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x)
            {
                bool const inside = x >= row.left && x < row.left + 10 && y >= row.bottom && y < row.bottom + 10;
                bool const white = pixelAt(frame, x, y)[0] == 255;
                pixels += white;
                EXPECT_EQ(white, inside && row.pixels > 0) << row.name << ' ' << x << ' ' << y;
            }
        EXPECT_EQ(pixels, row.pixels) << row.name;
    }
}

TEST_F(CompositingTest, ResamplesOnlyAPictureOfAnotherSize)
{
    struct Row
    {
        char const* name;
        int contentType, imageWidth, imageHeight, targetHeight;
        int width, height; // of what is blended
    };
    for (Row const& row : {
             Row{"fractions cut", 1, 100, 50, 201, 100, 50},
             {"as large", 1, 200, 100, 400, 200, 100},
             {"twice as large", 1, 200, 100, 800, 400, 200},
             {"half as large", 1, 200, 100, 200, 100, 50},
             {"other content types never", 2, 200, 100, 800, 200, 100},
             {"no size", 1, 200, 100, 0, 0, 0},
         })
    {
        osg::ImagePtr const picture = makeImage(row.imageWidth, row.imageHeight, {255, 255, 255, 255});
        osg::OverlayPtr const overlay = makePicture(picture);
        overlay->contentType = row.contentType;
        overlay->sizeMode = osg::Overlay::SizeRelative;
        overlay->size = 0.25f;
        osg::ImagePtr const frame = makeImage(500, std::max(row.targetHeight, 1));
        overlay->size = row.targetHeight ? 0.25f : 0.0f;
        ztOverlays::updateOverlay(overlay, 1, 1);
        Recorder recorder;
        stamp({overlay}, frame);
        bool const resampled = row.width != row.imageWidth;
        EXPECT_EQ(recorder.text().find(" x") != std::string::npos, resampled)
            << row.name << ": a copy is made and goes";
        long white = 0;
        for (std::size_t i = 0; i < frame->pixels.size(); i += 4)
            white += frame->pixels[i] == 255;
        EXPECT_EQ(white, row.width * row.height) << row.name;
        EXPECT_EQ(shownImage(overlay), picture) << row.name;
        EXPECT_EQ(picture->getRefCount(), 3) << row.name;
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
    stamp({relative, absolute}, frame, viewport);
    EXPECT_EQ(corners(relative) + corners(absolute), before) << "the plain size of the viewport";
    std::vector<std::pair<char const*, osg::FieldContainerPtr>> const names{
        {"R", shownImage(relative)}, {"A", shownImage(absolute)}, {"F", frame}};
    EXPECT_EQ(recorder.marks(names), "!R !1000 !8 !8 !8F !8F !R !1000 !8 !8") << "the relative text is rendered twice";

    stamp({relative, absolute}, frame);
    EXPECT_EQ(shownImage(relative)->height, 80) << "without a viewport the layout stays the frame's";
    recorder.clear();
    stamp({relative, absolute}, frame);
    EXPECT_EQ(recorder.marks(names), "!8F !8F") << "and nothing is rendered again";
}

TEST_F(CompositingTest, NothingToDoIsNoHarm)
{
    osg::ViewportPtr const viewport = makeViewport(10, 10);
    osg::OverlayPtr const text = makeText("text"), empty = makePicture(osg::NullFC), blank = makeText("");
    osg::ImagePtr const frame = makeImage(20, 20, {9, 9, 9, 255});
    stamp({text}, osg::NullFC, viewport);
    EXPECT_TRUE(text->dirty) << "no target: no overlay is touched";
    stamp({}, frame, viewport);
    stamp({osg::NullFC, empty, blank}, frame, viewport);
    stamp({text}, makeImage(0, 0), viewport);
    EXPECT_EQ(frame->pixels, makeImage(20, 20, {9, 9, 9, 255})->pixels);
}

} // namespace
