/// \file
/// Pictures from files, and their pixels as an osg::Image has them.
#pragma once

#include "OSGImage.h"
#include "Png.h"

#include <QImage>
#include <QImageReader>

#include <memory>
#include <optional>

namespace ztExamples
{

constexpr int defaultMaxPixels = 16384 * 16384;

/// How many pixels pictures may have in all.
class PixelLimit
{
  public:
    /// \param limit  0: none
    explicit PixelLimit(qint64 limit) : _limit(limit), _left(limit) {}

    bool isNone() const { return _limit == 0; }

    /// Counts a picture.
    /// \throw std::runtime_error if it goes beyond the limit; what() says how large it is
    void add(double width, double height);

  private:
    qint64 _limit;
    qint64 _left;
};

/// A picture file, of which no more than the beginning has been read.
class PictureFile
{
  public:
    /// \throw std::runtime_error if it is no picture or goes beyond the limit, in which it is counted, or doesn't tell
    ///     its size; what() is the reason
    PictureFile(QString const& path, PixelLimit& limit);

    QString path() const { return _reader->fileName(); }
    /// Empty if the file doesn't tell and there is no limit.
    QSize size() const { return _size; }
    qint64 pixelCount() const { return qint64(_size.width()) * _size.height(); }

    /// The picture, turned as its file says. To be called once, in any thread.
    /// \throw std::runtime_error if it can't be read; what() is the reason
    QImage read() const;

  private:
    std::unique_ptr<QImageReader> _reader;
    std::optional<PngFile> _png;
    QSize _size;
};

/// A picture of shapes (SVG), which is sharp at any size.
class VectorPicture
{
  public:
    /// Whether a file is one, by its name.
    static bool isOne(QString const& path);

    /// \throw std::runtime_error if the file is none or can't be read; what() is the reason
    explicit VectorPicture(QString const& path);

    /// That it has by itself.
    QSize size() const { return _size; }

    /// \throw std::runtime_error if it can't be drawn; what() is the reason
    QImage draw(QSize const& size) const;

  private:
    QByteArray _bytes;
    QSize _size;
};

/// The result of an operation of QImage, which gives a null image where there is no memory for it.
/// \throw std::bad_alloc for a null image
QImage allocated(QImage image);

/// The pixels in the layout of an osg::Image: red, green, blue, alpha, premultiplied, bottom row first, no gaps.
/// \throw std::bad_alloc without the memory for it
QImage toPixels(QImage picture);

/// A new image, its count 0, with a copy of such pixels.
osg::ImagePtr createImage(QImage const& pixels);

/// A new image, its count 0, that uses the bytes of such pixels in place: they have to outlive it.
osg::ImagePtr createImageOver(QImage& pixels);

} // namespace ztExamples
