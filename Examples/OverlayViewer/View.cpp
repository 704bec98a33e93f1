#include "View.h"

#include "OSGOverlay.h"

#include <QPolygonF>

#include <algorithm>
#include <cmath>

namespace ztExamples
{

namespace
{

/// Between the middle of the picture and its upper edge, in degrees.
constexpr float halfAngle = 16.0f;

float aspectOf(QSize const& size)
{
    return float(size.width()) / float(size.height());
}

} // namespace

QMatrix4x4 modelAt(double seconds, Orbit const& orbit)
{
    constexpr double degreesPerSecond = 40.0;
    QMatrix4x4 model;
    model.rotate(float(orbit.degrees.y()), 1.0f, 0.0f, 0.0f);
    model.rotate(float(orbit.degrees.x()), 0.0f, 1.0f, 0.0f);
    model.rotate(-28.0f, 1.0f, 0.0f, 0.0f);
    model.rotate(float(std::fmod(20.0 + degreesPerSecond * seconds, 360.0)), 0.0f, 1.0f, 0.0f);
    return model;
}

float eyeDistance(QSize const& size)
{
    constexpr float margin = 1.12f;
    float const visible = std::sin(halfAngle * float(M_PI) / 180.0f) * std::min(aspectOf(size), 1.0f);
    return margin / visible;
}

QMatrix4x4 projectionFor(QSize const& size, float zoom)
{
    constexpr float depth = 1.01f;
    float const distance = eyeDistance(size);
    QMatrix4x4 projection;
    projection.scale(zoom, zoom, 1.0f);
    projection.perspective(2.0f * halfAngle, aspectOf(size), distance - depth, distance + depth);
    projection.translate(0.0f, 0.0f, -distance);
    return projection;
}

QPointF toLayout(QPointF const& pointer, QSize const& windowPixels, double scale)
{
    QPointF const pixel = pointer * scale;
    return {std::floor(pixel.x()) + 0.5, windowPixels.height() - std::floor(pixel.y()) - 0.5};
}

osg::NodePtr findAt(QPointF const& point, std::vector<osg::NodePtr> const& nodes)
{
    for (osg::NodePtr const& node : nodes)
    {
        auto const overlay = osg::dynamicCast<osg::Overlay>(node->core);
        QPolygonF polygon;
        for (osg::Pnt2f const& corner : overlay->foreground->positions)
            polygon << QPointF(double(corner.x), double(corner.y));
        if (!overlay->dirty && polygon.containsPoint(point, Qt::OddEvenFill))
            return node;
    }
    return osg::NullFC;
}

std::vector<QRect> splitIntoTiles(QSize const& picture, QSize const& tile)
{
    QRect const whole(QPoint(0, 0), picture);
    std::vector<QRect> tiles;
    for (int y = 0; y < picture.height(); y += tile.height())
        for (int x = 0; x < picture.width(); x += tile.width())
            tiles.push_back(QRect(QPoint(x, y), tile) & whole);
    return tiles;
}

} // namespace ztExamples
