#include "Placement.h"

#include "ImageSlot.h"
#include "OverlayAccess.h"
#include "ztOverlayUtils.h"
#include "ztPlatform.h"

#include <cmath>

namespace ztOverlays
{

namespace
{

/// The corners (x0, y0) and (x1, y1), in pixels.
struct PixelRectangle
{
    float x0, y0, x1, y1;
};

PixelSize pictureSize(PixelSize image, int sizeMode, float size, int targetHeight)
{
    float const aspect = image.width / image.height;
    float const height = sizeMode == osg::Overlay::SizeAbsolute ? float(double(size) * ztPlatform::getDpiScaleY())
                                                                : float(targetHeight) * size;
    return {aspect * height, height};
}

osg::Vec2f scaledByDpi(osg::Vec2f offset)
{
    double const scaleX = ztPlatform::getDpiScaleX();
    double const scaleY = ztPlatform::getDpiScaleY();
    return {float(double(offset.x) * scaleX), float(double(offset.y) * scaleY)};
}

/// \param offset  in pixels
PixelRectangle place(PixelSize size, osg::Vec2f anchor, osg::Vec2f offset, int targetWidth, int targetHeight)
{
    float const x0 = ((float(targetWidth) * anchor.x) - (anchor.x * size.width)) + offset.x;
    float const y0 = ((float(targetHeight) * anchor.y) - (anchor.y * size.height)) + offset.y;
    return {x0, y0, size.width + x0, size.height + y0};
}

/// False too if one of the two is not a number.
bool isSame(float a, float b)
{
    constexpr float epsilon = 1e-6f;
    return std::abs(a - b) <= epsilon;
}

bool isAt(osg::MField<osg::Pnt2f> const& positions, PixelRectangle const& rectangle)
{
    return positions.size() > 2 && isSame(rectangle.x0, positions[0].x) && isSame(rectangle.y0, positions[0].y) &&
           isSame(rectangle.x1, positions[2].x) && isSame(rectangle.y1, positions[2].y);
}

} // namespace

PixelSize overlayPixelSize(osg::Overlay const& overlay, osg::Image const* image, int targetHeight)
{
    if (!image)
        return {0.0f, 0.0f};
    PixelSize const imageSize{float(image->width), float(image->height)};
    return isText(overlay) ? imageSize : pictureSize(imageSize, overlay.sizeMode, overlay.size, targetHeight);
}

void updateOverlayPosition(OverlayPtr const& overlay, int viewportWidth, int viewportHeight)
{
    if (overlay != osg::NullFC && overlay->foreground != osg::NullFC)
        placeOverlay(*overlay, syncImage(overlay).get(), viewportWidth, viewportHeight);
}

void placeOverlay(osg::Overlay& overlay, osg::Image const* image, int targetWidth, int targetHeight)
{
    PixelSize const size = overlayPixelSize(overlay, image, targetHeight);
    PixelRectangle const corners = place(size, overlay.anchor, scaledByDpi(overlay.offset), targetWidth, targetHeight);
    auto& positions = overlay.foreground->positions;
    if (isAt(positions, corners))
        return;
    positions.reserve(4); // or nothing changes
    positions.clear();
    positions.push_back({corners.x0, corners.y0});
    positions.push_back({corners.x1, corners.y0});
    positions.push_back({corners.x1, corners.y1});
    positions.push_back({corners.x0, corners.y1});
    osg::markChanged(overlay.foreground, osg::PolygonForeground2Base::PositionsFieldMask);
}

void updateOverlayPosition(osg::NodePtr const& node, ViewportPtr const& viewport)
{
    if (viewport == osg::NullFC)
        return;
    int width, height;
    getViewportSize(viewport, width, height);
    updateOverlayPosition(overlayOf(node), width, height);
}

} // namespace ztOverlays
