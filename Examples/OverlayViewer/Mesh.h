/// \file
/// Triangles to look at.
#pragma once

#include <QVector3D>

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace ztExamples
{

/// Red, green, blue and 255; four zeros for no colour, and the viewer takes its own.
using Color = std::array<unsigned char, 4>;

/// Of a file.
constexpr std::size_t maxTriangles = 10000000;
constexpr std::size_t maxVertices = 3 * maxTriangles;

/// As the graphics card reads it.
struct Vertex
{
    QVector3D position;
    QVector3D normal;
    Color color;
};

/// Three for each triangle, counterclockwise seen from outside, around the origin and at most 1 from it.
using Mesh = std::vector<Vertex>;

/// The corner of a triangle: the numbers of its position and of its normal, if it has one of its own.
struct Corner
{
    std::size_t position;
    std::optional<std::size_t> normal;
    Color color;
};

/// A mesh as files have it: of any place and size.
struct MeshParts
{
    std::vector<QVector3D> positions;
    std::vector<QVector3D> normals;
    /// Three for each triangle.
    std::vector<Corner> corners;
};

/// Adds a polygon as a fan of triangles.
/// \throw std::runtime_error if there are too many
void addPolygon(std::vector<Corner> const& polygon, MeshParts& parts);

/// Moves and scales the whole to fit around the origin. Corners without a normal get the one of the surfaces around
/// their position.
Mesh assemble(MeshParts parts);

/// A vector of length 1 in the direction of another, however short that is; zero for zero.
QVector3D toUnit(QVector3D const& vector);

/// The built-in shape: a tube along a trefoil knot.
Mesh createTrefoilKnot();

} // namespace ztExamples
