#include "OSGCamera.h"

namespace osg::v1
{

OSG_ABSTRACT_CONTAINER_TYPE(Camera, FieldContainer);
OSG_CONTAINER_TYPE(PerspectiveCamera, Camera);
OSG_ABSTRACT_CONTAINER_TYPE(CameraDecorator, Camera);
OSG_CONTAINER_TYPE(ShearedStereoCameraDecorator, CameraDecorator);
OSG_CONTAINER_TYPE(TileCameraDecorator, CameraDecorator);

CameraDecorator::~CameraDecorator()
{
    subRef(decoratee);
}

} // namespace osg::v1
