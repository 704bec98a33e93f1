#include "ImageSlot.h"

#include "OSGRefPtr.h"

#include <cstring>

namespace ztOverlays
{

namespace
{

constexpr int blankSize = 16;

} // namespace

void setImage(osg::PolygonForeground2Ptr const& foreground, osg::ImagePtr const& image)
{
    osg::TextureChunkPtr const slot = slotOf(foreground);
    if (slot == osg::NullFC)
        return;
    slot->setImage(image);
    osg::markChanged(slot, osg::TextureChunk::ImageFieldMask);
}

void clearImage(osg::ImagePtr const& image)
{
    allocate(*image, blankSize, blankSize);
    std::memset(image->pixelBuffer(), 0, blankSize * blankSize * 4);
    osg::markChanged(image, osg::AllFieldsMask);
}

osg::ImagePtr createBlankImage()
{
    osg::NewPtr<osg::Image> image(osg::create<osg::Image>());
    clearImage(image);
    return image.release();
}

osg::ImagePtr setBlankImage(osg::PolygonForeground2Ptr const& foreground)
{
    if (slotOf(foreground) == osg::NullFC)
        return osg::NullFC;
    osg::NewPtr<osg::Image> const image(createBlankImage());
    setImage(foreground, image);
    return image;
}

osg::ImagePtr syncImage(osg::OverlayPtr const& overlay)
{
    osg::ImagePtr const current = getImage(overlay->foreground);
    if (isInSync(*overlay, current.get()))
        return current;
    if (isText(*overlay))
        return setBlankImage(overlay->foreground);
    setImage(overlay->foreground, overlay->image);
    return overlay->image;
}

} // namespace ztOverlays
