/// \file
/// The walk over the visible overlays.
#pragma once

#include "OSGOverlay.h"

namespace ztOverlays
{

inline bool isShown(osg::Node const& node)
{
    return node.travMask == 0xFFFFFFFF;
}

/// Calls the callback with each visible overlay at and below a node, which may be null, in the order and under the
/// terms of traverseVisibleOverlays().
template <class Callback>
void visitVisible(osg::Node const* node, Callback const& callback)
{
    if (!node || !isShown(*node))
        return;
    if (osg::OverlayPtr overlay = osg::dynamicCast<osg::Overlay>(node->core); overlay != osg::NullFC)
        callback(overlay);
    for (std::size_t i = node->children.size(); i-- > 0;)
        if (i < node->children.size()) // the callback may have taken children away
            visitVisible(node->children[i].get(), callback);
}

} // namespace ztOverlays
