/// \file
/// Where things are: the mesh, the pointer, the overlays under it, the tiles of a picture.
#pragma once

#include "OSGNode.h"

#include <QMatrix4x4>
#include <QPointF>
#include <QRect>

#include <vector>

namespace ztExamples
{

/// How the user has turned and enlarged what is seen.
struct Orbit
{
    /// To the right and down.
    QPointF degrees;
    float zoom = 1.0f;
};

/// Turns the mesh. \param seconds  since the start
QMatrix4x4 modelAt(double seconds, Orbit const& orbit = {});

/// How far from the origin the eye is, on the z axis, to see what is at most 1 from the origin whole in a
/// picture of a size.
float eyeDistance(QSize const& size);

/// What the eye sees from there. \param zoom  how much larger than the whole
QMatrix4x4 projectionFor(QSize const& size, float zoom = 1.0f);

/// The middle of a window's pixel as it is counted in layouts: in pixels, y up.
/// \param pointer  in DPI-independent pixels, y down
QPointF toLayout(QPointF const& pointer, QSize const& windowPixels, double scale);

/// The first of the nodes, which are overlays, whose foreground's `positions` are around a point; null for
/// none. One that is still dirty after its update has nothing to show and no place.
osg::NodePtr findAt(QPointF const& point, std::vector<osg::NodePtr> const& nodes);

/// Splits a picture into tiles of a size, row by row from the origin; the last of a row and of a column are
/// as large as the rest.
std::vector<QRect> splitIntoTiles(QSize const& picture, QSize const& tile);

} // namespace ztExamples
