// From text to pixels. A text of which only the background shows, and block glyphs, make the pixels known.
#include "TestSupport.h"

#include <QImage>

#include <cmath>
#include <limits>

namespace
{

using TextRasterTest = SceneTest;

osg::ImagePtr render(osg::OverlayPtr const& overlay, int targetHeight = 600)
{
    ztOverlays::updateOverlayImage(overlay, 800, targetHeight);
    return shownImage(overlay);
}

/// With the words that text is painted in.
QImage toQImage(osg::ImagePtr const& image)
{
    QImage const bytes(image->pixelBuffer(), image->width, image->height, QImage::Format_RGBA8888_Premultiplied);
    return bytes.mirrored().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

TEST_F(TextRasterTest, BackgroundColour)
{
    using Row = std::tuple<osg::Color3f, osg::Color3f, std::array<int, 4>>;
    for (auto const& [color, transparency, pixel] : {
             Row{{1, 0.5f, 0.999f}, {0, 0, 0}, {255, 127, 254, 255}},
             {{1, 1, 1}, {1, 1, 1}, {0, 0, 0, 0}},
             {{1, 1, 1}, {0.5f, 0.5f, 0.5f}, {127, 127, 127, 127}},
             {{1, 0, 1}, {1, 0, 0}, {200, 0, 200, 200}},
             {{0, 1, 0}, {0, 1, 0}, {0, 72, 0, 72}},
         })
    {
        osg::OverlayPtr const overlay = makeText("only the background");
        overlay->textColor = {1, 1, 1, 0};
        overlay->backgroundColor = color;
        overlay->backgroundTransparency = transparency;
        osg::ImagePtr const image = render(overlay);
        EXPECT_EQ(image->pixels, makeImage(image->width, image->height, pixel)->pixels) << pixel[3];
    }
}

TEST_F(TextRasterTest, SizesAndFont)
{
    osg::OverlayPtr const overlay = makeText("size");
    auto const width = [&](float size) {
        overlay->size = size;
        return render(overlay)->width;
    };
    int const width12 = width(12);
    EXPECT_EQ(width(12.9f), width12) << "whole points";
    ztPlatform::setDpiScale(3.0, 3.0);
    EXPECT_EQ(width(12), width12) << "the DPI scale plays no part";

    // Two names of one font; where it isn't installed, both stand for the same other one.
    overlay->font = "WenQuanYi Micro Hei";
    std::vector<osg::UInt8> const pixels = render(overlay)->pixels;
    overlay->font = "\u6587\u6cc9\u9a5b\u5fae\u7c73\u9ed1";
    EXPECT_EQ(render(overlay)->pixels, pixels);
}

TEST_F(TextRasterTest, RelativeSizeGivesTheHeight)
{
    // Points and height; no points: blank.
    using Row = std::tuple<char const*, char const*, int, float, int, double, int, int>;
    for (auto const& [name, text, sizeMode, size, targetHeight, dpi, points, height] : {
             Row{"two lines at 2x", "one\ntwo", 1, 0.1f, 1000, 2.0, 25, 100},
             {"fraction cut", "one", 1, 0.1f, 1009, 1.0, 100, 100},
             {"in single precision", "one", 1, 0.7f, 100, 1.0, 70, 70},
             {"below a point a line", "1\n2\n3\n4\n5\n6", 1, 0.05f, 100, 1.0, 0, 16},
             {"below a point at this scale", "one", 1, 0.05f, 100, 5.1, 0, 16},
             {"below a point of the height cut", "1\n2\n3", 1, 0.019f, 100, 0.5, 0, 16},
             {"other modes are relative too", "one", 2, 0.2f, 100, 1.0, 20, 20},
         })
    {
        ztPlatform::setDpiScale(1.0, dpi);
        osg::OverlayPtr const overlay = makeText(text), absolute = makeText(text);
        overlay->sizeMode = sizeMode;
        overlay->size = size;
        osg::ImagePtr const image = render(overlay, targetHeight);
        EXPECT_EQ(image->height, height) << name;
        EXPECT_EQ(overlay->dirty, points == 0) << name;
        absolute->size = float(points);
        EXPECT_EQ(toQImage(image), toQImage(render(absolute)).scaledToHeight(height, Qt::SmoothTransformation)) << name;
    }
}

TEST_F(TextRasterTest, LinesAddUp)
{
    osg::OverlayPtr const overlay = makeText("line");
    int const height = render(overlay)->height, width = render(overlay)->width;
    using Row = std::tuple<char const*, std::string, int, int>;
    for (auto const& [name, text, lines, widths] : {
             Row{"trailing break", "line\n", 2, 1},
             {"empty line between", "line\n\nline", 3, 1},
             {"leading break", "\nline", 2, 1},
             {"longest line counts", "i\nline\ni", 3, 1},
             {"break that isn't counted", "line\u2028line", 2, 2},
             {"carriage return is no break", "line\rline", 1, 2},
             {"up to the zero byte", std::string("line\0line\nline", 14), 1, 1},
             {"breaks alone give no picture", "\n\n", 0, 0},
         })
    {
        overlay->text = text;
        osg::ImagePtr const image = render(overlay);
        EXPECT_NEAR(image->height, lines * height, lines) << name;
        EXPECT_EQ(image->width > width ? 2 : image->width / width, widths) << name;
        EXPECT_FALSE(overlay->dirty) << name;
    }
    EXPECT_EQ(corners(overlay), "(0, 0) (0, 0) (0, 0) (0, 0)");
}

TEST_F(TextRasterTest, BlankingLeavesDirtyAndPosition)
{
    for (auto const& [text, size] :
         {std::pair{std::string(), 12.0f}, {std::string("\0text", 5), 12.0f}, {std::string("text"), 0.9f}})
        for (bool dirty : {false, true})
        {
            osg::OverlayPtr const overlay = makeText("text");
            render(overlay);
            std::string const before = corners(overlay);
            overlay->text = text;
            overlay->size = size;
            overlay->anchor = {1, 1};
            overlay->dirty = dirty;
            Recorder recorder;
            osg::ImagePtr const image = render(overlay);
            EXPECT_EQ(recorder.text({{"image", image}}), "!image") << text;
            EXPECT_EQ(image->pixels, std::vector<osg::UInt8>(1024, 0)) << text;
            EXPECT_EQ(overlay->dirty, dirty) << text;
            EXPECT_EQ(corners(overlay), before) << text;
        }
}

TEST_F(TextRasterTest, CoreWithoutForegroundGetsOne)
{
    osg::OverlayPtr const text = makeText("text"), bare = hold(osg::create<osg::Overlay>());
    bare->text = text->text;
    bare->font = text->font;
    EXPECT_EQ(render(bare)->pixels, render(text)->pixels);
}

TEST_F(TextRasterTest, MarksOfAPicture)
{
    osg::OverlayPtr const picture = makePicture(makeImage(3, 3));
    Recorder recorder;
    render(picture);
    EXPECT_EQ(recorder.marks({{"texture", textureOf(picture)}}), "!1texture !1000 !8");
}

TEST_F(TextRasterTest, NodeFormTakesTheViewportsOwnSize)
{
    osg::NodePtr const node = hold(ztOverlays::createOverlay(osg::NullFC));
    overlayOf(node)->text = "text";
    overlayOf(node)->sizeMode = osg::Overlay::SizeRelative;
    overlayOf(node)->size = 0.5f;
    osg::ViewportPtr const viewport = makeViewport(200, 100);
    auto const tile = osg::create<osg::TileCameraDecorator>();
    tile->fullWidth = tile->fullHeight = 900;
    osg::setRefdCP(viewport->camera, tile);
    ztOverlays::updateOverlayImage(node, viewport);
    EXPECT_EQ(shownImage(overlayOf(node))->height, 50);
    ztOverlays::updateOverlayImage(makeNode(), viewport);
    ztOverlays::updateOverlayImage(osg::NodePtr(), viewport);
    ztOverlays::updateOverlayImage(node, osg::NullFC);
    ztOverlays::updateOverlayImage(osg::OverlayPtr(), 10, 10);
}

TEST_F(TextRasterTest, ExtremeSettingsAreDefined)
{
    float const infinity = std::numeric_limits<float>::infinity();
    constexpr int most = std::numeric_limits<int>::max();
    osg::OverlayPtr const overlay = makeText("Wi");
    for (int sizeMode : {0, 1})
        for (float size : {0.0f, -1.0f, -infinity, infinity, std::nanf(""), 3e9f, 1e30f})
            for (int targetHeight : {0, -5, 600, most})
            {
                overlay->sizeMode = sizeMode;
                overlay->size = size;
                overlay->offset = {size, -size};
                ztOverlays::updateOverlay(overlay, most, targetHeight);
                osg::ImagePtr const image = shownImage(overlay);
                EXPECT_EQ(image->pixels.size(), std::size_t(image->width) * std::size_t(image->height) * 4)
                    << sizeMode << ' ' << size << ' ' << targetHeight;
            }
    for (auto const& [sizeMode, size] : {std::pair{0, 20000.0f}, {1, 500.0f}})
    {
        overlay->sizeMode = sizeMode;
        overlay->size = size;
        EXPECT_EQ(render(overlay)->height, 0) << "a rendering of 2 GiB and more isn't made";
    }
    overlay->sizeMode = 0;
    overlay->size = 12;
    overlay->textColor = {-3, 7, infinity, std::nanf("")};
    overlay->backgroundColor = {-3, 7, std::nanf("")};
    overlay->backgroundTransparency = {9, 9, 9};
    EXPECT_GT(render(overlay)->height, 0);
}

} // namespace
