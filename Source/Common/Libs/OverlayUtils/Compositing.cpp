#include "ImageSlot.h"
#include "Placement.h"
#include "ztImage.h"
#include "ztNumeric.h"
#include "ztOverlayUtils.h"

namespace ztOverlays
{

namespace
{

/// A reference held while a scope lasts.
class HeldImage
{
  public:
    explicit HeldImage(ImagePtr const& image) : _image(image) { osg::addRef(_image); }
    HeldImage(HeldImage const&) = delete;
    HeldImage& operator=(HeldImage const&) = delete;
    ~HeldImage() { osg::subRef(_image); }

    /// Holds another image in the place of this one.
    void replace(ImagePtr const& image)
    {
        osg::addRef(image);
        osg::subRef(_image);
        _image = image;
    }

    ImagePtr const& get() const { return _image; }

  private:
    ImagePtr _image;
};

/// A coordinate below 0 counts from the far edge.
float fromFarEdge(float coordinate, int size)
{
    return coordinate < 0.0f ? (float(size) + coordinate) + 1.0f : coordinate;
}

/// Resamples the held image of a picture to the overlay's size, unless it has it.
void resample(HeldImage& held, int width, int height)
{
    ImagePtr const& image = held.get();
    if (image->width == width && image->height == height)
        return;
    ImagePtr resampled = osg::create<osg::Image>();
    ztImageBilinearFilter const filter;
    ztImage::scale(image, width, height, resampled, filter);
    held.replace(resampled);
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
    ImagePtr const synced = syncImage(overlay);
    PixelSize const size = overlayPixelSize(*overlay, synced.get(), height);
    osg::Vec3f const texCoord = foreground.texCoords.front();

    HeldImage held(shown);
    if (overlay->contentType == osg::Overlay::ContentImage)
        resample(held, ztNumeric::truncate(size.width), ztNumeric::truncate(size.height));
    float const x = fromFarEdge(corner.x, width) - texCoord.x * size.width;
    float const y = fromFarEdge(corner.y, height) - texCoord.y * size.height;
    ztImage::blendImage(target, held.get(), {x, y, 0.0f}, {1.0f, 1.0f, 1.0f, 1.0f}, 1.0f, 0.0f);
}

} // namespace

void blendOverlaysOntoImage(std::vector<OverlayPtr> const& overlays, ImagePtr const& image, ViewportPtr const& viewport)
{
    if (image == osg::NullFC)
        return;
    int const width = image->width;
    int const height = image->height;
    for (OverlayPtr const& overlay : overlays)
        updateOverlay(overlay, width, height);
    for (OverlayPtr const& overlay : overlays)
        blendOverlay(overlay, image, width, height);

    if (viewport == osg::NullFC)
        return;
    for (OverlayPtr const& overlay : overlays)
    {
        int const viewportWidth = viewport->getPixelWidth();
        int const viewportHeight = viewport->getPixelHeight();
        updateOverlay(overlay, viewportWidth, viewportHeight);
    }
}

} // namespace ztOverlays
