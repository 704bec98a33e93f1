/// \file
/// The walk over the visible overlays.
#pragma once

#include "OverlayAccess.h"

#include <cstddef>
#include <functional>

namespace ztOverlays
{

/// Calls the callback if a node, which is shown, is an overlay.
template <class Callback>
void visitOne(osg::Node const& node, Callback const& callback)
{
    if (osg::OverlayPtr overlay = osg::dynamicCast<osg::Overlay>(node.core); overlay != osg::NullFC)
        callback(overlay);
}

/// visitVisible() for a tree that may be too deep for recursion.
void visitVisibleDeep(osg::Node const* top, std::function<void(osg::OverlayPtr&)> const& callback);

/// Calls the callback with each visible overlay at and below a top node, which may be null, in the order and under the
/// terms of traverseVisibleOverlays().
/// \param recursion  levels that are visited by recursion, which is the faster way where overlays are many
template <class Callback>
void visitVisible(osg::Node const* top, Callback const& callback, int recursion = 64)
{
    if (recursion == 0)
        return visitVisibleDeep(top, std::cref(callback));
    if (!top || !isShown(*top))
        return;
    visitOne(*top, callback);
    for (std::size_t i = top->children.size(); i-- > 0;)
        if (i < top->children.size()) // the callback may have taken children away
            visitVisible(top->children[i].get(), callback, recursion - 1);
}

} // namespace ztOverlays
