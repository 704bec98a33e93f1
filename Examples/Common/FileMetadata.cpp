#include "FileMetadata.h"

#include "Jpeg.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <limits>

namespace ztExamples
{

namespace
{

constexpr int pngStart = 33; // signature and header
constexpr int emptyChunkSize = 12;

QByteArray formatOf(QByteArray const& file)
{
    return file.startsWith("\x89PNG")        ? "png"
           : file.startsWith("\xff\xd8\xff") ? "jpeg"
           : file.startsWith("#?R")          ? "hdr"
                                             : "";
}

bool isGrayPng(QByteArray const& file)
{
    constexpr int placeOfType = 25, hasColor = 2;
    return (file.at(placeOfType) & hasColor) == 0;
}

/// Calls a function with the name and the whole of each chunk until it returns false.
template <class Function>
void forEachChunk(QByteArray const& png, Function const& function)
{
    qint64 size = 0;
    for (qint64 place = pngStart; place + emptyChunkSize <= png.size(); place += size)
    {
        size = qint64(qFromBigEndian<quint32>(png.constData() + place)) + emptyChunkSize;
        if (size > png.size() - place || !function(png.mid(int(place) + 4, 4), int(place), int(size)))
            return;
    }
}

QByteArray pngMetadata(QByteArray const& file)
{
    static QByteArrayList const kept = {"cHRM", "cICP", "cLLI", "eXIf", "gAMA", "iCCP", "iTXt", "mDCV", "oFFs",
                                        "pCAL", "pHYs", "sCAL", "sRGB", "sTER", "tEXt", "tIME", "zTXt"};
    QByteArray chunks;
    forEachChunk(file, [&](QByteArray const& name, int place, int size) {
        if (kept.contains(name))
            chunks += file.mid(place, size);
        return name != "IEND";
    });
    return chunks;
}

QByteArray withoutProfile(QByteArray const& chunks)
{
    QByteArray const file = QByteArray(pngStart, 0) + chunks;
    QByteArray others;
    forEachChunk(file, [&](QByteArray const& name, int place, int size) {
        if (name != "iCCP")
            others += file.mid(place, size);
        return true;
    });
    return others;
}

QByteArray withPngMetadata(QByteArray const& file, FileMetadata const& metadata)
{
    int pixels = pngStart;
    forEachChunk(file, [&](QByteArray const& name, int place, int) {
        pixels = place;
        return name != "IDAT";
    });
    bool const isProfileTrue = metadata.isGray == isGrayPng(file);
    return file.left(pngStart) + (isProfileTrue ? metadata.bytes : withoutProfile(metadata.bytes)) + file.mid(pixels);
}

constexpr int contentStart = 4; // of a segment

bool isProfile(QByteArray const& segment)
{
    return segment.mid(contentStart, 12) == QByteArray("ICC_PROFILE\0", 12);
}

/// Whether it begins a colour profile of gray, or of inks.
bool isOtherProfile(QByteArray const& segment)
{
    constexpr int placeOfNumber = contentStart + 12, placeOfSpace = placeOfNumber + 18;
    return isProfile(segment) && segment.mid(placeOfNumber, 1) == "\1" && segment.mid(placeOfSpace, 4) != "RGB ";
}

/// Of a picture in YCbCr that has no others behind it.
bool staysTrue(QByteArray const& segment)
{
    constexpr int placeOfTransform = contentStart + 11;
    bool const hasOtherColors = segment.mid(contentStart, 5) == "Adobe" && segment.mid(placeOfTransform, 1) != "\1";
    return !hasOtherColors && segment.mid(contentStart, 4) != QByteArray("MPF", 4);
}

/// Takes back the wish of an EXIF segment that the picture be turned.
void setUpright(QByteArray& segment)
{
    constexpr int tiff = 10, entrySize = 12, orientation = 0x112;
    if (segment.mid(4, 6) != QByteArray("Exif\0", 6) || segment.size() < tiff + 8)
        return;
    bool const isBigEndian = segment.at(tiff) == 'M';
    auto const shortAt = [&](qint64 place) {
        char const* const bytes = segment.constData() + place;
        return isBigEndian ? qFromBigEndian<quint16>(bytes) : qFromLittleEndian<quint16>(bytes);
    };
    char const* const offset = segment.constData() + tiff + 4;
    qint64 place = tiff + qint64(isBigEndian ? qFromBigEndian<quint32>(offset) : qFromLittleEndian<quint32>(offset));
    if (place + 2 > segment.size())
        return;
    int count = shortAt(place);
    for (place += 2; count > 0 && place + entrySize <= segment.size(); place += entrySize, --count)
        if (shortAt(place) == orientation)
            segment.replace(int(place) + 8, 2, isBigEndian ? QByteArray("\0\1", 2) : QByteArray("\1\0", 2));
}

QByteArray jpegMetadata(QByteArray const& file)
{
    QByteArray kept;
    bool losesProfile = false;
    forEachMetadataSegment(file, [&](QByteArray segment) {
        setUpright(segment);
        losesProfile |= isOtherProfile(segment);
        if (staysTrue(segment) && !(losesProfile && isProfile(segment)))
            kept += segment;
    });
    return kept;
}

/// With the line of its sides, whose order and signs say how the picture is turned.
QByteArray hdrHeader(QByteArray const& file)
{
    auto const sides = file.indexOf("\n\n") + 2;
    return sides < 2 ? QByteArray() : file.left(file.indexOf('\n', sides) + 1);
}

} // namespace

FileMetadata readMetadata(QString const& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly) || file.size() > std::numeric_limits<int>::max())
        return {};
    QByteArray const format = formatOf(file.peek(4));
    uchar* const mapped = format.isEmpty() || file.size() < pngStart ? nullptr : file.map(0, file.size());
    if (!mapped)
        return {};
    auto const bytes = QByteArray::fromRawData(reinterpret_cast<char const*>(mapped), int(file.size()));
    if (format == "hdr")
        return {format, hdrHeader(bytes)};
    bool const isPng = format == "png";
    return {format, isPng ? pngMetadata(bytes) : jpegMetadata(bytes), isPng && isGrayPng(bytes)};
}

QByteArray withMetadata(QByteArray const& file, FileMetadata const& metadata)
{
    if (metadata.format.isEmpty() || formatOf(file.left(4)) != metadata.format)
        return file;
    if (metadata.format == "hdr")
        return metadata.bytes + file.mid(hdrHeader(file).size());
    return metadata.format == "png" ? withPngMetadata(file, metadata) : withJpegMetadata(file, metadata.bytes);
}

} // namespace ztExamples
