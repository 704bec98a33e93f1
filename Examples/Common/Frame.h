/// \file
/// One image on its way from file to file.
#pragma once

#include "Encoders.h"
#include "FileMetadata.h"
#include "FrameInfo.h"
#include "NativeFrame.h"
#include "Pam.h"
#include "Picture.h"

#include <QString>

#include <memory>
#include <optional>

namespace ztExamples
{

/// A file, of which no more than the beginning has been read.
struct FrameFile
{
    /// Of 8 bits a channel, or a native one's PNG file. Else there is only the other one.
    std::optional<PictureFile> picture = std::nullopt;
    std::unique_ptr<NativeFrame> native = nullptr;
    FileMetadata metadata = {};
    /// How many pixels of 16 bytes the frame takes at most on its way. Nothing if the file doesn't tell.
    std::optional<qint64> pixelCount = std::nullopt;
};

struct Frame
{
    /// As read, 8 bits a channel, alpha straight. Null if it has no alpha channel.
    QImage original;
    /// What is stamped, see toPixels(): the frame, or an empty layer for a native one.
    QImage pixels;
    FrameInfo info = {};
    /// Of a stream, without samples for another frame's. Then the pixels are a transparent layer for it.
    PamPicture streamed = {};
    std::unique_ptr<NativeFrame> native = nullptr;
    /// Of its file, for one of the same format.
    FileMetadata metadata = {};
};

/// In lower case.
QByteArray suffixOf(QString const& path);

/// What is asked for of all frames.
struct FrameRules
{
    /// 0: no limit.
    qint64 maxPixels = defaultMaxPixels;
    /// The colour space, see NativeFrames::open().
    QString space;
    /// See encode().
    int pngCompression = defaultPngCompression;
};

/// \throw std::exception if it can't be read or is too large; what() is the reason
FrameFile openFrame(QString const& path, QString const& output, FrameRules const& rules);

/// \throw std::exception if the image can't be read; what() is the reason
Frame readFrame(FrameFile file);

/// A frame of a picture, top row first.
Frame toFrame(QImage picture);

/// A frame of a transparent layer and a picture of a stream.
Frame layerOver(PamPicture picture);

/// What is a stamped frame in a stream: in the form and depth of a picture of a stream, else with 8 bits a channel.
PamPicture toPam(Frame frame);

/// Whether files of a format, by their suffix in lower case, have an alpha channel.
bool hasAlpha(QByteArray const& format);

/// Writes a frame's pixels whole or not at all, in the format of the path's suffix and with the original's
/// kind of alpha and metadata.
/// \param pngCompression  of a PNG file, see encode()
/// \throw std::exception if it can't be written; what() is the reason
void writeFrame(Frame frame, QString const& path, int pngCompression = defaultPngCompression);

} // namespace ztExamples
