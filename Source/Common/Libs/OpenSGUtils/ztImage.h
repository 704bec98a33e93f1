/// \file
/// Operations on the pixels of images. All colour is premultiplied by alpha. An image with fewer bytes than its size
/// needs counts as one without; how many there are at `externalPixels`, nobody can tell.
#pragma once

#include "OSGImage.h"
#include "ztImageFilter.h"
#include "ztOpenSGUtils_export.h"

namespace ztImage
{

/// A new image, its count 0, of a size in pixels, with bytes of its own: a copy of those at `bytes`, or what comes for
/// null. Without any if a side is 0 or below.
/// \throw std::bad_alloc, std::length_error if they can't be had
ZTOPENSGUTILS_EXPORT osg::ImagePtr create(int width, int height, osg::UInt8 const* bytes = nullptr);

/// A new image, its count 0, of a size in pixels, that uses the caller's bytes in place. They outlive it, and are
/// written where it is. Without any if they are null or a side is 0 or below.
ZTOPENSGUTILS_EXPORT osg::ImagePtr createOver(int width, int height, osg::UInt8* bytes);

/// Resamples an image to a size.
///
/// Each of the two directions weighs the source's pixels with the filter around the centre of the new pixel. Where the
/// image shrinks, the filter is widened by the factor. The weights of a pixel sum to 1; at the edges those that fall
/// outside are left out. Where no weight remains, the nearest pixel is taken. Channels are rounded to the nearest, to
/// within a thousandth at halves.
///
/// \param source  unchanged, unless it is the destination
/// \param width,height  the new size in pixels
/// \param destination  a container of the caller's, may be the source; it has bytes of its own afterwards and is marked
///     with all fields
/// \param filter  of any support and weights; each new column and row takes 4 bytes for each weight
/// \return whether the destination has bytes; it is 0 by 0 if `source` is null or has none, if the new size is 0 or
///     below or takes more than 2 GiB, or if a side of either is longer than 2^24 pixels. A null destination: nothing
///     happens.
/// \throw std::bad_alloc, std::length_error, what the filter throws; the destination is then as before
ZTOPENSGUTILS_EXPORT bool scale(osg::ImagePtr const& source, int width, int height, osg::ImagePtr& destination,
                                ztImageGenericFilter const& filter);

/// Blends an image over another: source + target × (1 − source alpha), on all four channels, rounded to the nearest and
/// held within 0 to 255 (Porter and Duff's "over", Compositing Digital Images, 1984).
///
/// \param target  marked with its `pixels` field if any of its pixels lies under the source
/// \param source  of any size; what lies outside the target is left out. It may be the target; otherwise their bytes
///     don't overlap.
/// \param position  where the first pixel of the source's bytes comes to lie, in pixels of the target; x and y are
///     truncated towards zero, z isn't read
/// \param color  multiplies the source as a colour that isn't premultiplied; (1, 1, 1, 1) leaves it as it is
/// \param opacity  multiplies all four channels of the source; 1.0 leaves it as it is
/// \param additive  how far the source adds light instead of covering the target: source alpha × (1 − `additive`) is
///     what covers; 0.0 blends over, 1.0 adds
/// \return whether any pixel of the target lies under the source; false too if one of the two is null or has no bytes
/// \throw std::bad_alloc if a source that is the target can't be copied, which is then as before
ZTOPENSGUTILS_EXPORT bool blendImage(osg::ImagePtr const& target, osg::ImagePtr const& source,
                                     osg::Vector<float, 3u> position, osg::Color4<float> color, float opacity,
                                     float additive);

/// Turns straight alpha into premultiplied alpha: multiplies the colour of each pixel by its alpha, rounded to the
/// nearest. Marks the image with its `pixels` field. Null or without bytes: nothing happens.
ZTOPENSGUTILS_EXPORT void premultiply(osg::ImagePtr const& image);

} // namespace ztImage
