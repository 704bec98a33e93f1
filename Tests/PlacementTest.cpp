// The size that overlays are laid out for, and where they come to lie.
#include "TestSupport.h"

#include "OSGCamera.h"

#include <cmath>
#include <limits>

namespace
{

using ViewportSizeTest = SceneTest;
using PlacementTest = SceneTest;

TEST_F(ViewportSizeTest, FollowsTheChainOfCameras)
{
    // A chain of cameras from the outermost inwards: S sheared stereo, T tile of 5000 by 4000, U tile of 70
    // by 60, P perspective with the row's aspect, which ends it.
    struct Row
    {
        char const* chain;
        float aspect;
        int width, height, expectedWidth, expectedHeight;
    };
    float const infinity = std::numeric_limits<float>::infinity();
    constexpr int most = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();
    for (Row const& row : {
             Row{"", 1.0f, 800, 600, 800, 600},    {"P", 1.5f, 801, 600, 801, 600},
             {"S", 1.5f, 801, 600, 801, 600},      {"SP", 1.0f, 801, 600, 801, 600},
             {"SP", 1.5f, 801, 600, 1201, 600},    {"SP", 0.5f, 800, 600, 800, 1200},
             {"SP", 0.3f, 800, 600, 800, 1999},    {"SP", std::nanf(""), 800, 600, 800, 600},
             {"SP", 0.0f, 800, 600, 800, most},    {"SP", -0.0f, 800, 600, 800, least},
             {"SP", 0.0f, 800, 0, 800, 0},         {"SP", infinity, 800, 600, most, 600},
             {"SSP", 1.5f, 801, 600, 801, 600},    {"T", 1.0f, 800, 600, 5000, 4000},
             {"TSP", 1.5f, 800, 600, 5000, 4000},  {"STP", 1.5f, 800, 600, 5000, 4000},
             {"SSTP", 1.5f, 800, 600, 5000, 4000}, {"TUP", 1.0f, 800, 600, 5000, 4000},
             {"UTP", 1.0f, 800, 600, 70, 60},
         })
    {
        osg::ViewportPtr const viewport = makeViewport(row.width, row.height);
        osg::CameraPtr* end = &viewport->camera;
        for (char const kind : std::string(row.chain))
        {
            if (kind == 'P')
            {
                auto const camera = osg::create<osg::PerspectiveCamera>();
                camera->aspect = row.aspect;
                osg::setRefdCP(*end, camera);
                break;
            }
            osg::CameraDecoratorPtr decorator = osg::create<osg::ShearedStereoCameraDecorator>();
            if (kind != 'S')
            {
                auto const tile = osg::create<osg::TileCameraDecorator>();
                tile->fullWidth = kind == 'T' ? 5000 : 70;
                tile->fullHeight = kind == 'T' ? 4000 : 60;
                osg::subRef(decorator);
                decorator = tile;
            }
            osg::setRefdCP(*end, decorator);
            end = &decorator->decoratee;
        }
        int width = -1, height = -1;
        ztOverlays::getViewportSize(viewport, width, height);
        EXPECT_EQ(width, row.expectedWidth) << row.chain << ' ' << row.aspect;
        EXPECT_EQ(height, row.expectedHeight) << row.chain << ' ' << row.aspect;
    }
    int width = -1, height = -1;
    ztOverlays::getViewportSize(osg::NullFC, width, height);
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
}

TEST_F(PlacementTest, KnownRectangles)
{
    enum Mode
    {
        Absolute,
        Relative,
        Text
    };
    struct Row
    {
        char const* name;
        Mode mode;
        int imageWidth, imageHeight;
        float size;
        osg::Vec2f anchor, offset;
        double dpiX, dpiY;
        char const* expected;
    };
    for (Row const& row : {
             Row{"relative",
                 Relative,
                 200,
                 100,
                 0.2f,
                 {1, 0},
                 {-10, 10},
                 2,
                 2,
                 "(780, 20) (980, 20) (980, 120) (780, 120)"},
             {"absolute, centred",
              Absolute,
              200,
              100,
              50,
              {0.5f, 0.5f},
              {0, 0},
              2,
              2,
              "(400, 200) (600, 200) (600, 300) (400, 300)"},
             {"text", Text, 64, 32, 50, {1, 1}, {0, 0}, 3, 4, "(936, 468) (1000, 468) (1000, 500) (936, 500)"},
             {"origin", Absolute, 30, 10, 10, {0, 0}, {0, 0}, 1, 1, "(0, 0) (30, 0) (30, 10) (0, 10)"},
             {"absolute height goes by the vertical scale",
              Absolute,
              30,
              10,
              10,
              {0, 0},
              {1, 1},
              5,
              2,
              "(5, 2) (65, 2) (65, 22) (5, 22)"},
             {"relative height by none",
              Relative,
              30,
              10,
              0.1f,
              {0, 0},
              {0, 0},
              5,
              2,
              "(0, 0) (150, 0) (150, 50) (0, 50)"},
             {"outside", Text, 10, 10, 0, {0, 1}, {-20, 5}, 1, 1, "(-20, 495) (-10, 495) (-10, 505) (-20, 505)"},
         })
    {
        ztPlatform::setDpiScale(row.dpiX, row.dpiY);
        osg::ImagePtr const image = makeImage(row.imageWidth, row.imageHeight);
        osg::OverlayPtr const overlay = row.mode == Text ? makeOverlay() : makePicture(image);
        if (row.mode == Text)
            textureOf(overlay)->setImage(image);
        overlay->sizeMode = row.mode == Relative ? osg::Overlay::SizeRelative : osg::Overlay::SizeAbsolute;
        overlay->size = row.size;
        overlay->anchor = row.anchor;
        overlay->offset = row.offset;
        ztOverlays::updateOverlayPosition(overlay, 1000, 500);
        EXPECT_EQ(corners(overlay), row.expected) << row.name;
    }
}

// Whatever the size: the point of the overlay at the anchor lies on the target's, shifted by the scaled
// offset.
TEST_F(PlacementTest, AnchorPointsMeet)
{
    osg::OverlayPtr const overlay = makePicture(makeImage(170, 90));
    overlay->offset = {-7.5f, 3.25f};
    for (double dpi : {0.75, 1.0, 2.0})
        for (int sizeMode : {osg::Overlay::SizeAbsolute, osg::Overlay::SizeRelative})
            for (float x : {0.0f, 0.3f, 1.0f, -0.5f})
                for (float y : {0.0f, 0.5f, 1.7f})
                {
                    ztPlatform::setDpiScale(dpi, 2 * dpi);
                    overlay->sizeMode = sizeMode;
                    overlay->size = sizeMode == osg::Overlay::SizeAbsolute ? 40.0f : 0.15f;
                    overlay->anchor = {x, y};
                    ztOverlays::updateOverlayPosition(overlay, 1280, 720);
                    osg::Pnt2f const low = overlay->foreground->positions[0], high = overlay->foreground->positions[2];
                    double const height = sizeMode == osg::Overlay::SizeAbsolute ? 40 * 2 * dpi : 0.15 * 720;
                    EXPECT_NEAR(low.x + x * (high.x - low.x), 1280 * x - 7.5 * dpi, 1e-3);
                    EXPECT_NEAR(low.y + y * (high.y - low.y), 720 * y + 3.25 * 2 * dpi, 1e-3);
                    EXPECT_NEAR(high.y - low.y, height, 1e-3);
                    EXPECT_NEAR(high.x - low.x, height * 170 / 90, 1e-3);
                }
}

TEST_F(PlacementTest, WritesAndMarksOnlyWhatMoved)
{
    osg::OverlayPtr const overlay = makeOverlay();
    float const nan = std::nanf("");
    struct Row
    {
        char const* name;
        std::size_t corner;
        osg::Pnt2f stored;
        char const* marks;
    };
    for (Row const& row : {
             Row{"same", 0, {0, 0}, ""},
             {"within the threshold", 0, {1e-7f, -1e-7f}, ""},
             {"at the threshold", 0, {1e-6f, -1e-6f}, ""},
             {"beyond it, x", 0, {1.1e-6f, 0}, "!8"},
             {"beyond it, y", 0, {0, -1.1e-6f}, "!8"},
             {"second corner isn't compared", 1, {99, 99}, ""},
             {"fourth corner isn't compared", 3, {99, 99}, ""},
             {"third corner, last digit", 2, {std::nextafter(16.0f, 17.0f), 16}, "!8"},
             {"not a number", 2, {16, nan}, "!8"},
         })
    {
        overlay->anchor = {0, 0};
        ztOverlays::updateOverlayPosition(overlay, 100, 100);
        overlay->foreground->positions[row.corner] = row.stored;
        Recorder recorder;
        ztOverlays::updateOverlayPosition(overlay, 100, 100);
        EXPECT_EQ(recorder.text(), row.marks) << row.name;
        overlay->anchor = {1, 1};
        ztOverlays::updateOverlayPosition(overlay, 100, 100);
    }
    overlay->anchor = {nan, 0};
    ztOverlays::updateOverlayPosition(overlay, 100, 100);
    Recorder recorder;
    ztOverlays::updateOverlayPosition(overlay, 100, 100);
    EXPECT_EQ(recorder.text({{"foreground", overlay->foreground}}), "!8foreground");
    EXPECT_EQ(overlay->foreground->positions.size(), 4u);
}

TEST_F(PlacementTest, NodeFormTakesTheLayoutSize)
{
    osg::NodePtr const node = hold(ztOverlays::createOverlay(osg::NullFC));
    overlayOf(node)->anchor = {1, 1};
    osg::ViewportPtr const viewport = makeViewport(100, 100);
    auto const tile = osg::create<osg::TileCameraDecorator>();
    tile->fullWidth = 1016;
    tile->fullHeight = 816;
    osg::setRefdCP(viewport->camera, tile);
    ztOverlays::updateOverlayPosition(node, viewport);
    EXPECT_EQ(corners(overlayOf(node)), "(1000, 800) (1016, 800) (1016, 816) (1000, 816)");

    Recorder recorder;
    ztOverlays::updateOverlayPosition(makeNode(), viewport);
    ztOverlays::updateOverlayPosition(osg::NodePtr(), viewport);
    ztOverlays::updateOverlayPosition(node, osg::NullFC);
    ztOverlays::updateOverlayPosition(osg::OverlayPtr(), 10, 10);
    ztOverlays::updateOverlayPosition(osg::OverlayPtr(hold(osg::create<osg::Overlay>())), 10, 10);
    EXPECT_EQ(recorder.marks(), "");
}

} // namespace
