#include "Jpeg.h"

#include "Encoders.h"
#include "Picture.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QtEndian>

#include <turbojpeg.h>

#include <memory>
#include <new>

namespace ztExamples
{

namespace
{

using Codec = std::unique_ptr<void, decltype(&tjDestroy)>;

Codec own(tjhandle handle)
{
    if (!handle)
        throw std::bad_alloc();
    return Codec(handle, tjDestroy);
}

bool isMetadata(uchar marker)
{
    constexpr uchar firstApplication = 0xe0, lastApplication = 0xef, comment = 0xfe;
    return (marker >= firstApplication && marker <= lastApplication) || marker == comment;
}

constexpr int signatureSize = 2;

/// The place behind those segments from a place on that are metadata, or that are not; at the latest the scan's.
int skip(QByteArray const& file, int place, bool metadata)
{
    constexpr uchar scan = 0xda;
    while (place + 4 <= file.size() && file[place] == '\xff' && uchar(file[place + 1]) != scan &&
           isMetadata(uchar(file[place + 1])) == metadata)
        place += 2 + qFromBigEndian<quint16>(file.constData() + place + 2);
    return place;
}

int metadataEnd(QByteArray const& file)
{
    return skip(file, signatureSize, true);
}

/// A single pixel with the metadata of a file, or a null image if not all of it is at the file's beginning or if it
/// wants the picture turned.
QImage readMetadata(QByteArray const& file)
{
    int const end = metadataEnd(file);
    if (file.mid(skip(file, end, false), 2) != "\xff\xda")
        return QImage();
    QByteArray const pixel = fileOfOnePixel(QImage(1, 1, QImage::Format_RGB32), "jpg");
    QByteArray model = file.left(end) + pixel.mid(metadataEnd(pixel));
    QBuffer buffer(&model);
    QImageReader reader(&buffer, "jpg");
    return reader.transformation() == QImageIOHandler::TransformationNone ? reader.read() : QImage();
}

void copyMetadata(QImage const& source, QImage& target)
{
    target.setDotsPerMeterX(source.dotsPerMeterX());
    target.setDotsPerMeterY(source.dotsPerMeterY());
    target.setColorSpace(source.colorSpace());
    for (QString const& key : source.textKeys())
        target.setText(key, source.text(key));
}

} // namespace

bool isCutJpeg(QByteArray const& file)
{
    char const end[] = "\xff\xd9";
    // Before the scan there may be a thumbnail with an end of its own.
    return !file.endsWith(end) && file.indexOf(end, skip(file, metadataEnd(file), false)) < 0;
}

QImage decodeJpeg(QByteArray const& file, QSize const& expectedSize)
{
    auto const* const bytes = reinterpret_cast<uchar const*>(file.constData());
    auto const size = static_cast<unsigned long>(file.size());
    int width, height, sampling, colors;
    Codec const codec = own(tjInitDecompress());
    if (tjDecompressHeader3(codec.get(), bytes, size, &width, &height, &sampling, &colors) != 0 ||
        colors != TJCS_YCbCr || QSize(width, height) != expectedSize)
        return QImage();
    QImage const metadata = readMetadata(file);
    if (metadata.isNull())
        return QImage();
    QImage pixels = allocated(QImage(width, height, QImage::Format_RGBA8888_Premultiplied));
    if (tjDecompress2(codec.get(), bytes, size, pixels.bits(), width, int(pixels.bytesPerLine()), height, TJPF_RGBA,
                      TJFLAG_BOTTOMUP) != 0)
        return QImage();
    copyMetadata(metadata, pixels);
    return pixels;
}

void forEachMetadataSegment(QByteArray const& file, std::function<void(QByteArray)> const& function)
{
    for (int place = skip(file, signatureSize, false); place + 4 <= file.size();)
    {
        int const end = place + 2 + qFromBigEndian<quint16>(file.constData() + place + 2);
        if (!isMetadata(uchar(file[place + 1])) || end > file.size())
            return;
        function(file.mid(place, end - place));
        place = skip(file, end, false);
    }
}

QByteArray withJpegMetadata(QByteArray const& file, QByteArray const& segments)
{
    return file.left(signatureSize) + segments + file.mid(metadataEnd(file));
}

QByteArray encodeJpeg(QImage const& picture)
{
    Codec const codec = own(tjInitCompress());
    uchar* bytes = nullptr;
    unsigned long size = 0;
    int const status =
        tjCompress2(codec.get(), picture.constBits(), picture.width(), int(picture.bytesPerLine()), picture.height(),
                    TJPF_RGBX, &bytes, &size, TJSAMP_420, jpegQuality, TJFLAG_BOTTOMUP | TJFLAG_ACCURATEDCT);
    std::unique_ptr<uchar, decltype(&tjFree)> const owner(bytes, tjFree);
    if (status != 0)
        return QByteArray();
    auto const file = QByteArray::fromRawData(reinterpret_cast<char const*>(bytes), int(size));
    QByteArray const model = fileOfOnePixel(picture, "jpg");
    return model.left(metadataEnd(model)) + file.mid(metadataEnd(file));
}

} // namespace ztExamples
