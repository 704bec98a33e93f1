#include "Frame.h"

#include "Jpeg.h"
#include "Picture.h"

#include <QFileInfo>
#include <QSaveFile>

#include <stdexcept>

namespace ztExamples
{

namespace
{

[[noreturn]] void fail(QString const& what, QString const& reason)
{
    throw std::runtime_error((what + ": " + reason).toStdString());
}

bool hasAlpha(QByteArray const& format)
{
    static QByteArrayList const without = {"bmp", "jpeg", "jpg", "pbm", "pgm", "ppm", "xbm"};
    return !without.contains(format);
}

/// Null for another format, and for a pipe, which can be read only once.
QImage readJpeg(QString const& path)
{
    QFile file(path);
    bool const isJpeg = QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly) && file.peek(3) == "\xff\xd8\xff";
    return isJpeg ? decodeJpeg(file.readAll()) : QImage();
}

/// Premultiplying rounds, so what the overlays left alone takes its straight values from the original.
void restoreUntouched(QImage& picture, QImage const& stamped, QImage const& original)
{
    QImage const before = allocated(original.convertToFormat(stamped.format()));
    for (int y = 0; y < picture.height(); ++y)
    {
        int const yOfOriginal = picture.height() - 1 - y;
        auto const* const was = reinterpret_cast<QRgb const*>(before.constScanLine(yOfOriginal));
        auto const* const is = reinterpret_cast<QRgb const*>(stamped.constScanLine(y));
        auto const* const source = reinterpret_cast<QRgb const*>(original.constScanLine(yOfOriginal));
        auto* const target = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x)
            if (is[x] == was[x])
                target[x] = source[x];
    }
}

/// The picture to write, bottom row first.
QImage compose(Frame frame, QByteArray const& format)
{
    QImage stamped = std::move(frame.pixels);
    if (!frame.original.isNull() && hasAlpha(format))
    {
        QImage picture = allocated(stamped.convertToFormat(QImage::Format_RGBA8888));
        restoreUntouched(picture, stamped, frame.original);
        return picture;
    }
    // Premultiplied colour taken as opaque is the picture over black.
    stamped.reinterpretAsFormat(QImage::Format_RGBX8888);
    return stamped;
}

/// A write that the device cuts short gives no reason. Writing the rest does.
bool writeAll(QIODevice& device, QByteArray bytes)
{
    qint64 written = 0;
    while (!bytes.isEmpty() && (written = device.write(bytes)) > 0)
        bytes.remove(0, int(written));
    return bytes.isEmpty();
}

void writeWhole(QByteArray const& bytes, QString const& path)
{
    QFileInfo const place(path);
    if (place.exists() && !place.isFile() && !place.isDir())
        throw std::runtime_error("It is no regular file");
    QSaveFile file(path);
    // A buffer would be flushed where nobody learns that it doesn't fit.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || !writeAll(file, bytes) || !file.commit())
        throw std::runtime_error(file.errorString().toStdString());
}

} // namespace

Frame readFrame(QString const& path)
try
{
    if (QImage pixels = readJpeg(path); !pixels.isNull())
        return {QImage(), pixels};
    QImage picture = readPicture(path);
    if (!picture.hasAlphaChannel())
        return {QImage(), toPixels(std::move(picture))};
    QImage const original = allocated(std::move(picture).convertToFormat(QImage::Format_RGBA8888));
    return {original, toPixels(original)};
}
catch (std::runtime_error const& error)
{
    fail("can't read it", QString::fromUtf8(error.what()));
}

void writeFrame(Frame frame, QString const& path, int pngCompression)
{
    QByteArray const format = QFileInfo(path).suffix().toLower().toUtf8();
    QImage picture = compose(std::move(frame), format);
    try
    {
        writeWhole(encode(std::move(picture), format, pngCompression), path);
    }
    catch (std::runtime_error const& error)
    {
        fail("can't write \"" + path + "\"", QString::fromUtf8(error.what()));
    }
}

} // namespace ztExamples
