/// \file
/// Meshes from files, and what kind of file one is.
#pragma once

#include "Mesh.h"

#include "OverlayFile.h"

#include <QByteArray>

namespace ztExamples
{

enum class FileKind
{
    Overlays,
    Shape,
    Picture,
    Other
};

/// Of overlays and meshes by the suffix (.json; .obj, .stl, .ply), of pictures by what they hold.
FileKind kindOf(QString const& path);

/// The entries of an overlay file, as readOverlayFile() reads it.
/// \throw std::runtime_error too if it is a mesh or a picture by kind; what() says so
std::vector<OverlayEntry> readOverlays(QString const& path);

/// A mesh from an OBJ, STL or PLY file.
/// \throw std::runtime_error if anything isn't as it should be, the kind of file included; what() names the file, the
///     place and what was expected
Mesh readMeshFile(QString const& path);

/// The mesh of an STL file, text or binary. Each triangle is flat.
/// \throw std::runtime_error if anything isn't as it should be; what() tells what was expected, and where in a text
Mesh readStl(QByteArray const& bytes);

/// The mesh of a PLY file, text or binary of either byte order, with its normals and colours if it has them. What it
/// holds besides is passed over.
/// \throw std::runtime_error if anything isn't as it should be; what() tells what was expected, and where in a text
Mesh readPly(QByteArray const& bytes);

} // namespace ztExamples
