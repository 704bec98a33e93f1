// From text to pixels. A text of which only the background shows, and block glyphs, make the pixels known.
#include "TestSupport.h"

#include <cmath>
#include <limits>

namespace
{

using TextRasterTest = SceneTest;

constexpr int targetWidth = 800;

osg::ImagePtr render(osg::OverlayPtr const& overlay, int targetHeight = 600)
{
    ztOverlays::updateOverlayImage(overlay, targetWidth, targetHeight);
    return shownImage(overlay);
}

/// The sum of one channel over the picture.
long sum(osg::ImagePtr const& image, int channel)
{
    long total = 0;
    for (std::size_t i = std::size_t(channel); i < image->pixels.size(); i += 4)
        total += image->pixels[i];
    return total;
}

TEST_F(TextRasterTest, BackgroundColour)
{
    struct Row
    {
        osg::Color3f color, transparency;
        std::array<int, 4> pixel;
    };
    for (Row const& row : {
             Row{{1, 0.5f, 0.999f}, {0, 0, 0}, {255, 127, 254, 255}},
             {{1, 1, 1}, {1, 1, 1}, {0, 0, 0, 0}},
             {{1, 1, 1}, {0.5f, 0.5f, 0.5f}, {127, 127, 127, 127}},
             {{1, 0, 1}, {1, 0, 0}, {200, 0, 200, 200}},
             {{0, 1, 0}, {0, 1, 0}, {0, 72, 0, 72}},
         })
    {
        osg::OverlayPtr const overlay = makeText("only the background");
        overlay->textColor = {1, 1, 1, 0};
        overlay->backgroundColor = row.color;
        overlay->backgroundTransparency = row.transparency;
        osg::ImagePtr const image = render(overlay);
        EXPECT_EQ(pixelAt(image, 0, 0), row.pixel);
        EXPECT_EQ(pixelAt(image, image->width - 1, image->height - 1), row.pixel);
    }
}

TEST_F(TextRasterTest, GlyphColourIsPremultipliedAndRowsRunUpwards)
{
    osg::OverlayPtr const overlay = makeText("\u2580\u2580\u2580"); // upper halves
    overlay->size = 60;
    overlay->textColor = {1.0f, 0.5f, 0.0f, 0.5f};
    osg::ImagePtr const image = render(overlay);
    int const middle = image->width / 2;
    auto const upper = pixelAt(image, middle, image->height * 3 / 4);
    EXPECT_EQ(upper[3], 127);
    EXPECT_NEAR(upper[0], 127, 1);
    EXPECT_NEAR(upper[1], 63, 1);
    EXPECT_EQ(upper[2], 0);
    EXPECT_EQ(pixelAt(image, middle, image->height / 8), (std::array{0, 0, 0, 0}));
    for (std::size_t i = 0; i < image->pixels.size(); ++i)
        ASSERT_LE(image->pixels[i], image->pixels[i | 3]) << "colour above alpha at byte " << i;
}

TEST_F(TextRasterTest, AbsoluteSizeIsWholePoints)
{
    osg::OverlayPtr const overlay = makeText("size");
    overlay->size = 12.0f;
    int const width = render(overlay)->width, height = render(overlay)->height;
    overlay->size = 12.9f;
    EXPECT_EQ(render(overlay)->width, width);
    ztPlatform::setDpiScale(3.0, 3.0);
    EXPECT_EQ(render(overlay)->height, height) << "the DPI scale plays no part";
    overlay->size = 24.0f;
    EXPECT_NEAR(render(overlay)->width, 2 * width, 4);
}

TEST_F(TextRasterTest, RelativeSizeGivesTheHeight)
{
    struct Row
    {
        char const* name;
        char const* text;
        float size;
        int targetHeight;
        double dpi;
        int height; // 16: blank
    };
    for (Row const& row : {
             Row{"two lines at 2x", "one\ntwo", 0.1f, 1000, 2.0, 100},
             {"fraction cut", "one", 0.1f, 1009, 1.0, 100},
             {"below a point a line", "1\n2\n3\n4\n5\n6", 0.05f, 100, 1.0, 16},
             {"below a point at this scale", "one", 0.05f, 100, 5.1, 16},
             {"other modes are relative too", "one", 0.2f, 100, 1.0, 20},
         })
    {
        ztPlatform::setDpiScale(1.0, row.dpi);
        osg::OverlayPtr const overlay = makeText(row.text);
        overlay->sizeMode = row.height == 20 ? 2 : osg::Overlay::SizeRelative;
        overlay->size = row.size;
        osg::ImagePtr const image = render(overlay, row.targetHeight);
        EXPECT_EQ(image->height, row.height) << row.name;
        EXPECT_EQ(overlay->dirty, row.height == 16) << row.name;
    }
}

TEST_F(TextRasterTest, LinesAddUp)
{
    osg::OverlayPtr const overlay = makeText("line");
    int const height = render(overlay)->height, width = render(overlay)->width;
    struct Row
    {
        char const* name;
        std::string text;
        int lines;
        int widths;
    };
    for (Row const& row : {
             Row{"trailing break", "line\n", 2, 1},
             {"empty line between", "line\n\nline", 3, 1},
             {"leading break", "\nline", 2, 1},
             {"longest line counts", "i\nline\ni", 3, 1},
             {"break that isn't counted", "line\u2028line", 2, 2},
             {"carriage return is no break", "line\rline", 1, 2},
             {"up to the zero byte", std::string("line\0line\nline", 14), 1, 1},
         })
    {
        overlay->text = row.text;
        osg::ImagePtr const image = render(overlay);
        EXPECT_NEAR(image->height, row.lines * height, row.lines) << row.name;
        if (row.widths == 1)
            EXPECT_EQ(image->width, width) << row.name;
        else
            EXPECT_GT(image->width, width) << row.name;
    }
    overlay->text = "\n\n";
    osg::ImagePtr const image = render(overlay);
    EXPECT_EQ(image->width, 0) << "breaks alone give no picture";
    EXPECT_EQ(image->height, 0);
    EXPECT_FALSE(overlay->dirty);
    EXPECT_EQ(corners(overlay), "(0, 0) (0, 0) (0, 0) (0, 0)");
}

TEST_F(TextRasterTest, EveryScriptGivesItsOwnPicture)
{
    std::vector<std::vector<osg::UInt8>> seen;
    for (char const* text : {
             "Latin",
             "\u0421\u043b\u043e\u0432\u043e",
             "\u0645\u0631\u062d\u0628\u0627",
             "Latin \u05e9\u05dc\u05d5\u05dd 12",
             "\u0939\u093f\u0928\u094d\u0926\u0940",
             "\u5b57\u5e55",
             "\U0001F600",
             "\xff\xfe\x80 invalid \xc3",
             "a\u0301\u0302\u0303",
             "\u202eback\u202c",
         })
    {
        osg::OverlayPtr const overlay = makeText(text);
        overlay->size = 40;
        osg::ImagePtr const image = render(overlay);
        EXPECT_GT(sum(image, 3), 0) << text;
        for (auto const& other : seen)
            EXPECT_NE(image->pixels, other) << text;
        seen.push_back(image->pixels);
    }
}

TEST_F(TextRasterTest, RightToLeftTextIsShapedAndOrdered)
{
    // Joined letters are narrower than those that a zero-width non-joiner keeps apart.
    osg::OverlayPtr const joined = makeText("\u0628\u0628\u0628"), apart = makeText("\u0628\u200c\u0628\u200c\u0628");
    EXPECT_LT(render(joined)->width, render(apart)->width);
}

TEST_F(TextRasterTest, BlankingLeavesDirtyAndPosition)
{
    for (auto const& [name, text, size] :
         {std::tuple{"empty", std::string(), 12.0f}, std::tuple{"zero byte first", std::string("\0text", 5), 12.0f},
          std::tuple{"below one point", std::string("text"), 0.9f}})
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
            EXPECT_EQ(recorder.text({{"image", image}}), "!image") << name;
            EXPECT_EQ(image->pixels, std::vector<osg::UInt8>(1024, 0)) << name;
            EXPECT_EQ(overlay->dirty, dirty) << name;
            EXPECT_EQ(corners(overlay), before) << name;
        }
}

