/// \file
/// JPEG files from and to pixels in the layout that frames have. Qt does what is out of the ordinary.
#pragma once

#include <QByteArray>
#include <QImage>

#include <functional>

namespace ztExamples
{

constexpr int jpegQuality = 95;

/// Whether the mark of the picture's end is missing. What a decoder then fills up is no picture.
bool isCutJpeg(QByteArray const& file);

/// The pixels of a file in the layout of an osg::Image, see toPixels(), with the metadata that Qt reads.
/// \return a null image if this is no JPEG file in colour of that size, whole and upright
QImage decodeJpeg(QByteArray const& file, QSize const& expectedSize);

/// Calls a function with each segment of metadata, its marker first, that stands before the pixels.
void forEachMetadataSegment(QByteArray const& file, std::function<void(QByteArray)> const& function);

/// A file that encodeJpeg() has made, with other metadata.
QByteArray withJpegMetadata(QByteArray const& file, QByteArray const& segments);

/// A file of a picture in Format_RGBX8888, bottom row first, with the metadata that Qt writes.
/// \return nothing if a JPEG file can't hold the picture
QByteArray encodeJpeg(QImage const& picture);

} // namespace ztExamples
