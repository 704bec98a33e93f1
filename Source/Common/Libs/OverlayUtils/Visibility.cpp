#include "OverlayAccess.h"
#include "VisibleWalk.h"
#include "ztNodeUtils.h"
#include "ztOverlayUtils.h"

namespace ztOverlays
{

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
