#include "Picture.h"

#include <QFileInfo>
#include <QImageReader>

#include <stdexcept>

namespace ztExamples
{

QImage readPicture(QString const& path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    QImage const picture = reader.read();
    if (!picture.isNull())
        return picture;
    QString const reason = QFileInfo(path).isDir() ? "Is a directory" : reader.errorString();
    throw std::runtime_error(reason.toStdString());
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

osg::ImagePtr createImageOver(QImage& pixels)
{
    auto const image = osg::create<osg::Image>();
    image->set(osg::Image::FormatRGBA, pixels.width(), pixels.height(), 1, 1, 1, 0.0, pixels.bits(),
               osg::Image::TypeUInt8, false, 1);
    return image;
}

} // namespace ztExamples
