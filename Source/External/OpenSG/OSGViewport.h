/// \file
/// Viewports.
#pragma once

#include "OSGCamera.h"
#include "OSGForeground.h"

namespace osg
{

class OPENSG_EXPORT ViewportBase : public FieldContainer
{
  public:
    /// Counted.
    OSG_FIELD(FieldContainer, 0, Camera, camera, CameraPtr);
    /// What is shown in front of the scene, in drawing order. The entries hold no references: a foreground
    /// leaves the list before it is destroyed.
    OSG_FIELD(FieldContainer, 1, Foregrounds, foregrounds, std::vector<ForegroundPtr>);
    /// Size in pixels.
    OSG_FIELD(FieldContainer, 2, PixelWidth, pixelWidth, Int32) = 0;
    OSG_FIELD(FieldContainer, 3, PixelHeight, pixelHeight, Int32) = 0;
    static constexpr UInt16 FieldEnd = FieldContainer::FieldEnd + 4;
};

/// A part of a window, or of an image, that shows a scene through a camera.
class OPENSG_EXPORT Viewport : public ViewportBase
{
    OSG_CONTAINER(Viewport)

  public:
    virtual Int32 getPixelWidth() { return pixelWidth; }
    virtual Int32 getPixelHeight() { return pixelHeight; }

  protected:
    ~Viewport() override;
};

using ViewportPtr = FCPtr<Viewport>;

} // namespace osg
