// The size that overlays are laid out for, and where they come to lie.
#include "OSGPolygonFit.h"
#include "TestSupport.h"
#include "ztNumeric.h"

#include "OSGCamera.h"

#include <cmath>
#include <limits>

using PlacementTest = SceneTest;

static osg::CameraPtr createCamera(char kind, float aspect)
{
    if (kind == 'S')
        return osg::create<osg::ShearedStereoCameraDecorator>();
    if (kind != 'P')
        return kind == 'T' ? SceneTest::createTile(5000, 4000) : SceneTest::createTile(80, 60);
    auto const perspective = osg::create<osg::PerspectiveCamera>();
    perspective->aspect = aspect;
    return perspective;
}

static constexpr int odd = (1 << 24) + 1; // no float

// Cameras from the outermost inwards (S sheared stereo, T tile of 5000 by 4000, U tile of 80 by 60, P perspective of
// the aspect that follows), the viewport's size and that of the layout.
static std::tuple<std::string, float, int, int, int, int> const cameraChains[] = {
    {"P", 1.5f, 801, 600, 801, 600},     {"S", 1.5f, 801, 600, 801, 600},       {"SSP", 1.5f, 801, 600, 801, 600},
    {"STP", 1.5f, 800, 600, 5000, 4000}, {"TUP", 1.0f, 800, 600, 5000, 4000},   {"SP", 1.0f, odd, odd, odd, odd},
    {"SP", 1.5f, 801, 600, 1201, 600},   {"SP", 0.3f, 800, 600, 800, 1999},     {"SP", 0.1f, 800, 600, 800, 6000},
    {"SP", 1.3f, 10, 10, 13, 10},        {"SP", std::nanf(""), 80, 60, 80, 60},
};

TEST_F(PlacementTest, NumbersAreTruncatedTowardsZeroWithinTheRangeOfInt)
{
    constexpr int most = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();
    double const infinity = std::numeric_limits<double>::infinity();
    for (auto const& [value, expected] : {std::pair{2.9, 2},
                                          {-2.9, -2},
                                          {most - 0.1, most - 1},
                                          {3e9, most},
                                          {infinity, most},
                                          {least + 0.1, least + 1},
                                          {-3e9, least},
                                          {-infinity, least},
                                          {std::nan(""), 0}})
        EXPECT_EQ(ztNumeric::truncate(value), expected) << value;
}

TEST_F(PlacementTest, LayoutSizeFollowsTheChainOfCameras)
{
    int width = -1, height = -1;
    for (auto const& [chain, aspect, pixelWidth, pixelHeight, expectedWidth, expectedHeight] : cameraChains)
    {
        osg::ViewportPtr const viewport = makeViewport(pixelWidth, pixelHeight);
        osg::CameraPtr* end = &viewport->camera;
        for (char const kind : chain)
        {
            osg::setRefdCP(*end, createCamera(kind, aspect));
            if (kind != 'P')
                end = &osg::dynamicCast<osg::CameraDecorator>(*end)->decoratee;
        }
        ztOverlays::getViewportSize(viewport, width, height);
        EXPECT_EQ((std::pair{width, height}), (std::pair{expectedWidth, expectedHeight})) << chain << ' ' << aspect;
        osg::LayoutArea const area = viewport->getLayoutArea();
        EXPECT_EQ((std::pair{area.right, area.top}), (std::pair{float(width), float(height)})) << chain;
    }
    ztOverlays::getViewportSize(osg::NullFC, width, height);
    EXPECT_EQ((std::pair{width, height}), (std::pair{0, 0}));
}

TEST_F(PlacementTest, KnownRectangles)
{
    // Content type and size mode (2 is none of the named ones), size of the image and the overlay, anchor, offset, DPI
    // scale; left, bottom, right and top in a target of 1000 by 500.
    using Row = std::tuple<char const*, int, int, int, int, float, osg::Vec2f, osg::Vec2f, double, double,
                           std::array<float, 4>>;
    for (auto const& [name, content, sizeMode, width, height, size, anchor, offset, dpiX, dpiY, expected] : {
             Row{"relative", 1, 1, 200, 100, 0.2f, {1, 0}, {-10, 10}, 2, 2, {780, 20, 980, 120}},
             {"absolute", 1, 0, 30, 10, 10, {0.5f, 1}, {1, 1}, 5, 2, {475, 482, 535, 502}},
             {"text", 0, 0, 64, 32, 50, {1, 1}, {0, 0}, 3, 4, {936, 468, 1000, 500}},
             {"other values", 2, 2, 30, 10, 0.1f, {0, 0}, {0, 0}, 5, 2, {0, 0, 150, 50}},
             {"double", 1, 0, 1, 1, 33.3f, {0, 0}, {33.3f, 0}, 1.1, 1.1, {36.629997f, 0, 73.259995f, 36.629997f}},
             {"float", 1, 0, 1, 1, 33, {.05f, .03f}, {.1f, .1f}, 1, 1, {48.449997f, 14.110001f, 81.45f, 47.11f}},
         })
    {
        ztPlatform::setDpiScale(dpiX, dpiY);
        osg::ImagePtr const image = makeImage(width, height);
        osg::OverlayPtr const overlay = makePicture(content ? image : osg::ImagePtr(), size, sizeMode);
        textureOf(overlay)->setImage(image);
        overlay->contentType = content;
        overlay->anchor = anchor;
        overlay->offset = offset;
        ztOverlays::updateOverlayPosition(overlay, 1000, 500);
        auto const [left, bottom, right, top] = expected;
        EXPECT_EQ(corners(overlay), (std::vector{left, bottom, right, bottom, right, top, left, top})) << name;
    }
}

