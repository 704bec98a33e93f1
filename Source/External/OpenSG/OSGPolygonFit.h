/// \file
/// Where a renderer draws a polygon, and whether an image can be laid on its pixels as it is.
#pragma once

#include "OSGDrawAction.h"
#include "OSGViewport.h"

namespace osg::v1
{

/// From coordinates of a layout, along one axis, to those at which a renderer draws.
struct AxisFit
{
    float operator()(float coordinate) const { return to + (coordinate - from) * scale; }

    float from = 0.0f;
    float to = 0.0f;
    float scale = 1.0f;
};

/// How a polygon is cut to whole pixels.
struct PixelFit
{
    AxisFit x, y;
    /// Size in pixels of a rectangle that was cut to whole pixels and shows its image as a whole; 0 by 0 for any other
    /// polygon. An image of this size is drawn texel for pixel; any other is resampled to it first, as stamping does.
    Int32 width = 0;
    Int32 height = 0;
};

/// Cuts a polygon to whole pixels, as stamping does.
///
/// Where a pixel of the layout is one of the viewport, an upright rectangle whose lower left corner comes first and the
/// opposite one third has that corner truncated to whole pixels, and its extent rounded down to whole pixels, unless
/// that leaves nothing. All other polygons stay as they are.
///
/// \param polygon  borrowed for the call
/// \param area  what Viewport::getLayoutArea() gives
/// \param width,height  the viewport's size in pixels
ZTOPENSG_EXPORT PixelFit fitToPixels(TexturedPolygon const& polygon, LayoutArea const& area, Int32 width, Int32 height);

} // namespace osg::v1
