#include "Pam.h"

#include "Ending.h"
#include "Merge.h"
#include "Picture.h"

#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <stdexcept>

namespace ztExamples
{

namespace
{

constexpr int maxHeaderSize = 1 << 16;
/// So that sizes in bytes fit 64 bits.
constexpr int maxSide = 1 << 24;
constexpr int maxMaxval = 65535;

[[noreturn]] void fail(QString const& message)
{
    throw std::runtime_error(message.toStdString());
}

[[noreturn]] void failAtEnd(std::FILE* stream)
{
    fail(std::ferror(stream) ? qt_error_string(errno) : "It ends early");
}

/// A header on its way in.
class HeaderReader
{
  public:
    explicit HeaderReader(std::FILE* stream) : _stream(stream) {}

    QByteArray const& bytes() const { return _bytes; }

    char next()
    {
        int const c = std::getc(_stream);
        if (c == EOF)
            failAtEnd(_stream);
        if (_bytes.size() == maxHeaderSize)
            fail(QString("Its header has more than %1 bytes").arg(maxHeaderSize));
        _bytes += char(c);
        return char(c);
    }

    QByteArray line()
    {
        int const start = int(_bytes.size());
        while (next() != '\n')
            ;
        return _bytes.mid(start).trimmed();
    }

    /// With the white space behind it; comments before it are skipped.
    QByteArray word()
    {
        QByteArray result;
        for (;;)
        {
            char const c = next();
            if (c == '#' && result.isEmpty())
                line();
            else if (!std::strchr(" \t\r\n\v\f", c))
                result += c;
            else if (!result.isEmpty())
                return result;
        }
    }

