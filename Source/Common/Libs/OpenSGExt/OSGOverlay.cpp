#include "OSGOverlay.h"

namespace osg::v1
{

namespace
{
constexpr BitVector pictureFields =
    OverlayBase::ContentTypeFieldMask | OverlayBase::ImageFieldMask | OverlayBase::TextFieldMask |
    OverlayBase::FontFieldMask | OverlayBase::TextColorFieldMask | OverlayBase::BackgroundColorFieldMask |
    OverlayBase::BackgroundTransparencyFieldMask | OverlayBase::SizeModeFieldMask | OverlayBase::SizeFieldMask;
}

ZT_CONTAINER_TYPE(Overlay, NodeCore);

Overlay::~Overlay()
{
    subRef(image);
    subRef(foreground);
}

void Overlay::changed(BitVector mask, UInt32 origin)
{
    OverlayBase::changed(mask, origin);
    if ((mask & pictureFields) && !(mask & DirtyFieldMask))
        dirty = true;
}

} // namespace osg::v1
