#include "OverlayAccess.h"
#include "ztNodeUtils.h"
#include "ztOverlayUtils.h"

namespace ztOverlays
{

namespace
{

bool isShown(osg::NodePtr const& node)
{
    return node->travMask == 0xFFFFFFFF;
}

void visit(osg::NodePtr node, std::function<void(OverlayPtr&)> const& callback)
{
    if (node == osg::NullFC || !isShown(node))
        return;
    OverlayPtr overlay = overlayOf(node);
    if (overlay != osg::NullFC)
        callback(overlay);
    for (std::size_t i = node->children.size(); i-- > 0;)
        if (i < node->children.size()) // the callback may have taken children away
            visit(node->children[i], callback);
}

} // namespace

void updateVisibility(osg::NodePtr const& node)
{
    OverlayPtr const overlay = overlayOf(node);
    if (overlay == osg::NullFC || overlay->foreground == osg::NullFC)
        return;
    overlay->foreground->active = isShown(node) && !ztNodeUtils::hasInActiveParent(node);
    osg::markChanged(overlay->foreground, osg::ForegroundBase::ActiveFieldMask);
}

void traverseVisibleOverlays(std::function<void(OverlayPtr&)> const& callback)
{
    visit(getOverlayPoolRoot(), callback);
}

void getAllVisibleOverlays(std::vector<OverlayPtr>& overlays)
{
    traverseVisibleOverlays([&overlays](OverlayPtr& overlay) { overlays.push_back(overlay); });
}

} // namespace ztOverlays
