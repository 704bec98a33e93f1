#include "OSGImage.h"

namespace osg::v1
{

ZT_CONTAINER_TYPE(Image, FieldContainer);

bool Image::set(UInt32 pixelFormat, Int32 newWidth, Int32 newHeight, Int32 depth, Int32 mipmapCount, Int32 frameCount,
                double frameDelay, UInt8 const* data, Int32 dataType, bool allocate, Int32 sideCount)
{
    bool const plain = pixelFormat == FormatRGBA && dataType == TypeUInt8 && depth == 1 && mipmapCount == 1 &&
                       frameCount == 1 && frameDelay == 0.0 && sideCount == 1;
    if (!plain)
        newWidth = newHeight = 0;
    std::size_t const bytes = newWidth > 0 && newHeight > 0 ? std::size_t(newWidth) * std::size_t(newHeight) * 4 : 0;

    std::size_t const ownBytes = allocate ? bytes : 0;
    if (data && allocate)
        pixels = std::vector<UInt8>(data, data + bytes);
    else if (pixels.capacity() / 4 > ownBytes)
        pixels = std::vector<UInt8>(ownBytes);
    else
        pixels.resize(ownBytes);
    externalPixels = allocate || bytes == 0 ? nullptr : const_cast<UInt8*>(data);
    width = newWidth;
    height = newHeight;
    return pixelBuffer();
}

bool Image::isComplete() const
{
    return width > 0 && height > 0 && (externalPixels || pixels.size() >= std::size_t(width) * std::size_t(height) * 4);
}

void Image::changed(BitVector mask, UInt32 origin)
{
    ImageBase::changed(mask, origin);
    for (FieldContainerPtr const& parent : parents)
    {
        bool const namesField = parent.getParentEPos() != FieldContainerPtrBase::InvalidParentEPos;
        parent->changed(namesField ? BitVector(1) << parent.getParentEPos() : AllFieldsMask, OriginChild);
    }
}

} // namespace osg::v1
