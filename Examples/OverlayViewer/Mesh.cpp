#include "Mesh.h"

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
    return {(knot(t) + tubeRadius * normal) / knotRadius, normal};
}

} // namespace

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
