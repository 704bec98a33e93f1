/// \file
/// One image on its way from file to file.
#pragma once

#include "Encoders.h"

#include <QImage>
#include <QString>

namespace ztExamples
{

struct Frame
{
    /// As read, 8 bits a channel, alpha straight. Null if it has no alpha channel.
    QImage original;
    /// What is stamped, see toPixels().
    QImage pixels;
};

/// \throw std::exception if the image can't be read; what() is the reason
Frame readFrame(QString const& path);

/// Writes a frame's pixels whole or not at all, in the format of the path's suffix and with the original's
/// kind of alpha and metadata.
/// \param pngCompression  of a PNG file, see encode()
/// \throw std::exception if it can't be written; what() is the reason
void writeFrame(Frame frame, QString const& path, int pngCompression = defaultPngCompression);

} // namespace ztExamples
