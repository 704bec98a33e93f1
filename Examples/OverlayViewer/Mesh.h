/// \file
/// Triangles to look at.
#pragma once

#include <QVector3D>

#include <vector>

namespace ztExamples
{

/// As the graphics card reads it.
struct Vertex
{
    QVector3D position;
    QVector3D normal;
};

/// Three for each triangle, counterclockwise seen from outside, around the origin and at most 1 from it.
using Mesh = std::vector<Vertex>;

/// The built-in shape: a tube along a trefoil knot.
Mesh createTrefoilKnot();

} // namespace ztExamples
