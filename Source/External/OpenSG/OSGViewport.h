/// \file
/// Viewports.
#pragma once

#include "OSGCamera.h"
#include "OSGForeground.h"

namespace osg::v1
{

class ZTOPENSG_EXPORT ViewportBase : public FieldContainer
{
  public:
    /// Counted.
    ZT_FIELD(FieldContainer, 0, Camera, camera, CameraPtr);
    /// What is shown in front of the scene, in drawing order. The entries hold no references: before a foreground is
    /// destroyed, Viewport::subForeground() takes it out of each viewport that it stands in.
    ZT_FIELD(FieldContainer, 1, Foregrounds, foregrounds, std::vector<ForegroundPtr>);
    /// Size in pixels.
    ZT_FIELD(FieldContainer, 2, PixelWidth, pixelWidth, Int32) = 0;
    ZT_FIELD(FieldContainer, 3, PixelHeight, pixelHeight, Int32) = 0;
    /// The lower left corner, in pixels of the window or image.
    ZT_FIELD(FieldContainer, 4, PixelLeft, pixelLeft, Int32) = 0;
    ZT_FIELD(FieldContainer, 5, PixelBottom, pixelBottom, Int32) = 0;
    static constexpr UInt16 FieldEnd = FieldContainer::FieldEnd + 6;
};

/// A part of a layout, in its pixels.
struct LayoutArea
{
    float left, bottom, right, top;
};

/// A part of a window, or of an image, that shows a scene through a camera.
class ZTOPENSG_EXPORT Viewport : public ViewportBase
{
    ZT_CONTAINER(Viewport)

  public:
    virtual Int32 getPixelWidth() { return pixelWidth; }
    virtual Int32 getPixelHeight() { return pixelHeight; }

    /// The part of the layout of foregrounds that fills the viewport.
    ///
    /// It is the tile of the first TileCameraDecorator among the camera decorators. Without one it is the whole layout,
    /// as large as the viewport; a sheared stereo decorator directly over a perspective camera makes it wider by the
    /// camera's `aspect` if that is above 1 and higher by its inverse if it is below, cut to whole pixels.
    LayoutArea getLayoutArea();

    /// Draws the active foregrounds in list order, as a frame of the action, which must not be null; null entries are
    /// passed over.
    ///
    /// The action may edit `foregrounds` while it draws, and destroy what it took out. At each place of the list in
    /// turn what stands there by then is drawn, and no more places than the list had at first: behind a removed entry
    /// one moves up and isn't drawn, behind an added one it is drawn once more.
    void render(DrawActionBase* action);

    /// Takes every entry of a foreground out of `foregrounds`, or every null one, and marks the list if there was any.
    /// The others keep their order.
    void subForeground(ForegroundPtr const& foreground);

  protected:
    ~Viewport() override;
};

using ViewportPtr = FCPtr<Viewport>;

} // namespace osg::v1
