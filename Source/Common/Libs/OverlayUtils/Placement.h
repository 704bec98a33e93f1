/// \file
/// How large an overlay is and where it comes to lie. Single precision, rounded after each operation, in the grouping
/// written here: an unmoved overlay is recognised by its corners.
#pragma once

#include "OSGOverlay.h"
#include "ztNumeric.h"

namespace ztOverlays
{

/// In pixels.
struct PixelSize
{
    float width, height;
};

/// The height in pixels of an overlay whose size is relative to that of a target, without fraction.
inline int relativePixelHeight(int targetHeight, float size)
{
    return ztNumeric::truncate(float(targetHeight) * size);
}

/// Places an overlay, which has a foreground, as updateOverlayPosition() does.
/// \param image  the image that the overlay shows, may be null
void placeOverlay(osg::Overlay& overlay, osg::Image const* image, int targetWidth, int targetHeight);

/// The size of an overlay on a target of a height; 0 by 0 without an image.
/// \param image  the image that the overlay shows, may be null
PixelSize overlayPixelSize(osg::Overlay const& overlay, osg::Image const* image, int targetHeight);

} // namespace ztOverlays