TEST_F(TextRasterTest, MarksOfARendering)
{
    osg::OverlayPtr const text = makeText("text"), picture = makePicture(makeImage(3, 3));
    std::vector<std::pair<char const*, osg::FieldContainerPtr>> const names{
        {"image", shownImage(text)}, {"text", text}, {"picture", picture}, {"texture", textureOf(picture)}};
    Recorder recorder;
    render(text);
    EXPECT_EQ(recorder.marks(names), "!image !1000text !8");
    recorder.clear();
    render(picture);
    EXPECT_EQ(recorder.marks(names), "!1texture !1000picture !8");
    EXPECT_FALSE(picture->dirty);
    osg::OverlayPtr const bare = hold(osg::create<osg::Overlay>());
    bare->text = text->text;
    bare->font = text->font;
    render(bare);
    EXPECT_EQ(shownImage(bare)->pixels, shownImage(text)->pixels) << "a core without foreground gets one";
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
    overlay->sizeMode = 1;
    overlay->size = 500;
    EXPECT_EQ(render(overlay)->height, 0) << "a rendering of 2 GiB and more isn't made";

    overlay->sizeMode = 0;
    overlay->size = 12;
    overlay->textColor = {-3, 7, infinity, std::nanf("")};
    overlay->backgroundColor = {-3, 7, std::nanf("")};
    overlay->backgroundTransparency = {9, 9, 9};
    EXPECT_GT(render(overlay)->height, 0);
}

} // namespace
