/// \file
/// PNG files, read without Qt's reader and OpenImageIO's, which print what is wrong with them.
#pragma once

#include <QIODevice>
#include <QImage>

#include <memory>

struct spng_ctx;

namespace ztExamples
{

/// A PNG file, of which no more than what is before the pixels has been read.
class PngFile
{
  public:
    /// \param device  open at the file's beginning; to outlive this
    /// \throw std::runtime_error if it can't be read; what() is the reason
    explicit PngFile(QIODevice& device);

    QSize size() const { return _size; }

    /// With resolution, offset, texts and colour space, as Qt would read it. To be called once.
    /// \throw std::runtime_error if it can't be read; what() is the reason
    QImage read() const;

  private:
    std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> _png;
    QSize _size;
};

} // namespace ztExamples
