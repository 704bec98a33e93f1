#include "ImageSlot.h"
#include "OverlayAccess.h"
#include "Placement.h"
#include "TextRaster.h"
#include "ztOverlayUtils.h"

namespace ztOverlays
{

namespace
{

/// A text needs an image to be drawn into, also where its slot was empty when it became a text.
ImagePtr syncImageToDrawInto(OverlayPtr const& overlay)
{
    ImagePtr image = syncImage(overlay);
    if (image == osg::NullFC && overlay->contentType == osg::Overlay::ContentText)
    {
        image = createBlankImage();
        setImage(overlay->foreground, image);
    }
    return image;
}

bool hasOtherHeight(osg::Overlay const& overlay, ImagePtr const& image, int viewportHeight)
{
    return overlay.sizeMode == osg::Overlay::SizeRelative && image != osg::NullFC &&
           relativePixelHeight(viewportHeight, overlay.size) != image->height;
}

} // namespace

void updateOverlayImage(OverlayPtr const& overlay, int viewportWidth, int viewportHeight)
{
    if (overlay == osg::NullFC)
        return;
    if (overlay->foreground == osg::NullFC)
        initOverlay(overlay);
    ImagePtr const image = syncImageToDrawInto(overlay);
    if (overlay->contentType == osg::Overlay::ContentText && !renderText(*overlay, viewportHeight, image))
    {
        clearImage(image);
        return;
    }
    overlay->dirty = false;
    osg::markChanged(overlay, osg::OverlayBase::DirtyFieldMask);
    updateOverlayPosition(overlay, viewportWidth, viewportHeight);
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
    ImagePtr const image = complete ? getImage(overlay->foreground) : ImagePtr();
    if (overlay->dirty || !complete || hasOtherHeight(*overlay, image, viewportHeight))
        updateOverlayImage(overlay, viewportWidth, viewportHeight);
    else
        updateOverlayPosition(overlay, viewportWidth, viewportHeight);
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