TEST_F(PlacementTest, WritesAndMarksOnlyWhatMoved)
{
    osg::OverlayPtr const overlay = makeText("");
    float const beyond = std::nextafter(1e-6f, 1.0f), next = std::nextafter(16.0f, 17.0f);
    auto const marks = [&overlay](std::size_t corner, float x, float y) {
        ztOverlays::updateOverlayPosition(overlay, 100, 100);
        overlay->foreground->positions[corner] = {x, y};
        Recorder recorder;
        ztOverlays::updateOverlayPosition(overlay, 100, 100);
        return recorder.take();
    };
    EXPECT_EQ(marks(0, 1e-6f, -1e-6f), "") << "at the threshold";
    EXPECT_EQ(marks(0, beyond, 0) + marks(0, 0, -beyond), "!.positions!.positions") << "beyond it";
    EXPECT_EQ(marks(1, 99, 99), "") << "isn't compared";
    EXPECT_EQ(marks(2, next, 16) + marks(2, 16, next) + marks(2, 16, std::nanf("")),
              "!.positions!.positions!.positions")
        << "the last digit";
    for (unsigned const count : {2u, 0u})
    {
        overlay->foreground->positions.resize(count);
        ztOverlays::updateOverlayPosition(overlay, 100, 100);
        EXPECT_EQ(overlay->foreground->positions.size(), 4u);
    }
}

TEST_F(PlacementTest, NodeFormsTakeTheLayoutSizeButForRendering)
{
    osg::ViewportPtr const viewport = makeViewport(100, 100, createTile(1016, 816));
    using Form = void (*)(osg::NodePtr const&, osg::ViewportPtr const&);
    for (auto const& [update, x, y] : {std::tuple{Form(ztOverlays::updateOverlayPosition), 1004.0f, 804.0f},
                                       {ztOverlays::updateOverlay, 1004.0f, 804.0f},
                                       {ztOverlays::updateOverlayImage, 88.0f, 88.0f}})
    {
        osg::NodePtr const node = makeNode(makePicture(makeImage(3, 3)));
        overlayOf(node)->anchor = {1, 1};
        overlayOf(node)->dirty = false;
        update(node, viewport);
        update(makeNode(), viewport);
        update(osg::NullFC, viewport);
        update(node, osg::NullFC);
        EXPECT_EQ(corners(overlayOf(node)), (std::vector{x, y, x + 12, y, x + 12, y + 12, x, y + 12}));
    }
    ztOverlays::updateOverlayPosition(osg::OverlayPtr(hold(osg::create<osg::Overlay>())), 10, 10);
}

TEST_F(PlacementTest, OnlyWholeRectanglesAreFittedToPixels)
{
    std::vector<osg::Pnt2f> const rectangle = {{1.5f, 2}, {9.75f, 2}, {9.75f, 8.5f}, {1.5f, 8.5f}};
    std::vector<osg::Vec3f> const whole = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    osg::LayoutArea const area = {0, 0, 20, 10};
    auto const fitted = [](auto const& positions, auto const& texCoords, osg::LayoutArea const& layout) {
        osg::PixelFit const fit = osg::fitToPixels({positions, texCoords, osg::NullFC}, layout, 20, 10);
        return std::pair{fit.width, fit.height};
    };
    std::pair const none{0, 0};
    EXPECT_EQ(fitted(rectangle, whole, area), (std::pair{8, 6}));
    EXPECT_EQ(fitted(std::vector<osg::Pnt2f>{{3, 5}, {4, 5}, {4, 6}, {3, 6}}, whole, area), (std::pair{1, 1}));
    EXPECT_EQ(fitted(rectangle, whole, {0, 0, 21, 10}), none);
    EXPECT_EQ(fitted(rectangle, whole, {0, 0, 20, 11}), none);
    for (std::size_t i = 0; i < 4; ++i)
    {
        auto corners = rectangle, tall = rectangle;
        auto left = whole, low = whole;
        corners[i].x += 1;
        tall[i].y += 1;
        left[i].x = low[i].y = 0.5f;
        EXPECT_EQ(fitted(corners, whole, area), none) << i;
        EXPECT_EQ(fitted(tall, whole, area), none) << i;
        EXPECT_EQ(fitted(rectangle, left, area), none) << i;
        EXPECT_EQ(fitted(rectangle, low, area), none) << i;
    }
    std::vector<osg::Pnt2f> const thin = {{1, 2}, {1.5f, 2}, {1.5f, 8}, {1, 8}},
                                  flat = {{1, 2}, {9, 2}, {9, 2}, {1, 2}};
    EXPECT_EQ(fitted(thin, whole, area), none);
    EXPECT_EQ(fitted(flat, whole, area), none);
    EXPECT_EQ(fitted(std::vector(rectangle.begin(), rectangle.end() - 1), whole, area), none);
    auto three = whole;
    three.pop_back();
    EXPECT_EQ(fitted(rectangle, three, area), none);
}

TEST_F(PlacementTest, DpiScaleRefusesWhatIsNoScale)
{
    ASSERT_TRUE(ztPlatform::setDpiScale(1.5, 2.5));
    for (double bad : {0.0, -1.0, std::numeric_limits<double>::infinity(), std::nan("")})
        EXPECT_FALSE(ztPlatform::setDpiScale(bad, 1.0) || ztPlatform::setDpiScale(1.0, bad)) << bad;
    EXPECT_EQ((std::pair{ztPlatform::getDpiScaleX(), ztPlatform::getDpiScaleY()}), (std::pair{1.5, 2.5}));
}
