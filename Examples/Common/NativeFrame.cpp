#include "NativeFrame.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>

#include <stdexcept>

namespace ztExamples
{

namespace
{

struct Format
{
    char const* name;
    QByteArray magic;
    /// Whether a frame of 8 bits a channel is better read otherwise.
    bool isPlain;
};

/// From beside the program, as it is built, or from where libraries are installed. It stays loaded.
NativeFrames& loadLibrary()
{
    QString reason;
    for (char const* folder : {"/", "/" ZT_LIBRARY_FOLDER "/"})
    {
        QLibrary library(QCoreApplication::applicationDirPath() + folder + "libztOpenImageIO.so");
        if (auto const get = library.resolve("ztNativeFrames"))
            return *reinterpret_cast<NativeFrames* (*)()>(get)();
        reason = library.errorString();
    }
    throw std::runtime_error("OpenImageIO is needed: " + reason.simplified().toStdString());
}

bool hasSixteenBits(QByteArray const& png)
{
    constexpr int placeOfDepth = 24;
    return png.size() > placeOfDepth && png[placeOfDepth] == 16;
}

} // namespace

NativeFrames& nativeFrames()
{
    static NativeFrames& library = loadLibrary();
    return library;
}

bool isNativeSuffix(QByteArray const& suffix)
{
    static QByteArrayList const suffixes = {"dpx", "exr", "hdr", "tga", "tif", "tiff", "webp"};
    return suffixes.contains(suffix);
}

QByteArray nativeFormat(QString const& path, bool isWanted)
{
    static Format const formats[] = {
        {"openexr", "\x76\x2f\x31\x01", false},
        {"dpx", "SDPX", false},
        {"dpx", "XPDS", false},
        {"tiff", QByteArray("II*\0", 4), false},
        {"tiff", QByteArray("MM\0*", 4), false},
        {"tiff", QByteArray("II+\0", 4), false},
        {"tiff", QByteArray("MM\0+", 4), false},
        {"hdr", "#?R", false},
        {"webp", "RIFF", false},
        {"png", "\x89PNG", true},
        {"jpeg", "\xff\xd8\xff", true},
        {"bmp", "BM", true},
        {"pnm", "P5", true},
        {"pnm", "P6", true},
    };
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return QByteArray();
    QByteArray const start = file.peek(32);
    for (Format const& format : formats)
        if (start.startsWith(format.magic))
            return !format.isPlain || isWanted || hasSixteenBits(start) ? QByteArray(format.name) : QByteArray();
    return QFileInfo(path).suffix().toLower() == "tga" ? "targa" : QByteArray();
}

} // namespace ztExamples
