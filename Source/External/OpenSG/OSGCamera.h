/// \file
/// Cameras, as far as the size of a picture depends on them.
#pragma once

#include "OSGFieldContainer.h"

namespace osg::v1
{

/// The base of all cameras.
class OPENSG_EXPORT Camera : public FieldContainer
{
    OSG_ABSTRACT_CONTAINER(Camera)
};

using CameraPtr = FCPtr<Camera>;

class OPENSG_EXPORT PerspectiveCameraBase : public Camera
{
  public:
    /// Under a sheared stereo decorator: how many times wider than the viewport's pixels the layout of foregrounds is,
    /// or, below 1, by the inverse of how many times higher.
    OSG_FIELD(Camera, 0, Aspect, aspect, float) = 1.0f;
    static constexpr UInt16 FieldEnd = Camera::FieldEnd + 1;
};

class OPENSG_EXPORT PerspectiveCamera : public PerspectiveCameraBase
{
    OSG_CONTAINER(PerspectiveCamera)
};

using PerspectiveCameraPtr = FCPtr<PerspectiveCamera>;

class OPENSG_EXPORT CameraDecoratorBase : public Camera
{
  public:
    /// The camera that this one wraps, counted; null for none. A chain of decorators must be finite.
    OSG_FIELD(Camera, 0, Decoratee, decoratee, CameraPtr);
    static constexpr UInt16 FieldEnd = Camera::FieldEnd + 1;
};

/// The base of cameras that change what another camera does.
class OPENSG_EXPORT CameraDecorator : public CameraDecoratorBase
{
    OSG_ABSTRACT_CONTAINER(CameraDecorator)

  protected:
    ~CameraDecorator() override;
};

using CameraDecoratorPtr = FCPtr<CameraDecorator>;

/// One eye of a stereo pair.
class OPENSG_EXPORT ShearedStereoCameraDecorator : public CameraDecorator
{
    OSG_CONTAINER(ShearedStereoCameraDecorator)
};

using ShearedStereoCameraDecoratorPtr = FCPtr<ShearedStereoCameraDecorator>;

class OPENSG_EXPORT TileCameraDecoratorBase : public CameraDecorator
{
  public:
    /// Size in pixels of the whole image that the tile is part of.
    OSG_FIELD(CameraDecorator, 0, FullWidth, fullWidth, Int32) = 0;
    OSG_FIELD(CameraDecorator, 1, FullHeight, fullHeight, Int32) = 0;
    /// The tile's edges as fractions of the whole image, from its left and lower edges.
    OSG_FIELD(CameraDecorator, 2, Left, left, float) = 0.0f;
    OSG_FIELD(CameraDecorator, 3, Right, right, float) = 1.0f;
    OSG_FIELD(CameraDecorator, 4, Bottom, bottom, float) = 0.0f;
    OSG_FIELD(CameraDecorator, 5, Top, top, float) = 1.0f;
    static constexpr UInt16 FieldEnd = CameraDecorator::FieldEnd + 6;
};

/// One tile of an image.
class OPENSG_EXPORT TileCameraDecorator : public TileCameraDecoratorBase
{
    OSG_CONTAINER(TileCameraDecorator)
};

using TileCameraDecoratorPtr = FCPtr<TileCameraDecorator>;

} // namespace osg::v1
