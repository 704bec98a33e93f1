/// \file
/// What is done to pixels, on plain rows of bytes.
///
/// A pixel is four bytes: red, green, blue, alpha. Colour is premultiplied by alpha unless said otherwise. Rows need no
/// alignment, may be of any length, 0 included, and nothing beyond them is read. Every processor gives the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace ztPixels
{

constexpr int channels = 4;

/// Blends pixels over others: target = min(255, source + target × (255 − source alpha) / 255), the product rounded to
/// the nearest, on all four channels (Porter and Duff's "over", Compositing Digital Images, 1984).
///
/// \param targetStep,sourceStep  bytes from one row to the next
/// \param width,height  in pixels, of both; what belongs to the target and to the source doesn't overlap
void blend(std::uint8_t* target, std::size_t targetStep, std::uint8_t const* source, std::size_t sourceStep,
           std::size_t width, std::size_t height);

/// What each channel of a source is multiplied by, and how much of the target a source alpha of 255 covers.
struct Modulation
{
    double factors[channels];
    double coverage;
};

/// Like blend(), with target = source × factor + target × (1 − coverage × source alpha / 255), held within 0 to 255 and
/// rounded to the nearest; 0 where that is no number.
void blendModulated(std::uint8_t* target, std::size_t targetStep, std::uint8_t const* source, std::size_t sourceStep,
                    std::size_t width, std::size_t height, Modulation const& modulation);

/// Multiplies the colour of each pixel of a row by its alpha: straight alpha becomes premultiplied. Rounded to the
/// nearest.
void premultiply(std::uint8_t* row, std::size_t pixels);

/// Writes a row of words (alpha, red, green, blue, the highest byte first) as pixels. The rows don't overlap.
void fromWords(std::uint32_t const* words, std::uint8_t* row, std::size_t pixels);

/// What resampling weighs pixels with.
struct Kernel
{
    /// Pixels beyond this distance don't count. Distances are in pixels of the source, or of the destination where that
    /// is the coarser. With a negative value or NaN no pixel counts.
    double support;
    /// The weight of a pixel at a distance, which may be negative. Only the ratios of weights matter.
    std::function<double(double distance)> weight;
};

/// 1 − |distance| within 1: linear between neighbours where the picture grows, overlapping tents where it shrinks.
Kernel triangle();

/// Resamples a picture: rows lie directly behind each other.
///
/// Each of the two directions weighs the source's pixels around the centre of the new pixel; the weights of a new pixel
/// sum to 1, and at the edges those that fall outside are left out. Where no weight remains, or their sum is no finite
/// number, the nearest pixel is taken. Channels are held within 0 to 255 and rounded to the nearest; what lies less
/// than a thousandth below a half is rounded up, too, since sums are single precision. A side that shrinks to less than
/// a millionth of its size may be off by more than a level.
///
/// \param sourceWidth,sourceHeight,width,height  1 or above, at most 2^24
/// \param destination  width × height pixels, all written; doesn't overlap the source
/// \throw std::bad_alloc, what the kernel's weight throws
void resample(std::uint8_t const* source, int sourceWidth, int sourceHeight, std::uint8_t* destination, int width,
              int height, Kernel const& kernel);

} // namespace ztPixels
