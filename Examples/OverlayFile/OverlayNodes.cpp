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
    osg::setRefdCP(overlay.image, createImage(*pixels));
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

/// The anchor holds for the padded box.
osg::Vec2f offsetOfText(OverlayEntry const& entry)
{
    osg::Vec2f const zero = {0.0f, 0.0f}, offset = entry.offset.value_or(zero), anchor = entry.anchor.value_or(zero),
                     padding = entry.padding.value_or(zero);
    return {offset.x + padding.x * (1.0f - 2.0f * anchor.x), offset.y + padding.y * (1.0f - 2.0f * anchor.y)};
}

/// Of a text that is shown in front of its background.
OverlayEntry withoutBackground(OverlayEntry text)
{
    text.offset = offsetOfText(text);
    text.backgroundTransparency = {1.0f, 1.0f, 1.0f};
    text.shadow.reset();
    text.padding.reset();
    text.visible.reset();
    return text;
}

/// What an entry consists of, the node's own part first.
std::vector<OverlayEntry> partsOf(OverlayEntry const& entry)
{
    OverlayEntry made;
    made.contentType = contentGuide;
    if (entry.contentType == contentGuide)
    {
        std::vector<OverlayEntry> parts(layOut(entry.guide, {1, 1}, {1.0, 1.0}).size(), made);
        parts.front() = entry;
        return parts;
    }
    if (!entry.shadow && !entry.padding)
        return {entry};
    std::vector<OverlayEntry> parts = {made, withoutBackground(entry)};
    parts.front().name = entry.name;
    parts.front().visible = entry.visible;
    if (entry.shadow)
        parts.push_back(made);
    return parts;
}

osg::NodePtr createNode(osg::NodePtr const& parent, OverlayEntry const& entry)
{
    osg::NodePtr const node = ztOverlays::createOverlay(parent);
    osg::OverlayPtr const overlay = overlayOf(node);
    osg::markChanged(overlay, writeFields(*overlay, entry));
    if (entry.vectorPicture)
        overlay->contentType = contentGuide; // isn't to be resampled either
    if (entry.name)
        osg::setName(node, *entry.name);
    if (!entry.visible.value_or(true))
        hide(node);
    return node;
}

} // namespace

osg::NodePtr createOverlayNode(osg::NodePtr const& parent, OverlayEntry const& entry)
{
    std::vector<OverlayEntry> const parts = partsOf(entry);
    osg::NodePtr const node = createNode(parent, parts.front());
    for (std::size_t i = 1; i < parts.size(); ++i)
        createNode(node, parts[i]);
    return node;
}

osg::OverlayPtr overlayOf(osg::NodePtr const& node)
{
    return osg::dynamicCast<osg::Overlay>(node->core);
}

osg::OverlayPtr contentOf(osg::NodePtr const& node)
{
    return overlayOf(node->children.empty() ? node : node->children.front());
}

void setText(osg::OverlayPtr const& overlay, std::string const& text)
{
    if (overlay->text == text)
        return;
    overlay->text = text;
    osg::markChanged(overlay, osg::Overlay::TextFieldMask);
}

void setPicture(osg::OverlayPtr const& overlay, OverlayEntry const& entry)
{
    using O = osg::Overlay;
    osg::setRefdCP(overlay->image, entry.image ? createImage(*entry.image) : osg::ImagePtr());
    overlay->contentType = entry.vectorPicture ? contentGuide : osg::Int32(O::ContentImage);
    overlay->sizeMode = entry.sizeMode.value_or(O::SizeAbsolute);
    overlay->size = entry.size.value_or(12.0f);
    osg::markChanged(overlay, O::ImageFieldMask | O::ContentTypeFieldMask | O::SizeModeFieldMask | O::SizeFieldMask);
}

} // namespace ztExamples
