#include "Frame.h"

#include "Ending.h"
#include "Jpeg.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QtEndian>

#include <limits>
#include <stdexcept>

namespace ztExamples
{

namespace
{

[[noreturn]] void fail(QString const& what, QString const& reason)
{
    throw std::runtime_error((what + ": " + reason).toStdString());
}

[[noreturn]] void failToRead(std::runtime_error const& error)
{
    fail("can't read it", QString::fromUtf8(error.what()));
}

/// Null for another format, for a pipe, which can be read only once, and for a file that is larger than its picture.
QImage readJpeg(PictureFile const& picture)
{
    constexpr qint64 metadataSize = 1 << 20;
    QFile file(picture.path());
    bool const isJpeg = QFileInfo(file).isFile() && file.open(QIODevice::ReadOnly) &&
                        file.size() <= 4 * picture.pixelCount() + metadataSize && file.peek(3) == "\xff\xd8\xff";
    return isJpeg ? decodeJpeg(file.readAll(), picture.size()) : QImage();
}

/// Whether a file ends before its picture, for the formats whose readers fill up what is missing.
bool isCut(QString const& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    QByteArray const start = file.peek(6);
    if (start.size() == 6 && start.startsWith("BM"))
        return qFromLittleEndian<quint32>(start.constData() + 2) > file.size();
    bool const isJpeg = start.startsWith("\xff\xd8\xff") && file.size() <= std::numeric_limits<int>::max();
    uchar* const bytes = isJpeg ? file.map(0, file.size()) : nullptr;
    return bytes && isCutJpeg(QByteArray::fromRawData(reinterpret_cast<char const*>(bytes), int(file.size())));
}

/// Its readers round to 8 bits, or down.
void requireEightBitPnm(QString const& path)
{
    static QRegularExpression const threeNumbers(R"(\AP[2356](?:(?:\s|#[^\n]*+\n)++(\d+)){3}\s)");
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return;
    if (threeNumbers.match(QString::fromLatin1(file.peek(1 << 12))).captured(1).toInt() > 255)
        throw std::runtime_error("PPM and PGM files of 16 bits aren't stamped, only PPM and PAM pictures from a pipe");
}

FrameInfo infoOf(QImage const& picture)
{
    FrameInfo info{picture.size(), {}};
    for (QString const& name : picture.textKeys())
        info.metadata[name] = picture.text(name);
    return info;
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
bool writeAll(QIODevice& device, QByteArray const& bytes)
{
    qint64 written = 0;
    for (qint64 done = 0; done < bytes.size(); done += written)
        if ((written = device.write(bytes.constData() + done, bytes.size() - done)) <= 0)
            return false;
    return true;
}

/// \param write  writes what is to be in the file into the device, or tells that it can't
template <class Function>
void writeWhole(QString const& path, Function const& write)
{
    QFileInfo const place(path);
    if (place.exists() && !place.isFile() && !place.isDir())
        throw std::runtime_error("It is no regular file");
    Unbroken const writing; // a temporary file
    QSaveFile file(path);
    // A buffer would be flushed where nobody learns that it doesn't fit.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || !write(file) || !file.commit())
        throw std::runtime_error(file.errorString().toStdString());
}

/// With room for the layer, for what decoders and encoders take, and for a conversion.
/// \param isHeld  whether the new file is held in memory, too
qint64 countPixels(NativeFrame const& frame, bool isConverted, bool isHeld)
{
    constexpr qint64 pixelSize = 16;
    QSize const size = frame.size();
    qint64 const area = qint64(size.width()) * size.height();
    return frame.byteCount() * (isHeld ? 10 : 5) / 4 / pixelSize + area * (isConverted ? 9 : 1) / 4;
}

FrameFile openNative(QString const& path, QByteArray const& format, QByteArray const& output, FrameRules const& rules)
{
    if (isCut(path))
        throw std::runtime_error("The file is cut off");
    bool const isConverted = output.isEmpty() || !format.contains(output);
    FrameFile file;
    PixelLimit limit(rules.maxPixels);
    if (format == "png")
        file.picture.emplace(path, limit);
    file.native = nativeFrames().open(path, format, rules.space, isConverted);
    for (QSize const& size : file.native->pictureSizes())
        PixelLimit(rules.maxPixels).add(size.width(), size.height());
    bool const isHeld = format == "png" || format == "hdr";
    file.pixelCount = countPixels(*file.native, isConverted, isHeld);
    if (isHeld)
        file.metadata = readMetadata(path);
    return file;
}

Frame readPicture(PictureFile const& file)
{
    if (isCut(file.path()))
        throw std::runtime_error("The file is cut off");
    if (QImage pixels = readJpeg(file); !pixels.isNull())
        return {QImage(), pixels, infoOf(pixels), {}};
    return toFrame(file.read());
}

Frame readNative(std::unique_ptr<NativeFrame> native)
{
    native->read();
    QImage layer = allocated(QImage(native->size(), QImage::Format_RGBA8888_Premultiplied));
    layer.fill(0);
    return {QImage(), layer, native->info(), {}, std::move(native)};
}

void merge(Frame& frame)
try
{
    frame.native->merge(std::exchange(frame.pixels, QImage()));
}
catch (std::runtime_error const& error)
{
    failToRead(error);
}

void writeNative(Frame frame, QString const& path, int pngCompression)
{
    QByteArray const format = suffixOf(path);
    writeWhole(path, [&](QFileDevice& file) {
        if (format == frame.metadata.format)
            return writeAll(file, withMetadata(frame.native->encode(format, pngCompression), frame.metadata));
        frame.native->write(file, format, pngCompression);
        return true;
    });
}

/// A picture of 8 bits a channel, bottom row first.
QImage fromNative(Frame frame)
{
    constexpr int leastCompression = 0;
    merge(frame);
    QImage const picture = allocated(QImage::fromData(frame.native->encode("png", leastCompression), "png"));
    return picture.convertToFormat(picture.hasAlphaChannel() ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888)
        .mirrored();
}

/// A picture of a stream as it came, if it may.
QByteArray encodeStreamed(PamPicture const& picture, QByteArray const& format, int pngCompression)
{
    bool const isPam = format == "pam", isPpm = format == "ppm";
    if (picture.header.bytes.startsWith(isPam ? "P7" : "P6") && (isPam || isPpm))
        return bytesOf(picture);
    QImage const image = toImage(picture);
    return isPam ? bytesOf(toPam(image)) : encode(image, format, pngCompression);
}

QByteArray encodePlain(Frame frame, QByteArray const& format, int pngCompression)
{
    return frame.streamed.samples ? encodeStreamed(toPam(std::move(frame)), format, pngCompression)
                                  : encode(compose(std::move(frame), format), format, pngCompression);
}

void writePlain(Frame frame, QString const& path, int pngCompression)
{
    QByteArray const format = suffixOf(path);
    FileMetadata const metadata = std::move(frame.metadata);
    QByteArray const bytes = withMetadata(encodePlain(std::move(frame), format, pngCompression), metadata);
    writeWhole(path, [&](QFileDevice& file) { return writeAll(file, bytes); });
}

} // namespace

bool hasAlpha(QByteArray const& format)
{
    static QByteArrayList const without = {"bmp", "jpeg", "jpg", "pbm", "pgm", "ppm", "xbm"};
    return !without.contains(format);
}

QByteArray suffixOf(QString const& path)
{
    return QFileInfo(path).suffix().toLower().toUtf8();
}

FrameFile openFrame(QString const& path, QString const& output, FrameRules const& rules)
try
{
    requireEightBitPnm(path);
    bool const isWanted = !rules.space.isEmpty() || isNativeSuffix(suffixOf(output));
    if (QByteArray const format = nativeFormat(path, isWanted); !format.isEmpty())
        return openNative(path, format, suffixOf(output), rules);
    PixelLimit limit(rules.maxPixels);
    FrameFile file{PictureFile(path, limit), nullptr, readMetadata(path)};
    if (isWanted)
        throw std::runtime_error("OpenImageIO doesn't read its format");
    if (!file.picture->size().isEmpty())
        file.pixelCount = file.picture->pixelCount();
    return file;
}
catch (std::runtime_error const& error)
{
    failToRead(error);
}

Frame readFrame(FrameFile file)
try
{
    if (file.native && file.picture)
        file.picture->read(); // says what is wrong with it before OpenImageIO's reader prints that
    Frame frame = file.native ? readNative(std::move(file.native)) : readPicture(*file.picture);
    frame.metadata = std::move(file.metadata);
    return frame;
}
catch (std::runtime_error const& error)
{
    failToRead(error);
}

Frame toFrame(QImage picture)
{
    FrameInfo const info = infoOf(picture);
    if (!picture.hasAlphaChannel())
        return {QImage(), toPixels(std::move(picture)), info, {}};
    QImage const original = allocated(std::move(picture).convertToFormat(QImage::Format_RGBA8888));
    return {original, toPixels(original), info, {}};
}

Frame layerOver(PamPicture picture)
{
    QImage layer = allocated({picture.header.width, picture.header.height, QImage::Format_RGBA8888_Premultiplied});
    layer.fill(0);
    FrameInfo const info = infoOf(layer);
    return {QImage(), std::move(layer), info, std::move(picture)};
}

PamPicture toPam(Frame frame)
{
    if (frame.native)
        return toPam(fromNative(std::move(frame)));
    if (!frame.streamed.samples)
        return toPam(compose(std::move(frame), "pam"));
    mergeLayer(frame.pixels, frame.streamed);
    return std::move(frame.streamed);
}

void writeFrame(Frame frame, QString const& path, int pngCompression)
{
    if (frame.native)
        merge(frame);
    try
    {
        (frame.native ? writeNative : writePlain)(std::move(frame), path, pngCompression);
    }
    catch (std::runtime_error const& error)
    {
        fail("can't write \"" + path + "\"", QString::fromUtf8(error.what()));
    }
}

} // namespace ztExamples
