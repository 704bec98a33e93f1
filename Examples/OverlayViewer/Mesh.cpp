#include "Mesh.h"

#include "Words.h"

#include <algorithm>
#include <cmath>

namespace ztExamples
{

namespace
{

constexpr int knotSteps = 480;
constexpr int tubeSteps = 48;
constexpr float tubeRadius = 0.62f;
constexpr float knotRadius = 3.0f + tubeRadius;

float angleOf(int step, int stepCount)
{
    return 2.0f * float(M_PI) * float(step) / float(stepCount);
}

/// The knot's centre line, (sin t + 2 sin 2t, cos t - 2 cos 2t, -sin 3t), and its first two derivatives.
QVector3D knot(float t)
{
    return {std::sin(t) + 2.0f * std::sin(2.0f * t), std::cos(t) - 2.0f * std::cos(2.0f * t), -std::sin(3.0f * t)};
}

QVector3D knotVelocity(float t)
{
    return {std::cos(t) + 4.0f * std::cos(2.0f * t), -std::sin(t) + 4.0f * std::sin(2.0f * t),
            -3.0f * std::cos(3.0f * t)};
}

QVector3D knotAcceleration(float t)
{
    return {-std::sin(t) - 8.0f * std::sin(2.0f * t), -std::cos(t) + 8.0f * std::cos(2.0f * t),
            9.0f * std::sin(3.0f * t)};
}

Vertex knotVertex(int knotStep, int tubeStep)
{
    float const t = angleOf(knotStep % knotSteps, knotSteps);
    float const angle = angleOf(tubeStep % tubeSteps, tubeSteps);
    QVector3D const side = QVector3D::crossProduct(knotVelocity(t), knotAcceleration(t)).normalized();
    QVector3D const inside = QVector3D::crossProduct(side, knotVelocity(t)).normalized();
    QVector3D const normal = std::cos(angle) * inside + std::sin(angle) * side;
    return {(knot(t) + tubeRadius * normal) / knotRadius, normal, {}};
}

/// In double precision, in which the differences of single ones don't overflow.
void fit(std::vector<QVector3D>& positions)
{
    double low[3], high[3], squares = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        auto const [least, greatest] = std::minmax_element(
            positions.begin(), positions.end(), [i](QVector3D const& a, QVector3D const& b) { return a[i] < b[i]; });
        low[i] = double((*least)[i]);
        high[i] = double((*greatest)[i]);
        squares += (high[i] - low[i]) * (high[i] - low[i]);
    }
    double const radius = squares > 0.0 ? std::sqrt(squares) / 2.0 : 1.0;
    for (QVector3D& position : positions)
        for (int i = 0; i < 3; ++i)
            position[i] = float((double(position[i]) - (low[i] + high[i]) / 2.0) / radius);
}

/// For each position, of the triangles there, each weighted by its area.
std::vector<QVector3D> computeNormals(std::vector<QVector3D> const& positions, std::vector<Corner> const& corners)
{
    std::vector<QVector3D> normals(positions.size());
    for (std::size_t i = 0; i < corners.size(); i += 3)
    {
        QVector3D const& a = positions[corners[i].position];
        QVector3D const normal =
            QVector3D::crossProduct(positions[corners[i + 1].position] - a, positions[corners[i + 2].position] - a);
        for (std::size_t j = i; j < i + 3; ++j)
            normals[corners[j].position] += normal;
    }
    for (QVector3D& normal : normals)
        normal = toUnit(normal);
    return normals;
}

} // namespace

void addPolygon(std::vector<Corner> const& polygon, MeshParts& parts)
{
    requireAtMost(maxTriangles, parts.corners.size() / 3 + polygon.size() - 2, "triangles");
    for (std::size_t i = 2; i < polygon.size(); ++i)
        parts.corners.insert(parts.corners.end(), {polygon[0], polygon[i - 1], polygon[i]});
}

Mesh assemble(MeshParts parts)
{
    fit(parts.positions);
    std::vector<QVector3D> const computed = computeNormals(parts.positions, parts.corners);
    Mesh mesh;
    mesh.reserve(parts.corners.size());
    for (Corner const& corner : parts.corners)
        mesh.push_back({parts.positions[corner.position],
                        corner.normal ? parts.normals[*corner.normal] : computed[corner.position], corner.color});
    return mesh;
}

QVector3D toUnit(QVector3D const& vector)
{
    double const x = double(vector.x()), y = double(vector.y()), z = double(vector.z());
    double const length = std::sqrt(x * x + y * y + z * z);
    return length > 0.0 ? QVector3D(float(x / length), float(y / length), float(z / length)) : vector;
}

Mesh createTrefoilKnot()
{
    Mesh mesh;
    for (int i = 0; i < knotSteps; ++i)
        for (int j = 0; j < tubeSteps; ++j)
        {
            Vertex const a = knotVertex(i, j), b = knotVertex(i, j + 1);
            Vertex const c = knotVertex(i + 1, j + 1), d = knotVertex(i + 1, j);
            mesh.insert(mesh.end(), {a, b, c, a, c, d});
        }
    return mesh;
}

} // namespace ztExamples
