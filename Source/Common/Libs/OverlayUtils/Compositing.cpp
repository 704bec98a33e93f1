#include "ImageSlot.h"
#include "OSGRefPtr.h"
#include "Placement.h"
#include "ztImage.h"
#include "ztNumeric.h"
#include "ztOverlayUtils.h"

#include <exception>

namespace ztOverlays
{

namespace
{

/// A coordinate below 0 counts from the far edge.
float fromFarEdge(float coordinate, int size)
{
    return coordinate < 0.0f ? (float(size) + coordinate) + 1.0f : coordinate;
}

/// Resamples a held image to a size, unless it has it.
void resample(osg::RefPtr<osg::Image>& image, int width, int height)
{
    if (image->width == width && image->height == height)
        return;
    osg::NewPtr<osg::Image> resampled(osg::create<osg::Image>());
    ztImage::scale(image, width, height, resampled, ztImageBilinearFilter());
    image = osg::RefPtr<osg::Image>(resampled);
}

/// Whether only the overlay's slot holds an image, and will hold another.
bool isAboutToDrop(OverlayPtr const& overlay, ImagePtr const& image)
{
    return overlay != osg::NullFC && overlay->foreground != osg::NullFC && image->getRefCount() == 1 &&
           getImage(overlay->foreground) == image && !isInSync(*overlay, image.get());
}

void blendOverlay(OverlayPtr const& overlay, ImagePtr const& target, int width, int height)
{
    if (overlay == osg::NullFC)
        return;
    osg::PolygonForeground2& foreground = *overlay->foreground;
    ImagePtr const shown = getImage(overlay->foreground);
    if (shown == osg::NullFC || foreground.positions.empty() || foreground.texCoords.empty())
        return;
    osg::Pnt2f const corner = foreground.positions.front();
    osg::RefPtr<osg::Image> picture(shown);
    // It takes effect where the overlay shares its foreground with another of the list.
    ImagePtr const synced = syncImage(overlay);
    PixelSize const size = overlayPixelSize(*overlay, synced.get(), height);
    osg::Vec3f const texCoord = foreground.texCoords.front();

    if (isPicture(*overlay))
        resample(picture, ztNumeric::truncate(size.width), ztNumeric::truncate(size.height));
    float const x = fromFarEdge(corner.x, width) - texCoord.x * size.width;
    float const y = fromFarEdge(corner.y, height) - texCoord.y * size.height;
    ztImage::blendImage(target, picture, {x, y, 0.0f}, {1.0f, 1.0f, 1.0f, 1.0f}, 1.0f, 0.0f);
}

/// Lays overlays out for a target and blends them on.
void stamp(std::vector<OverlayPtr> const& overlays, ImagePtr const& target)
{
    int const width = target->width;
    int const height = target->height;
    osg::RefPtr<osg::Image> held;
    for (OverlayPtr const& overlay : overlays)
    {
        if (isAboutToDrop(overlay, target))
            held = target;
        updateOverlay(overlay, width, height);
    }
    for (OverlayPtr const& overlay : overlays)
        blendOverlay(overlay, target, width, height);
}

} // namespace

void blendOverlaysOntoImage(std::vector<OverlayPtr> const& overlays, ImagePtr const& image, ViewportPtr const& viewport)
{
    if (image == osg::NullFC)
        return;
    std::exception_ptr failure;
    auto const attempt = [&failure](auto const& step) {
        try
        {
            step();
        }
        catch (...)
        {
            if (!failure)
                failure = std::current_exception();
        }
    };
    attempt([&, target = ImagePtr(image)] { stamp(overlays, target); });
    if (viewport != osg::NullFC)
        for (OverlayPtr const& overlay : overlays)
            attempt([&] {
                int const width = viewport->getPixelWidth();
                int const height = viewport->getPixelHeight();
                updateOverlay(overlay, width, height);
            });
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace ztOverlays
