/// \file
/// Pictures in a stream, one behind the other: PAM (P7) and PPM (P6), see https://netpbm.sourceforge.net/doc/pam.html
#pragma once

#include <QByteArray>
#include <QImage>

#include <cstdio>
#include <memory>

namespace ztExamples
{

struct PamHeader
{
    /// As it is in the stream.
    QByteArray bytes;
    int width = 0;
    int height = 0;
    /// 1 to 4: gray or red, green, blue, and alpha if it is an even number.
    int channels = 0;
    /// The largest value of a sample, which has two bytes above 255, the higher one first.
    int maxval = 0;

    bool hasAlpha() const { return channels % 2 == 0; }
    int sampleSize() const { return maxval > 255 ? 2 : 1; }
    std::size_t rowSize() const { return std::size_t(width) * std::size_t(channels) * std::size_t(sampleSize()); }
    std::size_t size() const { return rowSize() * std::size_t(height); }
};

struct PamPicture
{
    PamHeader header;
    /// The rows, the top one first; alpha is straight.
    std::unique_ptr<uchar[]> samples;
};

/// Whether a stream is at its end, for which it waits. A stream that can't be read isn't.
bool isAtEnd(std::FILE* stream);

/// \throw std::runtime_error if there is none, or a wrong one; what() is a line about it
PamHeader readPamHeader(std::FILE* stream);

/// Reads what is behind a header, and no more.
/// \throw std::runtime_error if that isn't all there; what() is a line about it
PamPicture readPamSamples(PamHeader header, std::FILE* stream);

/// Writes a picture at once.
/// \throw std::runtime_error if the stream doesn't take it; what() is the reason
void writePam(PamPicture const& picture, std::FILE* stream);

/// A picture of 8 bits a channel.
/// \param picture  bottom row first, in Format_RGBA8888, or in Format_RGBX8888 if it has no alpha channel
PamPicture toPam(QImage const& picture);

/// The other way round.
/// \throw std::runtime_error for one of 16 bits; what() is a line about it
QImage toImage(PamPicture const& picture);

/// As they are in a stream.
QByteArray bytesOf(PamPicture const& picture);

/// Merges a transparent layer over a picture of its size, in which all that it leaves free stays as it is.
/// \param layer  see toPixels()
void mergeLayer(QImage const& layer, PamPicture& picture);

} // namespace ztExamples
