#include "OverlayNodes.h"

#include "Picture.h"
#include "ztOverlayUtils.h"

namespace ztExamples
{

namespace
{

/// Writes a field if there is a value for it. \return the field's mask if so
template <class T>
osg::BitVector write(T& field, std::optional<T> const& value, osg::BitVector mask)
{
    if (!value)
        return 0;
    field = *value;
    return mask;
}

osg::BitVector writeImage(osg::Overlay& overlay, std::optional<QImage> const& pixels)
{
    if (!pixels)
        return 0;
    auto const image = osg::create<osg::Image>();
    image->set(osg::Image::FormatRGBA, pixels->width(), pixels->height(), 1, 1, 1, 0.0, pixels->constBits(),
               osg::Image::TypeUInt8, true, 1);
    osg::setRefdCP(overlay.image, image);
    return osg::Overlay::ImageFieldMask;
}

osg::BitVector writeFields(osg::Overlay& overlay, OverlayEntry const& entry)
{
    using O = osg::Overlay;
    return write(overlay.contentType, entry.contentType, O::ContentTypeFieldMask) | writeImage(overlay, entry.image) |
           write(overlay.font, entry.font, O::FontFieldMask) |
           write(overlay.textColor, entry.textColor, O::TextColorFieldMask) |
           write(overlay.backgroundColor, entry.backgroundColor, O::BackgroundColorFieldMask) |
           write(overlay.backgroundTransparency, entry.backgroundTransparency, O::BackgroundTransparencyFieldMask) |
           write(overlay.sizeMode, entry.sizeMode, O::SizeModeFieldMask) |
           write(overlay.size, entry.size, O::SizeFieldMask) | write(overlay.anchor, entry.anchor, O::AnchorFieldMask) |
           write(overlay.offset, entry.offset, O::OffsetFieldMask);
}

void hide(osg::NodePtr const& node)
{
    node->travMask = 0;
    osg::markChanged(node, osg::Node::TravMaskFieldMask);
    ztOverlays::updateVisibility(node);
}

} // namespace

osg::NodePtr createOverlayNode(osg::NodePtr const& parent, OverlayEntry const& entry)
{
    osg::NodePtr const node = ztOverlays::createOverlay(parent);
    auto const overlay = osg::dynamicCast<osg::Overlay>(node->core);
    osg::markChanged(overlay, writeFields(*overlay, entry));
    if (entry.name)
        osg::setName(node, *entry.name);
    if (!entry.visible.value_or(true))
        hide(node);
    return node;
}

void setText(osg::OverlayPtr const& overlay, std::string const& text)
{
    if (overlay->text == text)
        return;
    overlay->text = text;
    osg::markChanged(overlay, osg::Overlay::TextFieldMask);
}

} // namespace ztExamples
