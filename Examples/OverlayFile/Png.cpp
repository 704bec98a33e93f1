#include "Png.h"

#include "Picture.h"

#include <QColorSpace>
#include <QtEndian>

#include <spng.h>

#include <algorithm>
#include <new>
#include <stdexcept>
#include <vector>

namespace ztExamples
{

namespace
{

/// \param result  of one of the reader's functions
void require(int result)
{
    if (result == SPNG_OK)
        return;
    if (result == SPNG_EMEM)
        throw std::bad_alloc();
    bool const isCut = result == SPNG_IO_EOF;
    QString const reason = isCut ? "unable to read image data" : spng_strerror(result);
    throw std::runtime_error((reason.left(1).toUpper() + reason.mid(1)).toStdString());
}

int readDevice(spng_ctx*, void* device, void* target, std::size_t size)
{
    QIODevice& source = *static_cast<QIODevice*>(device);
    char* const bytes = static_cast<char*>(target);
    for (qint64 done = 0, count = 0; done < qint64(size); done += count)
        if ((count = source.read(bytes + done, qint64(size) - done)) <= 0)
            return SPNG_IO_EOF;
    return SPNG_OK;
}

/// Whether pixels may be transparent.
bool hasAlpha(spng_ctx* png, spng_ihdr const& header)
{
    spng_trns key;
    if (header.color_type & SPNG_COLOR_TYPE_GRAYSCALE_ALPHA)
        return true;
    if (spng_get_trns(png, &key) != SPNG_OK)
        return false;
    auto const isOpaque = [](uchar alpha) { return alpha == 255; };
    if (header.color_type == SPNG_COLOR_TYPE_INDEXED)
        return !std::all_of(key.type3_alpha, key.type3_alpha + key.n_type3_entries, isOpaque);
    return header.color_type == SPNG_COLOR_TYPE_TRUECOLOR || key.gray < 1 << header.bit_depth;
}

QImage readPixels(spng_ctx* png, spng_ihdr const& header)
{
    constexpr QImage::Format formats[][2] = {{QImage::Format_RGBX8888, QImage::Format_RGBA8888},
                                             {QImage::Format_RGBX64, QImage::Format_RGBA64}};
    bool const isDeep = header.bit_depth == 16, isClear = hasAlpha(png, header);
    QImage picture = allocated(QImage(int(header.width), int(header.height), formats[isDeep][isClear]));
    require(spng_decode_image(png, picture.bits(), std::size_t(picture.sizeInBytes()),
                              isDeep ? SPNG_FMT_RGBA16 : SPNG_FMT_RGBA8, isClear ? SPNG_DECODE_TRNS : 0));
    bool const isGray = header.color_type == SPNG_COLOR_TYPE_GRAYSCALE && header.bit_depth > 1 && !isDeep;
    if (!isGray || !isClear)
        return picture;
    // Qt has black where the clear gray was.
    picture = allocated(std::move(picture).convertToFormat(QImage::Format_RGBA8888_Premultiplied));
    picture.reinterpretAsFormat(QImage::Format_RGBA8888);
    return picture;
}

void setPlace(QImage& picture, spng_ctx* png)
{
    constexpr int pixels = 0, meters = 1;
    spng_phys resolution;
    bool const isKnown = spng_get_phys(png, &resolution) == SPNG_OK && resolution.unit_specifier == meters;
    picture.setDotsPerMeterX(isKnown ? int(resolution.ppu_x) : 0);
    picture.setDotsPerMeterY(isKnown ? int(resolution.ppu_y) : 0);
    spng_offs offset;
    if (spng_get_offs(png, &offset) == SPNG_OK && offset.unit_specifier == pixels)
        picture.setOffset({offset.x, offset.y});
}

void setTexts(QImage& picture, spng_ctx* png)
{
    quint32 count = 0;
    spng_get_text(png, nullptr, &count);
    std::vector<spng_text> texts(count);
    spng_get_text(png, texts.data(), &count);
    for (spng_text const& text : texts)
    {
        bool const isUtf8 = text.type == SPNG_ITXT;
        int const size = int(text.length);
        picture.setText(QString::fromLatin1(text.keyword),
                        isUtf8 ? QString::fromUtf8(text.text, size) : QString::fromLatin1(text.text, size));
    }
}

/// An invalid one if the profile is cut off, or of other colors than the pixels.
QColorSpace fromProfile(QByteArray const& bytes, bool isGray)
{
    constexpr int placeOfSpace = 16, headerSize = 128;
    quint32 const size = bytes.size() < headerSize ? ~0u : qFromBigEndian<quint32>(bytes.constData());
    if (size > quint32(bytes.size()) || bytes.mid(placeOfSpace, 4) != (isGray ? "GRAY" : "RGB "))
        return QColorSpace();
    QColorSpace const space = QColorSpace::fromIccProfile(bytes.left(int(size)));
    return space.isValid() ? space : QColorSpace(); // the former still has the bytes
}

QColorSpace colorSpaceOf(spng_ctx* png, spng_ihdr const& header)
{
    spng_iccp profile;
    if (spng_get_iccp(png, &profile) == SPNG_OK)
        return fromProfile(QByteArray(profile.profile, int(profile.profile_len)),
                           (header.color_type & SPNG_COLOR_TYPE_TRUECOLOR) == 0);
    uint8_t intent;
    if (spng_get_srgb(png, &intent) == SPNG_OK)
        return QColorSpace::SRgb;
    double gamma;
    if (spng_get_gama(png, &gamma) != SPNG_OK)
        return QColorSpace();
    spng_chrm colors;
    if (spng_get_chrm(png, &colors) != SPNG_OK)
        return {QColorSpace::Primaries::SRgb, QColorSpace::TransferFunction::Gamma, float(1 / gamma)};
    return {{colors.white_point_x, colors.white_point_y},
            {colors.red_x, colors.red_y},
            {colors.green_x, colors.green_y},
            {colors.blue_x, colors.blue_y},
            QColorSpace::TransferFunction::Gamma,
            float(1 / gamma)};
}

} // namespace

PngFile::PngFile(QIODevice& device) : _png(spng_ctx_new(0), spng_ctx_free)
{
    constexpr std::size_t maxChunk = 8000000, maxChunks = 64 << 20;
    if (!_png)
        throw std::bad_alloc();
    require(spng_set_chunk_limits(_png.get(), maxChunk, maxChunks));
    require(spng_set_png_stream(_png.get(), readDevice, &device));
    spng_ihdr header;
    require(spng_get_ihdr(_png.get(), &header));
    require(spng_decode_chunks(_png.get()));
    _size = QSize(int(header.width), int(header.height));
}

QImage PngFile::read() const
{
    spng_ihdr header;
    require(spng_get_ihdr(_png.get(), &header));
    QImage picture = readPixels(_png.get(), header);
    require(spng_decode_chunks(_png.get())); // behind the pixels
    setPlace(picture, _png.get());
    setTexts(picture, _png.get());
    picture.setColorSpace(colorSpaceOf(_png.get(), header));
    return picture;
}

} // namespace ztExamples
