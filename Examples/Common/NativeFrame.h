/// \file
/// Frames in the depth of their files: any number of parts and channels, of whole numbers or with a fraction, in any
/// colour space.
///
/// OpenImageIO reads and writes them, from a library that is loaded with the first one: that takes a quarter of a
/// second and 100 MiB, which frames of 8 bits do without.
#pragma once

#include "FrameInfo.h"

#include <QFileDevice>
#include <QImage>

#include <memory>
#include <vector>

namespace ztExamples
{

/// A file, of which no more than the beginning is read at first. What throws throws std::exception, whose what() is the
/// reason in a line.
class NativeFrame
{
  public:
    virtual ~NativeFrame() = default;

    /// What the overlays are laid out for: the display window, turned as the file says.
    virtual QSize size() const = 0;
    /// Of all that is to be held in memory.
    virtual std::vector<QSize> pictureSizes() const = 0;
    virtual qint64 byteCount() const = 0;
    virtual FrameInfo info() const = 0;

    /// Reads what merge() doesn't.
    virtual void read() = 0;

    /// Merges a layer of size() over the picture, in whose space it blends. Pixels that it leaves free stay as they
    /// are. May read for that what is covered. \param layer  see toPixels()
    virtual void merge(QImage const& layer) = 0;

    /// Writes all parts, if need be what a format can hold of them. The frame is of no use then.
    /// \param format  the file's suffix in lower case
    /// \param file  open; what fails of it, it says by an error
    /// \param compression  how much is deflated, where the format does, see encode()
    virtual void write(QFileDevice& file, QByteArray const& format, int compression) = 0;

    /// What write() would write.
    virtual QByteArray encode(QByteArray const& format, int compression) = 0;
};

/// What the library gives.
class NativeFrames
{
  public:
    /// \param format  OpenImageIO's name for it
    /// \param space  the frame's colour space, empty: as the file says it
    /// \param isConverted  whether it is to be written in another format
    virtual std::unique_ptr<NativeFrame> open(QString const& path, QByteArray const& format, QString const& space,
                                              bool isConverted) = 0;

    /// \throw std::runtime_error if overlays can't be brought to a space, or if the configuration of spaces that the
    ///     environment names can't be read; what() is a line about it
    virtual void requireSpace(QString const& space) = 0;

    /// How many threads work on a frame.
    virtual void setThreads(int count) = 0;

  protected:
    ~NativeFrames() = default;
};

/// Loads the library.
/// \throw std::runtime_error without it; what() says so
NativeFrames& nativeFrames();

/// Whether files with a suffix are frames of this kind.
bool isNativeSuffix(QByteArray const& suffix);

/// OpenImageIO's name of a file's format if its frame has to be of this kind, or may be, which depends on its content.
/// Empty for other formats, and for what is no regular file.
QByteArray nativeFormat(QString const& path, bool isWanted);

} // namespace ztExamples
