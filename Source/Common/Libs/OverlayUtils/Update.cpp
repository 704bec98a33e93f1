#include "Construction.h"
#include "ImageSlot.h"
#include "OverlayAccess.h"
#include "Placement.h"
#include "TextRaster.h"
#include "ztOverlayUtils.h"

namespace ztOverlays
{

namespace
{

/// Brings the picture up to date. \return whether there is something to show
bool render(OverlayPtr const& overlay, int viewportHeight)
{
    ImagePtr image = syncImage(overlay);
    if (!isText(*overlay))
        return true;
    // The slot was empty when the overlay became a text.
    if (image == osg::NullFC)
        image = setBlankImage(overlay->foreground);
    if (image == osg::NullFC)
        return false;
    bool const isDrawn = renderText(*overlay, viewportHeight, image);
    if (!isDrawn)
        clearImage(image);
    return isDrawn;
}

void renderAndPlace(OverlayPtr const& overlay, int viewportWidth, int viewportHeight)
{
    if (overlay->foreground == osg::NullFC)
        initOverlay(overlay);
    if (!render(overlay, viewportHeight))
        return;
    overlay->dirty = false;
    osg::markChanged(overlay, osg::OverlayBase::DirtyFieldMask);
    updateOverlayPosition(overlay, viewportWidth, viewportHeight);
}

bool hasOtherHeight(osg::Overlay const& overlay, osg::Image const* image, int viewportHeight)
{
    return overlay.sizeMode == osg::Overlay::SizeRelative && image &&
           relativePixelHeight(viewportHeight, overlay.size) != image->height;
}

} // namespace

void updateOverlayImage(OverlayPtr const& overlay, int viewportWidth, int viewportHeight)
{
    if (overlay == osg::NullFC)
        return;
    ImagePtr const shown = overlay->foreground != osg::NullFC ? getImage(overlay->foreground) : ImagePtr();
    try
    {
        renderAndPlace(overlay, viewportWidth, viewportHeight);
    }
    catch (...)
    {
        if (overlay->foreground != osg::NullFC && getImage(overlay->foreground) != shown)
        {
            overlay->dirty = true; // what has taken its place is blank
            osg::markChanged(overlay, osg::OverlayBase::DirtyFieldMask);
        }
        throw;
    }
}

void updateOverlayImage(osg::NodePtr const& node, ViewportPtr const& viewport)
{
    if (viewport == osg::NullFC)
        return;
    int const width = viewport->getPixelWidth();
    int const height = viewport->getPixelHeight();
    updateOverlayImage(overlayOf(node), width, height);
}

void updateOverlay(OverlayPtr const& overlay, int viewportWidth, int viewportHeight)
{
    if (overlay == osg::NullFC)
        return;
    bool const complete = overlay->foreground != osg::NullFC;
    osg::Image const* const image = complete ? getImage(overlay->foreground).get() : nullptr;
    if (overlay->dirty || !complete || hasOtherHeight(*overlay, image, viewportHeight))
        updateOverlayImage(overlay, viewportWidth, viewportHeight);
    else
        placeOverlay(*overlay, isInSync(*overlay, image) ? image : syncImage(overlay).get(), viewportWidth,
                     viewportHeight);
}

void updateOverlay(osg::NodePtr const& node, ViewportPtr const& viewport)
{
    if (node == osg::NullFC || viewport == osg::NullFC)
        return;
    int width, height;
    getViewportSize(viewport, width, height);
    updateOverlay(overlayOf(node), width, height);
}

void updateAllOverlays(ViewportPtr const& viewport)
{
    osg::traverse(getOverlayPoolRoot(), [&viewport](osg::NodePtr const& node) {
        updateOverlay(node, viewport);
        return osg::Action::Continue;
    });
}

} // namespace ztOverlays
