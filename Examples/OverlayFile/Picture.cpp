#include "Picture.h"

#include "ztImage.h"

#include <QBuffer>
#include <QFileInfo>
#include <QXmlStreamReader>

#include <stdexcept>

namespace ztExamples
{

namespace
{

[[noreturn]] void fail(QString const& reason)
{
    throw std::runtime_error(reason.toStdString());
}

/// Icons are files of files, whose own headers count.
bool tellsSize(QImageReader const& reader)
{
    static QByteArrayList const icons = {"cur", "icns", "ico"};
    return reader.supportsOption(QImageIOHandler::Size) && !icons.contains(reader.format());
}

/// Pictures inside have no limits and are any file, even this one. What is compressed may expand to anything.
void requireShapes(QByteArray const& svg)
{
    if (svg.startsWith("\x1f\x8b"))
        fail("It is compressed");
    QXmlStreamReader xml(svg);
    xml.setNamespaceProcessing(false); // as Qt's plugin, which takes prefixes that nobody declared
    while (!xml.atEnd())
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("image"))
            fail("It has a picture inside");
}

} // namespace

void PixelLimit::add(double width, double height)
{
    if (isNone())
        return;
    if (!(width * height <= double(_left)))
        fail(QString("%1 by %2 pixels%3 are above the limit of %4")
                 .arg(width, 0, 'f', 0)
                 .arg(height, 0, 'f', 0)
                 .arg(_left < _limit ? " more" : "")
                 .arg(_limit));
    _left -= qint64(width * height);
}

PictureFile::PictureFile(QString const& path, PixelLimit& limit) : _reader(std::make_unique<QImageReader>(path))
{
    QFileInfo const file(path);
    if (!file.exists()) // the reader tries other suffixes
        fail("File not found");
    if (file.isDir())
        fail("Is a directory");
    _reader->setAutoTransform(true);
    if (!_reader->canRead())
        fail(_reader->errorString());
    bool const isTold = tellsSize(*_reader);
    if (!isTold && limit.isNone())
        return;
    if (!isTold)
        fail("Its format doesn't tell its size beforehand");
    if (_reader->format() == "png")
        _png.emplace(*_reader->device());
    _size = _png ? _png->size() : _reader->size();
    if (_size.isEmpty())
        fail("Unable to read image data");
    limit.add(_size.width(), _size.height());
}

QImage PictureFile::read() const
{
    if (_png)
        return _png->read();
    QImage const picture = _reader->read();
    if (picture.isNull())
        fail(_reader->errorString());
    return picture;
}

bool VectorPicture::isOne(QString const& path)
{
    return QStringList{"svg", "svgz"}.contains(QFileInfo(path).suffix().toLower());
}

VectorPicture::VectorPicture(QString const& path)
{
    if (!QImageReader::supportedImageFormats().contains("svg"))
        fail("It takes Qt's SVG plugin, which isn't there");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(file.errorString());
    constexpr int maxSize = 16 << 20;
    _bytes = file.read(maxSize + 1);
    if (_bytes.size() > maxSize)
        fail(QString("expected %1 bytes at most").arg(maxSize));
    requireShapes(_bytes);
    QBuffer buffer(&_bytes);
    _size = QImageReader(&buffer, "svg").size();
    if (_size.isEmpty())
        fail("It is no SVG picture");
}

QImage VectorPicture::draw(QSize const& size) const
{
    QBuffer buffer;
    buffer.setData(_bytes);
    QImageReader reader(&buffer, "svg");
    reader.setScaledSize(size);
    QImage const picture = reader.read();
    if (picture.isNull())
        fail(reader.errorString());
    return picture;
}

QImage allocated(QImage image)
{
    if (image.isNull())
        throw std::runtime_error("Not enough memory");
    return image;
}

QImage toPixels(QImage picture)
{
    return allocated(std::move(picture).convertToFormat(QImage::Format_RGBA8888_Premultiplied).mirrored());
}

osg::ImagePtr createImage(QImage const& pixels)
{
    return ztImage::create(pixels.width(), pixels.height(), pixels.constBits());
}

osg::ImagePtr createImageOver(QImage& pixels)
{
    return ztImage::createOver(pixels.width(), pixels.height(), pixels.bits());
}

} // namespace ztExamples
