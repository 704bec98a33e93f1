/// \file
/// Meshes from Wavefront OBJ files.
#pragma once

#include "Mesh.h"

#include <QString>

#include <istream>

namespace ztExamples
{

/// Reads `v`, `vn`, `vt` and `f` statements, and of materials the diffuse colours; passes over others. Polygons become
/// fans of triangles; see assemble().
/// \param folder  where material libraries are; empty to read none
/// \throw std::runtime_error if anything isn't as it should be; what() names the line and what was expected
Mesh readObj(std::istream& stream, QString const& folder);

/// The same from a file, whose path is the first thing in what().
Mesh readObjFile(QString const& path);

} // namespace ztExamples