  private:
    std::FILE* _stream;
    QByteArray _bytes;
};

int toNumber(char const* name, QByteArray const& text, int most)
{
    bool isNumber;
    int const number = text.toInt(&isNumber);
    if (!isNumber || number < 1 || number > most)
        fail(QString("Expected %1 from 1 to %2, got \"%3\"").arg(name).arg(most).arg(QString::fromUtf8(text.left(60))));
    return number;
}

void readPpm(HeaderReader& reader, PamHeader& header)
{
    header.width = toNumber("width", reader.word(), maxSide);
    header.height = toNumber("height", reader.word(), maxSide);
    header.maxval = toNumber("maxval", reader.word(), maxMaxval);
    header.channels = 3;
}

void requireTupleType(QByteArray const& type, int depth)
{
    static std::map<QByteArray, int> const depths = {{"BLACKANDWHITE", 1}, {"BLACKANDWHITE_ALPHA", 2},
                                                     {"GRAYSCALE", 1},     {"GRAYSCALE_ALPHA", 2},
                                                     {"RGB", 3},           {"RGB_ALPHA", 4}};
    auto const known = depths.find(type);
    if (!type.isEmpty() && (known == depths.end() || known->second != depth))
        fail(QString("Expected a TUPLTYPE of gray or RGB for the DEPTH %1, got \"%2\"")
                 .arg(depth)
                 .arg(QString::fromUtf8(type.left(60))));
}

void readPam(HeaderReader& reader, PamHeader& header)
{
    std::map<QByteArray, QByteArray> values;
    for (QByteArray line = reader.line(); line != "ENDHDR"; line = reader.line())
    {
        int const space = int(line.indexOf(' '));
        if (!line.startsWith('#'))
            values[line.left(space)] = space < 0 ? QByteArray() : line.mid(space).trimmed();
    }
    header.width = toNumber("WIDTH", values["WIDTH"], maxSide);
    header.height = toNumber("HEIGHT", values["HEIGHT"], maxSide);
    header.channels = toNumber("DEPTH", values["DEPTH"], 4);
    header.maxval = toNumber("MAXVAL", values["MAXVAL"], maxMaxval);
    requireTupleType(values["TUPLTYPE"], header.channels);
}

template <int channels, class Sample>
void mergeRows(QImage const& layer, PamPicture& picture)
{
    PamHeader const& header = picture.header;
    for (int y = 0; y < header.height; ++y)
        mergeRow<channels>(layer.constScanLine(header.height - 1 - y),
                           reinterpret_cast<Sample*>(picture.samples.get() + header.rowSize() * std::size_t(y)),
                           header.width, header.maxval);
}

template <class Sample>
void mergeSamples(QImage const& layer, PamPicture& picture)
{
    using Merge = void (*)(QImage const&, PamPicture&);
    constexpr Merge merges[] = {mergeRows<1, Sample>, mergeRows<2, Sample>, mergeRows<3, Sample>, mergeRows<4, Sample>};
    merges[picture.header.channels - 1](layer, picture);
}

PamPicture withoutSamples(PamHeader header)
{
    std::size_t const size = header.size();
    return {std::move(header), std::unique_ptr<uchar[]>(new uchar[size])};
}

} // namespace

bool isAtEnd(std::FILE* stream)
{
    return std::ungetc(std::getc(stream), stream) == EOF && !std::ferror(stream);
}

PamHeader readPamHeader(std::FILE* stream)
{
    HeaderReader reader(stream);
    PamHeader header;
    QByteArray magic(1, reader.next());
    magic += reader.next();
    if (magic == "P6")
        readPpm(reader, header);
    else if (magic == "P7" && reader.line().isEmpty())
        readPam(reader, header);
    else
        fail("It is no PAM or PPM picture");
    header.bytes = reader.bytes();
    return header;
}

PamPicture readPamSamples(PamHeader header, std::FILE* stream)
{
    std::size_t const size = header.size();
    PamPicture picture = withoutSamples(std::move(header));
    if (std::fread(picture.samples.get(), 1, size, stream) != size)
        failAtEnd(stream);
    return picture;
}

void writePam(PamPicture const& picture, std::FILE* stream)
{
    std::size_t const headerSize = std::size_t(picture.header.bytes.size()), size = picture.header.size();
    Unbroken const writing;
    if (std::fwrite(picture.header.bytes.constData(), 1, headerSize, stream) != headerSize ||
        std::fwrite(picture.samples.get(), 1, size, stream) != size || std::fflush(stream) != 0)
        fail(qt_error_string(errno));
}

PamPicture toPam(QImage const& picture)
{
    bool const hasAlpha = picture.hasAlphaChannel();
    int const width = picture.width(), height = picture.height(), channels = hasAlpha ? 4 : 3;
    QString const bytes = QString("P7\nWIDTH %1\nHEIGHT %2\nDEPTH %3\nMAXVAL 255\nTUPLTYPE %4\nENDHDR\n")
                              .arg(width)
                              .arg(height)
                              .arg(channels)
                              .arg(hasAlpha ? "RGB_ALPHA" : "RGB");
    PamPicture result = withoutSamples({bytes.toLatin1(), width, height, channels, 255});
    uchar* target = result.samples.get();
    for (int y = height - 1; y >= 0; --y)
    {
        uchar const* pixel = picture.constScanLine(y);
        for (int x = 0; x < width; ++x, pixel += 4, target += channels)
            std::copy_n(pixel, channels, target);
    }
    return result;
}

QImage toImage(PamPicture const& picture)
{
    constexpr int most = 255;
    PamHeader const& header = picture.header;
    if (header.maxval > most)
        fail("Its 16 bits a channel are too many for this format");
    QImage::Format const format = header.hasAlpha() ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888;
    QImage image = allocated({header.width, header.height, format});
    bool const isGray = header.channels < 3;
    uchar const* sample = picture.samples.get();
    auto const next = [&] {
        return uchar((std::min<int>(*sample++, header.maxval) * most + header.maxval / 2) / header.maxval);
    };
    for (int y = header.height - 1; y >= 0; --y)
    {
        uchar* target = image.scanLine(y);
        for (int x = 0; x < header.width; ++x, target += 4)
        {
            target[0] = next();
            target[1] = isGray ? target[0] : next();
            target[2] = isGray ? target[0] : next();
            target[3] = header.hasAlpha() ? next() : uchar(most);
        }
    }
    return image;
}

QByteArray bytesOf(PamPicture const& picture)
{
    return picture.header.bytes +
           QByteArray(reinterpret_cast<char const*>(picture.samples.get()), int(picture.header.size()));
}

void mergeLayer(QImage const& layer, PamPicture& picture)
{
    if (picture.header.sampleSize() == 1)
        mergeSamples<uchar>(layer, picture);
    else
        mergeSamples<quint16_be>(layer, picture);
}

} // namespace ztExamples
