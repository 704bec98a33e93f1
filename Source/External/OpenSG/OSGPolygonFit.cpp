#include "OSGPolygonFit.h"

#include "ztNumeric.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace osg::v1
{

namespace
{

/// Whether a pixel of the layout is one of the viewport. A tile's edges are fractions, which round.
bool isUnscaled(LayoutArea const& area, Int32 width, Int32 height)
{
    constexpr float rounding = 0.01f;
    return std::abs(area.right - area.left - float(width)) < rounding &&
           std::abs(area.top - area.bottom - float(height)) < rounding;
}

bool isRectangle(std::vector<Pnt2f> const& corners)
{
    return corners.size() == 4 && corners[0].x == corners[3].x && corners[0].y == corners[1].y &&
           corners[2].x == corners[1].x && corners[2].y == corners[3].y;
}

bool showsWholeImage(std::vector<Vec3f> const& texCoords)
{
    constexpr float corners[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    auto const isAt = [](float const(&corner)[2], Vec3f const& texCoord) {
        return texCoord.x == corner[0] && texCoord.y == corner[1];
    };
    return texCoords.size() >= 4 && std::equal(std::begin(corners), std::end(corners), texCoords.begin(), isAt);
}

/// Sets the fit of one axis; the whole pixels that it covers, 0 for none. The extent is a difference of rounded
/// coordinates.
Int32 fit(float low, float high, AxisFit& axis)
{
    float const rounding = 2.0f * std::numeric_limits<float>::epsilon() * std::max(std::abs(low), std::abs(high));
    float const extent = std::floor(high - low + rounding);
    if (!(extent >= 1.0f))
        return 0;
    axis = {low, std::trunc(low), extent / (high - low)};
    return ztNumeric::truncate(extent);
}

} // namespace

PixelFit fitToPixels(TexturedPolygon const& polygon, LayoutArea const& area, Int32 width, Int32 height)
{
    PixelFit result;
    std::vector<Pnt2f> const& corners = polygon.positions;
    if (!isUnscaled(area, width, height) || !isRectangle(corners))
        return result;
    Int32 const columns = fit(corners[0].x, corners[2].x, result.x), rows = fit(corners[0].y, corners[2].y, result.y);
    if (columns > 0 && rows > 0 && showsWholeImage(polygon.texCoords))
    {
        result.width = columns;
        result.height = rows;
    }
    return result;
}

} // namespace osg::v1
