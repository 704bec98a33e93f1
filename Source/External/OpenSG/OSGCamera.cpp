#include "OSGCamera.h"

#include <utility>

namespace osg::v1
{

ZT_ABSTRACT_CONTAINER_TYPE(Camera, FieldContainer);
ZT_CONTAINER_TYPE(PerspectiveCamera, Camera);
ZT_ABSTRACT_CONTAINER_TYPE(CameraDecorator, Camera);
ZT_CONTAINER_TYPE(ShearedStereoCameraDecorator, CameraDecorator);
ZT_CONTAINER_TYPE(TileCameraDecorator, CameraDecorator);

CameraDecorator::~CameraDecorator()
{
    // A chain goes without recursion, however long it is.
    for (CameraPtr camera = decoratee; takeRef(camera);)
    {
        auto const decorator = dynamicCast<CameraDecorator>(camera);
        CameraPtr const next = decorator != NullFC ? std::exchange(decorator->decoratee, NullFC) : CameraPtr();
        destroy(camera);
        camera = next;
    }
}

} // namespace osg::v1
