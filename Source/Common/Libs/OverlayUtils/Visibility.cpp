#include "OverlayAccess.h"
#include "VisibleWalk.h"
#include "ztNodeUtils.h"
#include "ztOverlayUtils.h"

#include <utility>
#include <vector>

namespace ztOverlays
{

void visitVisibleDeep(osg::Node const* top, std::function<void(osg::OverlayPtr&)> const& callback)
{
    // Each node whose children are being visited, with the number of those that are left.
    std::vector<std::pair<osg::Node const*, std::size_t>> levels;
    auto const visit = [&](osg::Node const* node) {
        if (!node || !isShown(*node))
            return;
        visitOne(*node, callback);
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

void updateVisibility(osg::NodePtr const& node)
{
    OverlayPtr const overlay = overlayOf(node);
    if (overlay == osg::NullFC || overlay->foreground == osg::NullFC)
        return;
    overlay->foreground->active = isShown(*node) && !ztNodeUtils::hasInActiveParent(node);
    osg::markChanged(overlay->foreground, osg::ForegroundBase::ActiveFieldMask);
}

void traverseVisibleOverlays(std::function<void(OverlayPtr&)> const& callback)
{
    visitVisible(getOverlayPoolRoot().get(), callback);
}

void getAllVisibleOverlays(std::vector<OverlayPtr>& overlays)
{
    std::size_t const before = overlays.size();
    try
    {
        visitVisible(getOverlayPoolRoot().get(), [&overlays](OverlayPtr& overlay) { overlays.push_back(overlay); });
    }
    catch (...)
    {
        overlays.resize(before);
        throw;
    }
}

} // namespace ztOverlays
