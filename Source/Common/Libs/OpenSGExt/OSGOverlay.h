/// \file
/// The overlay core: a label or a picture that stays fixed in a viewport.
#pragma once

#include "OSGNode.h"
#include "OSGPolygonForeground2.h"
#include "ztOpenSGExt_export.h"

namespace osg::v1
{

class ZTOPENSGEXT_EXPORT OverlayBase : public NodeCore
{
  public:
    /// Values of `contentType`.
    enum
    {
        ContentText = 0,
        ContentImage = 1
    };

    /// Values of `sizeMode`.
    enum
    {
        SizeAbsolute = 0,
        SizeRelative = 1
    };

    // What each update reads comes first in memory, and first of all what the visible walk reads.

    /// The derived polygon, counted; null until the overlay library has made it.
    ZT_FIELD(NodeCore, 11, Foreground, foreground, PolygonForeground2Ptr);
    /// What the overlay shows. Any value but ContentText makes it a picture; stamping resamples ContentImage alone.
    ZT_FIELD(NodeCore, 0, ContentType, contentType, Int32) = ContentText;
    /// Any value but SizeAbsolute makes the size relative; SizeRelative alone renders a text anew for another height.
    ZT_FIELD(NodeCore, 7, SizeMode, sizeMode, Int32) = SizeAbsolute;
    /// Relative: fraction of the target's height. Absolute: font size in points, truncated, of a text; height in
    /// DPI-independent pixels of a picture.
    ZT_FIELD(NodeCore, 8, Size, size, float) = 12.0f;
    /// Whether the picture has to be rendered anew.
    ZT_FIELD(NodeCore, 12, Dirty, dirty, bool) = true;
    /// The picture of a ContentImage overlay, counted: assign it with setRefdCP(). Premultiplied alpha.
    ZT_FIELD(NodeCore, 1, Image, image, ImagePtr);
    /// The point at this fraction of the overlay's size lies on the point at the same fraction of the target's.
    ZT_FIELD(NodeCore, 9, Anchor, anchor, Vec2f);
    /// Shift from there in DPI-independent pixels, x right, y up.
    ZT_FIELD(NodeCore, 10, Offset, offset, Vec2f);
    /// UTF-8, lines separated by byte 10, read up to the first zero byte.
    ZT_FIELD(NodeCore, 2, Text, text, std::string);
    /// Font family name, UTF-8, read up to the first zero byte.
    ZT_FIELD(NodeCore, 3, Font, font, std::string);
    /// Components nominally 0 to 1.
    ZT_FIELD(NodeCore, 4, TextColor, textColor, Color4f) = {1.0f, 1.0f, 1.0f, 1.0f};
    ZT_FIELD(NodeCore, 5, BackgroundColor, backgroundColor, Color3f) = {0.0f, 0.0f, 0.0f};
    /// A colour whose luminance is the background's transparency.
    ZT_FIELD(NodeCore, 6, BackgroundTransparency, backgroundTransparency, Color3f) = {1.0f, 1.0f, 1.0f};
    static constexpr UInt16 FieldEnd = NodeCore::FieldEnd + 13;
};

/// The settings of an overlay. A new one shows white text on a transparent background once it has a `text`.
class ZTOPENSGEXT_EXPORT Overlay : public OverlayBase
{
    ZT_CONTAINER(Overlay)

  public:
    /// Raises `dirty` if the mask names a field that decides the picture, unless it names `dirty` too: the writer of
    /// `dirty` has then said what it is to be. `anchor`, `offset` and `foreground` alone leave it.
    void changed(BitVector mask, UInt32 origin) override;

  protected:
    ~Overlay() override;
};

using OverlayPtr = FCPtr<Overlay>;

} // namespace osg::v1
