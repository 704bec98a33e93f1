/// \file
/// Cameras, as far as the size of a picture depends on them.
#pragma once

#include "OSGFieldContainer.h"

namespace osg::v1
{

/// The base of all cameras.
class ZTOPENSG_EXPORT Camera : public FieldContainer
{
    ZT_ABSTRACT_CONTAINER(Camera)
};

using CameraPtr = FCPtr<Camera>;

class ZTOPENSG_EXPORT PerspectiveCameraBase : public Camera
{
  public:
    /// Under a sheared stereo decorator: how many times wider than the viewport's pixels the layout of foregrounds is,
    /// or, below 1, by the inverse of how many times higher.
    ZT_FIELD(Camera, 0, Aspect, aspect, float) = 1.0f;
    static constexpr UInt16 FieldEnd = Camera::FieldEnd + 1;
};

class ZTOPENSG_EXPORT PerspectiveCamera : public PerspectiveCameraBase
{
    ZT_CONTAINER(PerspectiveCamera)
};

using PerspectiveCameraPtr = FCPtr<PerspectiveCamera>;

class ZTOPENSG_EXPORT CameraDecoratorBase : public Camera
{
  public:
    /// The camera that this one wraps, counted; null for none. A chain of decorators must be finite.
    ZT_FIELD(Camera, 0, Decoratee, decoratee, CameraPtr);
    static constexpr UInt16 FieldEnd = Camera::FieldEnd + 1;
};

/// The base of cameras that change what another camera does.
class ZTOPENSG_EXPORT CameraDecorator : public CameraDecoratorBase
{
    ZT_ABSTRACT_CONTAINER(CameraDecorator)

  protected:
    ~CameraDecorator() override;
};

using CameraDecoratorPtr = FCPtr<CameraDecorator>;

/// One eye of a stereo pair.
class ZTOPENSG_EXPORT ShearedStereoCameraDecorator : public CameraDecorator
{
    ZT_CONTAINER(ShearedStereoCameraDecorator)
};

using ShearedStereoCameraDecoratorPtr = FCPtr<ShearedStereoCameraDecorator>;

class ZTOPENSG_EXPORT TileCameraDecoratorBase : public CameraDecorator
{
  public:
    /// Size in pixels of the whole image that the tile is part of.
    ZT_FIELD(CameraDecorator, 0, FullWidth, fullWidth, Int32) = 0;
    ZT_FIELD(CameraDecorator, 1, FullHeight, fullHeight, Int32) = 0;
    /// The tile's edges as fractions of the whole image, from its left and lower edges.
    ZT_FIELD(CameraDecorator, 2, Left, left, float) = 0.0f;
    ZT_FIELD(CameraDecorator, 3, Right, right, float) = 1.0f;
    ZT_FIELD(CameraDecorator, 4, Bottom, bottom, float) = 0.0f;
    ZT_FIELD(CameraDecorator, 5, Top, top, float) = 1.0f;
    static constexpr UInt16 FieldEnd = CameraDecorator::FieldEnd + 6;
};

/// One tile of an image.
class ZTOPENSG_EXPORT TileCameraDecorator : public TileCameraDecoratorBase
{
    ZT_CONTAINER(TileCameraDecorator)
};

using TileCameraDecoratorPtr = FCPtr<TileCameraDecorator>;

/// The first tile decorator of a chain of decorators; null without one, and for null.
inline TileCameraDecoratorPtr findTile(CameraPtr const& camera)
{
    auto decorator = dynamicCast<CameraDecorator>(camera);
    while (decorator != NullFC && dynamicCast<TileCameraDecorator>(decorator) == NullFC)
        decorator = dynamicCast<CameraDecorator>(decorator->decoratee);
    return dynamicCast<TileCameraDecorator>(decorator);
}

/// The `aspect` of a perspective camera directly below a sheared stereo decorator; 1 for any other camera and for null.
inline float stereoAspect(CameraPtr const& camera)
{
    auto const stereo = dynamicCast<ShearedStereoCameraDecorator>(camera);
    auto const perspective =
        stereo != NullFC ? dynamicCast<PerspectiveCamera>(stereo->decoratee) : PerspectiveCameraPtr();
    return perspective != NullFC ? perspective->aspect : 1.0f;
}

} // namespace osg::v1
