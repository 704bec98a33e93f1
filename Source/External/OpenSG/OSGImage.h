/// \file
/// Images.
#pragma once

#include "OSGFieldContainer.h"
#include "OSGUserList.h"

namespace osg::v1
{

class ZTOPENSG_EXPORT ImageBase : public FieldContainer
{
  public:
    /// Size in pixels.
    ZT_FIELD(FieldContainer, 1, Width, width, Int32) = 0;
    ZT_FIELD(FieldContainer, 2, Height, height, Int32) = 0;
    /// The containers that use this image, once for each use. The parent field position of an entry is the number of
    /// the field that holds the image.
    ZT_FIELD(FieldContainer, 0, Parents, parents, NotCopied<UserList<FieldContainerPtr>>);
    /// The image's own bytes.
    ZT_FIELD(FieldContainer, 3, Pixels, pixels, std::vector<UInt8>);
    /// Bytes held outside the image, borrowed, or null.
    ZT_FIELD(FieldContainer, 4, ExternalPixels, externalPixels, UInt8*) = nullptr;
    static constexpr UInt16 FieldEnd = FieldContainer::FieldEnd + 5;
};

/// A picture of four bytes a pixel (red, green, blue, alpha, colour premultiplied by alpha), rows bottom first and
/// directly behind each other.
class ZTOPENSG_EXPORT Image : public ImageBase
{
    ZT_CONTAINER(Image)

  public:
    /// The pixel format (GL_RGBA) and the data type (GL_UNSIGNED_BYTE) of all images.
    static constexpr UInt32 FormatRGBA = 6408;
    static constexpr Int32 TypeUInt8 = 5121;

    /// Gives the image a size and bytes. It keeps at most four times the memory that its own bytes take.
    ///
    /// \param pixelFormat  FormatRGBA
    /// \param newWidth,newHeight  in pixels; with 0 or a negative value the image has the size and no bytes
    /// \param depth,mipmapCount,frameCount,sideCount  1: one plain picture
    /// \param frameDelay  0.0
    /// \param data  with `allocate`, bytes to copy, or null to leave the image's own bytes as they come; without, bytes
    ///     that the image uses in place, which the caller keeps alive and lets it write to
    /// \param dataType  TypeUInt8
    /// \param allocate  whether the image has bytes of its own
    /// \return whether the image has bytes; for a format, type or extent other than those above it has size 0 by 0 and
    ///     none
    /// \throw std::bad_alloc, std::length_error if the bytes can't be had; the image is then as before
    bool set(UInt32 pixelFormat, Int32 newWidth, Int32 newHeight, Int32 depth, Int32 mipmapCount, Int32 frameCount,
             double frameDelay, UInt8 const* data, Int32 dataType, bool allocate, Int32 sideCount);

    /// `externalPixels` if that isn't null, else the first of `pixels`, else null.
    UInt8* pixelBuffer() { return externalPixels ? externalPixels : pixels.empty() ? nullptr : pixels.data(); }

    /// Whether the image has a size and bytes for it.
    bool isComplete() const;

    /// Tells the containers in `parents`, each with the mask of the field that holds the image, or of all fields where
    /// the entry doesn't say which that is.
    void changed(BitVector mask, UInt32 origin) override;
};

using ImagePtr = FCPtr<Image>;

} // namespace osg::v1
