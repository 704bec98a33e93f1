#include "OSGCamera.h"

namespace osg::v1
{

ZT_ABSTRACT_CONTAINER_TYPE(Camera, FieldContainer);
ZT_CONTAINER_TYPE(PerspectiveCamera, Camera);
ZT_ABSTRACT_CONTAINER_TYPE(CameraDecorator, Camera);
ZT_CONTAINER_TYPE(ShearedStereoCameraDecorator, CameraDecorator);
ZT_CONTAINER_TYPE(TileCameraDecorator, CameraDecorator);

CameraDecorator::~CameraDecorator()
{
    subRef(decoratee);
}

} // namespace osg::v1
