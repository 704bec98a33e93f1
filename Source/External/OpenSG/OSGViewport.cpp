#include "OSGViewport.h"

#include "OSGDrawAction.h"

#include <algorithm>
#include <cmath>

namespace osg::v1
{

ZT_CONTAINER_TYPE(Viewport, FieldContainer);

Viewport::~Viewport()
{
    subRef(camera);
}

// The overlay library computes the size of the same layout by its own rules, and this layer can't ask it.
LayoutArea Viewport::getLayoutArea()
{
    if (auto const tile = findTile(camera); tile != NullFC)
    {
        float const width = float(tile->fullWidth), height = float(tile->fullHeight);
        return {tile->left * width, tile->bottom * height, tile->right * width, tile->top * height};
    }
    float const factor = stereoAspect(camera);
    float const width = float(getPixelWidth()), height = float(getPixelHeight());
    return {0.0f, 0.0f, factor > 1.0f ? std::trunc(factor * width) : width,
            factor < 1.0f ? std::trunc(height / factor) : height};
}

void Viewport::render(DrawActionBase* action)
{
    DrawFrame const frame(*action);
    std::size_t const places = foregrounds.size();
    for (std::size_t i = 0; i < std::min(places, foregrounds.size()); ++i)
        if (ForegroundPtr const foreground = foregrounds[i]; foreground != NullFC && foreground->active)
            foreground->draw(action, this);
}

void Viewport::subForeground(ForegroundPtr const& foreground)
{
    ForegroundPtr const removed = foreground; // it may be an entry
    auto const kept = std::remove(foregrounds.begin(), foregrounds.end(), removed);
    if (kept == foregrounds.end())
        return;
    foregrounds.erase(kept, foregrounds.end());
    markChanged(ViewportPtr(this), ForegroundsFieldMask);
}

} // namespace osg::v1
