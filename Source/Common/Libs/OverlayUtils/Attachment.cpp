#include "VisibleWalk.h"
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

/// Counts how many entries of each foreground are to be removed: as many as the walk visits it.
using ForegroundCounts = std::unordered_map<osg::FieldContainer*, std::size_t>;

/// Removes the first entries of each foreground from `first` on.
void removeFirst(std::vector<osg::ForegroundPtr>& entries, std::ptrdiff_t first, ForegroundCounts& counts)
{
    if (counts.empty())
        return;
    auto const isToGo = [&counts](osg::ForegroundPtr const& entry) {
        auto const found = counts.find(entry.get());
        if (found == counts.end() || found->second == 0)
            return false;
        --found->second;
        return true;
    };
    entries.erase(std::remove_if(entries.begin() + first, entries.end(), isToGo), entries.end());
}

} // namespace

void addOverlays(ViewportPtr& viewport)
{
    if (!hasOverlays() || viewport == osg::NullFC)
        return;
    auto& entries = viewport->foregrounds;
    std::size_t const before = entries.size();
    try
    {
        visitVisible(getOverlayPoolRoot().get(),
                     [&entries](OverlayPtr& overlay) { entries.push_back(overlay->foreground); });
    }
    catch (...)
    {
        entries.resize(before);
        throw;
    }
    std::rotate(entries.begin(), entries.begin() + std::ptrdiff_t(before), entries.end());
    osg::markChanged(viewport, osg::ViewportBase::ForegroundsFieldMask);
}

void removeOverlays(ViewportPtr& viewport)
{
    if (!hasOverlays() || viewport == osg::NullFC)
        return;
    auto& entries = viewport->foregrounds;
    // Mostly the list begins with the visible ones, in their order.
    std::size_t matching = 0;
    ForegroundCounts others;
    visitVisible(getOverlayPoolRoot().get(), [&](OverlayPtr& overlay) {
        if (others.empty() && matching < entries.size() && entries[matching] == overlay->foreground)
            ++matching;
        else
            ++others[overlay->foreground.get()];
    });
    removeFirst(entries, std::ptrdiff_t(matching), others);
    entries.erase(entries.begin(), entries.begin() + std::ptrdiff_t(matching));
    osg::markChanged(viewport, osg::ViewportBase::ForegroundsFieldMask);
}

void drawOverlays(osg::DrawActionBase* action, osg::Viewport* viewport)
{
    visitVisible(getOverlayPoolRoot().get(), [=](OverlayPtr& overlay) { overlay->foreground->draw(action, viewport); });
}

} // namespace ztOverlays
