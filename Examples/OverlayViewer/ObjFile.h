/// \file
/// Meshes from Wavefront OBJ files.
#pragma once

#include "Mesh.h"

#include <QString>

#include <istream>

namespace ztExamples
{

/// Reads `v`, `vn`, `vt` and `f` statements and passes over others. Polygons become fans of triangles, the
/// whole is moved and scaled to fit around the origin, and corners without a normal get the one of the
/// surfaces around their position.
/// \throw std::runtime_error if anything isn't as it should be; what() names the line and what was expected
Mesh readObj(std::istream& stream);

/// The same from a file, whose path is the first thing in what().
Mesh readObjFile(QString const& path);

} // namespace ztExamples
