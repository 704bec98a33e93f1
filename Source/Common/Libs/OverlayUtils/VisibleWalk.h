/// \file
/// The walk over the visible overlays.
#pragma once

#include "OSGOverlay.h"

#include <cstddef>
#include <memory_resource>
#include <utility>
#include <vector>

namespace ztOverlays
{

inline bool isShown(osg::Node const& node)
{
    return node.travMask == 0xFFFFFFFF;
}

/// Calls the callback with each visible overlay at and below a top node, which may be null, in the order and under the
/// terms of traverseVisibleOverlays().
template <class Callback>
void visitVisible(osg::Node const* top, Callback const& callback)
{
    // Each node whose children are being visited, with the number of those that are left.
    using Levels = std::pmr::vector<std::pair<osg::Node const*, std::size_t>>;
    constexpr std::size_t room = 64;
    alignas(Levels::value_type) std::byte memory[room * sizeof(Levels::value_type)];
    std::pmr::monotonic_buffer_resource resource(memory, sizeof(memory));
    Levels levels(&resource);
    levels.reserve(room);
    auto const visit = [&](osg::Node const* node) {
        if (!node || !isShown(*node))
            return;
        if (osg::OverlayPtr overlay = osg::dynamicCast<osg::Overlay>(node->core); overlay != osg::NullFC)
            callback(overlay);
        if (!node->children.empty())
            levels.emplace_back(node, node->children.size());
    };
    visit(top);
    while (!levels.empty())
    {
        auto& [node, left] = levels.back();
        if (left == 0)
            levels.pop_back();
        else if (--left < node->children.size()) // the callback may have taken children away
            visit(node->children[left].get());
    }
}

} // namespace ztOverlays
