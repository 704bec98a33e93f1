/// \file
/// The bytes of picture files. PNG and JPEG files are made faster than by Qt.
#pragma once

#include <QByteArray>
#include <QImage>

namespace ztExamples
{

/// Makes PNG files about as small as other programs make them, in a fraction of the time.
constexpr int defaultPngCompression = 2;

/// A file of a picture, with the metadata that Qt writes: resolution, colour space, texts.
/// \param picture  bottom row first, in Format_RGBA8888, or in Format_RGBX8888 if it has no alpha channel
/// \param format  the file's suffix in lower case; "jpg" and "jpeg" take pictures without an alpha channel only
/// \param pngCompression  from 0, none, to 9, the smallest and slowest
/// \throw std::runtime_error if there can't be such a file; what() is the reason
QByteArray encode(QImage picture, QByteArray const& format, int pngCompression);

/// Qt's file of a picture's first pixel, which has all of the metadata.
QByteArray fileOfOnePixel(QImage const& picture, QByteArray const& format);

} // namespace ztExamples
