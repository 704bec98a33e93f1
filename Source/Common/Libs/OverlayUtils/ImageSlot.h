/// \file
/// The slot of the shown image: the texture chunk that comes first in the foreground's material.
///
/// A foreground whose material is no osg::ChunkMaterial that begins with an osg::TextureChunk has no such slot.
#pragma once

#include "OverlayAccess.h"

namespace ztOverlays
{

/// The chunk that holds the image, null without a slot.
inline osg::TextureChunkPtr slotOf(osg::PolygonForeground2Ptr const& foreground)
{
    auto const material = osg::dynamicCast<osg::ChunkMaterial>(foreground->material);
    if (material == osg::NullFC || material->chunks.empty())
        return osg::NullFC;
    return osg::dynamicCast<osg::TextureChunk>(material->chunks.front());
}

/// The image in the slot, borrowed. Null without a slot.
inline osg::ImagePtr getImage(osg::PolygonForeground2Ptr const& foreground)
{
    osg::TextureChunkPtr const slot = slotOf(foreground);
    return slot != osg::NullFC ? slot->image : osg::ImagePtr();
}

/// Puts an image, which may be null, into the slot and marks the chunk. Without a slot: nothing happens.
void setImage(osg::PolygonForeground2Ptr const& foreground, osg::ImagePtr const& image);

/// Gives an image a size and bytes of its own, as they come.
inline void allocate(osg::Image& image, int width, int height)
{
    image.set(osg::Image::FormatRGBA, width, height, 1, 1, 1, 0.0, nullptr, osg::Image::TypeUInt8, true, 1);
}

/// Turns an image into 16 by 16 transparent pixels and marks it.
void clearImage(osg::ImagePtr const& image);

/// A new image as clearImage() leaves it.
osg::ImagePtr createBlankImage();

/// Puts a new blank image into the slot. \return the image, borrowed; null without a slot
osg::ImagePtr setBlankImage(osg::PolygonForeground2Ptr const& foreground);

/// Brings the slot in line with `contentType`: a picture stands in it, and a text never renders into the picture. The
/// overlay has a foreground.
///
/// \return the image in the slot, borrowed. Null for a picture that is null, for a text that has a picture beside an
///     empty slot, and for a text without a slot.
osg::ImagePtr syncImage(osg::OverlayPtr const& overlay);

/// Whether syncImage() has nothing to do.
/// \param current  the image in the slot
inline bool isInSync(osg::Overlay const& overlay, osg::Image const* current)
{
    bool const holdsPicture = overlay.image.get() == current;
    return holdsPicture != isText(overlay);
}

} // namespace ztOverlays
