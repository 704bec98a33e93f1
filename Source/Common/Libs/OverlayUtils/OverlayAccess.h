/// \file
/// What an overlay and its node say of themselves.
#pragma once

#include "OSGOverlay.h"

namespace ztOverlays
{

/// The node's core as an overlay; null for a null node and for any other core.
inline osg::OverlayPtr overlayOf(osg::NodePtr const& node)
{
    return node != osg::NullFC ? osg::dynamicCast<osg::Overlay>(node->core) : osg::OverlayPtr();
}

/// Anything but a text shows `image`, at its own size.
inline bool isText(osg::Overlay const& overlay)
{
    return overlay.contentType == osg::Overlay::ContentText;
}

/// Whether it shows `image` at the size that `sizeMode` and `size` ask for, when stamped as well.
inline bool isPicture(osg::Overlay const& overlay)
{
    return overlay.contentType == osg::Overlay::ContentImage;
}

/// The `travMask` of a shown node. Any other value hides it.
constexpr osg::UInt32 shownMask = osg::Node::AllTravMask;

inline bool isShown(osg::Node const& node)
{
    return node.travMask == shownMask;
}

} // namespace ztOverlays
