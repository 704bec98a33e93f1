/// \file
/// One image on its way from file to file.
#pragma once

#include "Encoders.h"
#include "FrameInfo.h"
#include "Pam.h"
#include "Picture.h"

#include <QString>

namespace ztExamples
{

struct Frame
{
    /// As read, 8 bits a channel, alpha straight. Null if it has no alpha channel.
    QImage original;
    /// What is stamped, see toPixels().
    QImage pixels;
    FrameInfo info = {};
    /// Of a stream, without samples for another frame's. Then the pixels are a transparent layer for it.
    PamPicture streamed = {};
};

/// Opens an image, which has so many pixels at most.
/// \throw std::exception if it can't be read; what() is the reason
PictureFile openFrame(QString const& path, qint64 maxPixels);

/// \throw std::exception if the image can't be read; what() is the reason
Frame readFrame(PictureFile const& file);

/// A frame of a picture, top row first.
Frame toFrame(QImage picture);

/// A frame of a transparent layer and a picture of a stream.
Frame layerOver(PamPicture picture);

/// What is a stamped frame in a stream: in the form and depth of a picture of a stream, else with 8 bits a channel.
PamPicture toPam(Frame frame);

/// Writes a frame's pixels whole or not at all, in the format of the path's suffix and with the original's
/// kind of alpha and metadata.
/// \param pngCompression  of a PNG file, see encode()
/// \throw std::exception if it can't be written; what() is the reason
void writeFrame(Frame frame, QString const& path, int pngCompression = defaultPngCompression);

} // namespace ztExamples
