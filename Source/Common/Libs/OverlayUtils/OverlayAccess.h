/// \file
/// The overlay of a node.
#pragma once

#include "OSGOverlay.h"

namespace ztOverlays
{

/// The node's core as an overlay; null for a null node and for any other core.
inline osg::OverlayPtr overlayOf(osg::NodePtr const& node)
{
    return node != osg::NullFC ? osg::dynamicCast<osg::Overlay>(node->core) : osg::OverlayPtr();
}

} // namespace ztOverlays
