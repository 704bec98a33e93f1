#include "ztOverlayUtils.h"

#include <algorithm>
#include <unordered_map>

namespace ztOverlays
{

namespace
{

bool hasOverlays()
{
    return getOverlayPoolRoot() != osg::NullFC && !getOverlayPoolRoot()->children.empty();
}

/// In the order of the visible walk.
std::vector<osg::ForegroundPtr> visibleForegrounds()
{
    std::vector<osg::ForegroundPtr> foregrounds;
    foregrounds.reserve(getOverlayPoolRoot()->children.size());
    traverseVisibleOverlays([&foregrounds](OverlayPtr& overlay) { foregrounds.push_back(overlay->foreground); });
    return foregrounds;
}

} // namespace

void addOverlays(ViewportPtr& viewport)
{
    if (!hasOverlays() || viewport == osg::NullFC)
        return;
    std::vector<osg::ForegroundPtr> const added = visibleForegrounds();
    auto& entries = viewport->foregrounds;
    entries.insert(entries.begin(), added.begin(), added.end());
    osg::markChanged(viewport, osg::ViewportBase::ForegroundsFieldMask);
}

void removeOverlays(ViewportPtr& viewport)
{
    if (!hasOverlays() || viewport == osg::NullFC)
        return;
    std::vector<osg::ForegroundPtr> const removed = visibleForegrounds();
    auto& entries = viewport->foregrounds;
    // Mostly the list begins with them, in their order.
    auto const [rest, kept] = std::mismatch(removed.begin(), removed.end(), entries.begin(), entries.end());
    // How many entries of each other foreground are to go: as many as the walk visits it, the first ones.
    std::unordered_map<osg::FieldContainer*, std::size_t> toRemove;
    toRemove.reserve(std::size_t(removed.end() - rest));
    for (auto it = rest; it != removed.end(); ++it)
        ++toRemove[it->get()];
    auto const isToGo = [&toRemove](osg::ForegroundPtr const& entry) {
        auto const found = toRemove.find(entry.get());
        return found != toRemove.end() && found->second > 0 && found->second-- > 0;
    };
    entries.erase(std::remove_if(kept, entries.end(), isToGo), entries.end());
    entries.erase(entries.begin(), kept);
    osg::markChanged(viewport, osg::ViewportBase::ForegroundsFieldMask);
}

void drawOverlays(osg::DrawActionBase* action, osg::Viewport* viewport)
{
    traverseVisibleOverlays([=](OverlayPtr& overlay) { overlay->foreground->draw(action, viewport); });
}

} // namespace ztOverlays
