#include "Encoders.h"

#include "Jpeg.h"
#include "Picture.h"

#include <QBuffer>
#include <QImageWriter>
#include <QtEndian>

#include <libdeflate.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

namespace ztExamples
{

namespace
{

/// Less than a QByteArray can hold, so that the rest of a file fits as well.
constexpr std::size_t maxCompressedSize = 0x7f000000;

constexpr int pixelSize = 4;

constexpr int signatureSize = 8;
/// Of the length, the name and the checksum.
constexpr int emptyChunkSize = 12;
constexpr int headerEnd = signatureSize + emptyChunkSize + 13;

/// A row between a pixel that is all 0, which the filters see left of it, and room for another.
class PaddedRow
{
  public:
    explicit PaddedRow(std::size_t size) : _bytes(pixelSize + size + pixelSize) {}

    uchar* begin() { return _bytes.data() + pixelSize; }

  private:
    std::vector<uchar> _bytes;
};

/// A row less what a filter predicts of it.
struct Difference
{
    /// The filter's number, then the row.
    std::vector<uchar> bytes;
    /// Of the magnitudes: the less, the better the row compresses.
    unsigned sum = 0;
};

void copyChannels(uchar const* pixels, int count, int channels, uchar* target)
{
    for (int i = 0; i < count; ++i)
        std::memcpy(target + i * channels, pixels + i * pixelSize, pixelSize); // the next one covers what is too much
}

// Predictions of a byte. Processors do twice as many at a time in short as in int.

short predictLeft(short left, short, short)
{
    return left;
}

short predictAbove(short, short above, short)
{
    return above;
}

/// That of the three which is nearest to left + above - aboveLeft: https://www.w3.org/TR/png-3/#9Filter-type-4-Paeth
short predictNearest(short left, short above, short aboveLeft)
{
    auto const fromLeft = short(std::abs(above - aboveLeft));
    auto const fromAbove = short(std::abs(left - aboveLeft));
    auto const fromAboveLeft = short(std::abs(left + above - 2 * aboveLeft));
    short const other = fromAbove <= fromAboveLeft ? above : aboveLeft;
    return fromLeft <= std::min(fromAbove, fromAboveLeft) ? left : other;
}

template <short (*predict)(short, short, short)>
void subtract(uchar const* row, uchar const* above, int channels, Difference& difference)
{
    uchar* const bytes = difference.bytes.data() + 1;
    int const size = int(difference.bytes.size()) - 1;
    unsigned sum = 0;
    for (int i = 0; i < size; ++i)
    {
        bytes[i] = uchar(row[i] - predict(row[i - channels], above[i], above[i - channels]));
        sum += unsigned(std::abs(static_cast<signed char>(bytes[i])));
    }
    difference.sum = sum;
}

/// The rows of a picture from the last to the first, each through the filter that leaves the least.
std::vector<uchar> filtered(QImage const& picture)
{
    int const channels = picture.hasAlphaChannel() ? 4 : 3;
    std::size_t const size = std::size_t(picture.width()) * std::size_t(channels);
    PaddedRow row(size), above(size);
    Difference differences[] = {
        {std::vector<uchar>(1 + size, 1)}, {std::vector<uchar>(1 + size, 2)}, {std::vector<uchar>(1 + size, 4)}};
    std::vector<uchar> rows;
    rows.reserve((1 + size) * std::size_t(picture.height()));
    for (int y = picture.height() - 1; y >= 0; --y)
    {
        copyChannels(picture.constScanLine(y), picture.width(), channels, row.begin());
        subtract<predictLeft>(row.begin(), above.begin(), channels, differences[0]);
        subtract<predictAbove>(row.begin(), above.begin(), channels, differences[1]);
        subtract<predictNearest>(row.begin(), above.begin(), channels, differences[2]);
        auto const least = std::min_element(std::begin(differences), std::end(differences),
                                            [](auto const& a, auto const& b) { return a.sum < b.sum; });
        rows.insert(rows.end(), least->bytes.begin(), least->bytes.end());
        std::swap(row, above);
    }
    return rows;
}

QByteArray bigEndian(quint32 number)
{
    QByteArray bytes(sizeof number, Qt::Uninitialized);
    qToBigEndian(number, bytes.data());
    return bytes;
}

QByteArray chunk(QByteArray const& nameAndData)
{
    quint32 const checksum = libdeflate_crc32(0, nameAndData.data(), std::size_t(nameAndData.size()));
    return bigEndian(quint32(nameAndData.size()) - 4) + nameAndData + bigEndian(checksum);
}

/// A chunk of pixels in the format of zlib, without another copy of them.
void appendPixels(QByteArray& file, std::vector<uchar> const& rows, int level)
{
    constexpr int nameSize = 4;
    std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> const compressor(
        libdeflate_alloc_compressor(level), libdeflate_free_compressor);
    if (!compressor)
        throw std::bad_alloc();
    std::size_t const room = std::min(libdeflate_zlib_compress_bound(compressor.get(), rows.size()), maxCompressedSize);
    int const start = int(file.size()) + int(sizeof(quint32));
    file.resize(start + nameSize + int(room));
    std::memcpy(file.data() + start, "IDAT", nameSize);
    std::size_t const size =
        libdeflate_zlib_compress(compressor.get(), rows.data(), rows.size(), file.data() + start + nameSize, room);
    if (size == 0)
        throw std::bad_alloc();
    file.resize(start + nameSize + int(size));
    qToBigEndian(quint32(size), file.data() + start - sizeof(quint32));
    file += bigEndian(libdeflate_crc32(0, file.constData() + start, nameSize + size));
}

/// Where a PNG file's first chunk of pixels begins.
int findPixelChunk(QByteArray const& file)
{
    int place = headerEnd;
    while (file.mid(place + 4, 4) != "IDAT")
        place += int(qFromBigEndian<quint32>(file.data() + place)) + emptyChunkSize;
    return place;
}

QByteArray encodePng(QImage const& picture, int compression)
{
    QByteArray const model = fileOfOnePixel(picture, "png");
    QByteArray const header = "IHDR" + bigEndian(quint32(picture.width())) + bigEndian(quint32(picture.height())) +
                              model.mid(headerEnd - 9, 5);
    QByteArray const metadata = model.mid(headerEnd, findPixelChunk(model) - headerEnd);
    QByteArray file = model.left(signatureSize) + chunk(header) + metadata;
    appendPixels(file, filtered(picture), compression);
    return file += model.right(emptyChunkSize);
}

bool isJpeg(QByteArray const& format)
{
    return format == "jpg" || format == "jpeg";
}

QByteArray encodeByQt(QImage picture, QByteArray const& format)
{
    picture = allocated(std::move(picture).mirrored());
    if (!picture.hasAlphaChannel())
        picture = allocated(std::move(picture).convertToFormat(QImage::Format_RGB32));
    QBuffer file;
    QImageWriter writer(&file, format);
    if (isJpeg(format))
        writer.setQuality(jpegQuality);
    if (!writer.write(picture))
        throw std::runtime_error(writer.errorString().toStdString());
    return file.data();
}

} // namespace

QByteArray fileOfOnePixel(QImage const& picture, QByteArray const& format)
{
    QBuffer file;
    if (!QImageWriter(&file, format).write(picture.copy(0, 0, 1, 1)))
        throw std::bad_alloc();
    return file.data();
}

QByteArray encode(QImage picture, QByteArray const& format, int pngCompression)
{
    if (format == "png")
        return encodePng(picture, pngCompression);
    QByteArray const file = isJpeg(format) ? encodeJpeg(picture) : QByteArray();
    return file.isEmpty() ? encodeByQt(std::move(picture), format) : file;
}

} // namespace ztExamples
