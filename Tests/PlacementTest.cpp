// The size that overlays are laid out for, and where they come to lie.
#include "TestSupport.h"

#include "OSGCamera.h"

#include <cmath>
#include <limits>

namespace
{

using ViewportSizeTest = SceneTest;
using PlacementTest = SceneTest;

osg::TileCameraDecoratorPtr createTile(int fullWidth, int fullHeight)
{
    auto const tile = osg::create<osg::TileCameraDecorator>();
    tile->fullWidth = fullWidth;
    tile->fullHeight = fullHeight;
    tile->left = 0.25f;
    tile->right = tile->bottom = 0.5f;
    return tile;
}

TEST_F(ViewportSizeTest, FollowsTheChainOfCameras)
{
    // A chain of cameras from the outermost inwards: S sheared stereo, T tile of 5000 by 4000, U tile of 80
    // by 60, P perspective with the row's aspect, which ends it.
    float const infinity = std::numeric_limits<float>::infinity();
    constexpr int most = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();
    constexpr int uneven = (1 << 24) + 1; // no float
    using Row = std::tuple<char const*, float, int, int, int, int>;
    for (auto const& [chain, aspect, pixelWidth, pixelHeight, expectedWidth, expectedHeight] : {
             Row{"", 1.0f, 800, 600, 800, 600},    {"P", 1.5f, 801, 600, 801, 600},
             {"S", 1.5f, 801, 600, 801, 600},      {"SP", 1.0f, uneven, uneven, uneven, uneven},
             {"SP", 1.5f, 801, 600, 1201, 600},    {"SP", 0.5f, 800, 600, 800, 1200},
             {"SP", 0.3f, 800, 600, 800, 1999},    {"SP", 0.1f, 800, 600, 800, 6000},
             {"SP", 1.3f, 10, 10, 13, 10},         {"SP", std::nanf(""), 800, 600, 800, 600},
             {"SP", 0.0f, 800, 600, 800, most},    {"SP", -0.0f, 800, 600, 800, least},
             {"SP", 0.0f, 800, 0, 800, 0},         {"SP", infinity, 800, 600, most, 600},
             {"SSP", 1.5f, 801, 600, 801, 600},    {"T", 1.0f, 800, 600, 5000, 4000},
             {"TSP", 1.5f, 800, 600, 5000, 4000},  {"STP", 1.5f, 800, 600, 5000, 4000},
             {"SSTP", 1.5f, 800, 600, 5000, 4000}, {"TUP", 1.0f, 800, 600, 5000, 4000},
             {"UTP", 1.0f, 800, 600, 80, 60},
         })
    {
        osg::ViewportPtr const viewport = makeViewport(pixelWidth, pixelHeight);
        osg::CameraPtr* end = &viewport->camera;
        for (char const kind : std::string(chain))
        {
            if (kind == 'T' || kind == 'U')
                osg::setRefdCP(*end, kind == 'T' ? createTile(5000, 4000) : createTile(80, 60));
            else if (kind == 'S')
                osg::setRefdCP(*end, osg::create<osg::ShearedStereoCameraDecorator>());
            else
                osg::setRefdCP(*end, osg::create<osg::PerspectiveCamera>());
            if (kind == 'P')
                osg::dynamicCast<osg::PerspectiveCamera>(*end)->aspect = aspect;
            else
                end = &osg::dynamicCast<osg::CameraDecorator>(*end)->decoratee;
        }
        int width = -1, height = -1;
        ztOverlays::getViewportSize(viewport, width, height);
        EXPECT_EQ((std::pair{width, height}), (std::pair{expectedWidth, expectedHeight})) << chain << ' ' << aspect;
        if (!std::isnormal(aspect))
            continue;
        osg::LayoutArea const area = viewport->getLayoutArea();
        bool const isTile = std::string(chain).find_first_of("TU") != std::string::npos;
        float const w = float(width), h = float(height);
        EXPECT_EQ((std::array{area.left, area.bottom, area.right, area.top}),
                  (isTile ? std::array{w / 4, h / 2, w / 2, h} : std::array{0.0f, 0.0f, w, h}))
            << chain << ' ' << aspect;
    }
    int width = -1, height = -1;
    ztOverlays::getViewportSize(osg::NullFC, width, height);
    EXPECT_EQ((std::pair{width, height}), (std::pair{0, 0}));
}

TEST_F(PlacementTest, KnownRectangles)
{
    // Left, bottom, right and top in a target of 1000 by 500. Content and size mode 2 are none of the named ones.
    struct Row
    {
        char const* name;
        int content, sizeMode, imageWidth, imageHeight;
        float size;
        osg::Vec2f anchor, offset;
        double dpiX, dpiY;
        std::array<float, 4> expected;
    };
    float const scaled = 36.629997f; // rounded to float once
    for (Row const& row : {
             Row{"relative", 1, 1, 200, 100, 0.2f, {1, 0}, {-10, 10}, 2, 2, {780, 20, 980, 120}},
             {"absolute, centred", 1, 0, 200, 100, 50, {0.5f, 0.5f}, {0, 0}, 2, 2, {400, 200, 600, 300}},
             {"text", 0, 0, 64, 32, 50, {1, 1}, {0, 0}, 3, 4, {936, 468, 1000, 500}},
             {"absolute height", 1, 0, 30, 10, 10, {0, 0}, {1, 1}, 5, 2, {5, 2, 65, 22}},
             {"relative height", 1, 1, 30, 10, 0.1f, {0, 0}, {0, 0}, 5, 2, {0, 0, 150, 50}},
             {"other values", 2, 2, 30, 10, 0.1f, {0, 0}, {0, 0}, 5, 2, {0, 0, 150, 50}},
             {"outside", 0, 0, 10, 10, 0, {0, 1}, {-20, 5}, 1, 1, {-20, 495, -10, 505}},
             {"beyond", 1, 1, 30, 10, 0.5f, {-0.5f, 1.5f}, {2, 4}, 0.5, 0.25, {-124, 376, 626, 626}},
             {"double", 1, 0, 1, 1, 33.3f, {0, 0}, {33.3f, 0}, 1.1, 1.1, {scaled, 0, 2 * scaled, scaled}},
             {"float", 1, 0, 1, 1, 33, {.05f, .03f}, {.1f, .1f}, 1, 1, {48.449997f, 14.110001f, 81.45f, 47.11f}},
         })
    {
        ztPlatform::setDpiScale(row.dpiX, row.dpiY);
        osg::ImagePtr const image = makeImage(row.imageWidth, row.imageHeight);
        osg::OverlayPtr const overlay = makePicture(row.content == 0 ? osg::ImagePtr() : image);
        textureOf(overlay)->setImage(image);
        overlay->contentType = row.content;
        overlay->sizeMode = row.sizeMode;
        overlay->size = row.size;
        overlay->anchor = row.anchor;
        overlay->offset = row.offset;
        ztOverlays::updateOverlayPosition(overlay, 1000, 500);
        osg::Pnt2f const low = overlay->foreground->positions[0], high = overlay->foreground->positions[2];
        EXPECT_EQ((std::array{low.x, low.y, high.x, high.y}), row.expected) << row.name;
    }
}

TEST_F(PlacementTest, WritesAndMarksOnlyWhatMoved)
{
    osg::OverlayPtr const overlay = makeOverlay();
    float const nan = std::nanf(""), beyond = std::nextafter(1e-6f, 1.0f), next = std::nextafter(16.0f, 17.0f);
    for (auto const& [name, corner, stored, marks] : {std::tuple{"same", 0u, osg::Pnt2f{0, 0}, ""},
                                                      {"at the threshold", 0u, osg::Pnt2f{1e-6f, -1e-6f}, ""},
                                                      {"beyond it, x", 0u, osg::Pnt2f{beyond, 0}, "!8"},
                                                      {"beyond it, y", 0u, osg::Pnt2f{0, -beyond}, "!8"},
                                                      {"second corner isn't compared", 1u, osg::Pnt2f{99, 99}, ""},
                                                      {"fourth corner isn't compared", 3u, osg::Pnt2f{99, 99}, ""},
                                                      {"third corner, last digit, x", 2u, osg::Pnt2f{next, 16}, "!8"},
                                                      {"third corner, last digit, y", 2u, osg::Pnt2f{16, next}, "!8"},
                                                      {"not a number", 2u, osg::Pnt2f{16, nan}, "!8"}})
    {
        overlay->anchor = {0, 0};
        ztOverlays::updateOverlayPosition(overlay, 100, 100);
        overlay->foreground->positions[corner] = stored;
        Recorder recorder;
        ztOverlays::updateOverlayPosition(overlay, 100, 100);
        EXPECT_EQ(recorder.text(), marks) << name;
        overlay->anchor = {nan, 0};
        ztOverlays::updateOverlayPosition(overlay, 100, 100);
        recorder.clear();
        ztOverlays::updateOverlayPosition(overlay, 100, 100);
        EXPECT_EQ(recorder.typedMarks(), "!8PolygonForeground2") << "no number is never where it is to be";
    }
    EXPECT_EQ(overlay->foreground->positions.size(), 4u);
}

TEST_F(PlacementTest, NodeFormsTakeTheLayoutSize)
{
    osg::ViewportPtr const viewport = makeViewport(100, 100);
    osg::setRefdCP(viewport->camera, createTile(1016, 816));
    using Form = void (*)(osg::NodePtr const&, osg::ViewportPtr const&);
    for (Form const update : {Form(ztOverlays::updateOverlayPosition), Form(ztOverlays::updateOverlay)})
    {
        osg::NodePtr const node = hold(ztOverlays::createOverlay(osg::NullFC));
        overlayOf(node)->anchor = {1, 1};
        overlayOf(node)->dirty = false;
        update(node, viewport);
        EXPECT_EQ(corners(overlayOf(node)), "(1000, 800) (1016, 800) (1016, 816) (1000, 816)");
        overlayOf(node)->anchor = {0, 0};
        Recorder recorder;
        update(makeNode(), viewport);
        update(osg::NullFC, viewport);
        update(node, osg::NullFC);
        ztOverlays::updateOverlay(osg::OverlayPtr(), 10, 10);
        ztOverlays::updateOverlayPosition(osg::OverlayPtr(), 10, 10);
        ztOverlays::updateOverlayPosition(osg::OverlayPtr(hold(osg::create<osg::Overlay>())), 10, 10);
        EXPECT_EQ(recorder.marks(), "");
    }
}

} // namespace
