#include "MeshFile.h"

#include "ObjFile.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include <stdexcept>

namespace ztExamples
{

namespace
{

QByteArray readBytes(QString const& path)
{
    QFile file(path);
    QByteArray const bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    QString const reason = QFileInfo(path).isDir() ? "Is a directory" : file.errorString();
    if (file.error() != QFileDevice::NoError)
        throw std::runtime_error("can't read it: " + reason.toStdString());
    return bytes;
}

/// Puts a path in front of what a function complains about.
template <class Function>
auto at(QString const& path, Function const& function)
{
    try
    {
        return function();
    }
    catch (std::runtime_error const& error)
    {
        throw std::runtime_error(path.toStdString() + ": " + error.what());
    }
}

[[noreturn]] void complainOfKind(char const* expected, FileKind kind)
{
    constexpr char const* names[] = {"an overlay file, which --overlays takes", "a mesh", "a picture",
                                     "another kind of file"};
    throw std::runtime_error(std::string("expected ") + expected + ", got " + names[int(kind)]);
}

} // namespace

FileKind kindOf(QString const& path)
{
    QString const suffix = QFileInfo(path).suffix().toLower();
    if (suffix == "json")
        return FileKind::Overlays;
    if (suffix == "obj" || suffix == "stl" || suffix == "ply")
        return FileKind::Shape;
    return QImageReader::imageFormat(path).isEmpty() ? FileKind::Other : FileKind::Picture;
}

std::vector<OverlayEntry> readOverlays(QString const& path)
{
    FileKind const kind = kindOf(path);
    if (kind == FileKind::Shape || kind == FileKind::Picture)
        at(path, [kind] { complainOfKind("an overlay file (.json)", kind); });
    RunValues run;
    run.rate = FrameRate{24, 0};
    return readOverlayFile(path, defaultMaxPixels, run);
}

Mesh readMeshFile(QString const& path)
{
    QString const suffix = QFileInfo(path).suffix().toLower();
    if (suffix == "obj")
        return readObjFile(path);
    return at(path, [&] {
        QByteArray const bytes = readBytes(path);
        if (FileKind const kind = kindOf(path); kind != FileKind::Shape)
            complainOfKind("a mesh (.obj, .stl or .ply)", kind);
        return suffix == "stl" ? readStl(bytes) : readPly(bytes);
    });
}

} // namespace ztExamples
