#include "OSGViewport.h"

namespace osg
{

OSG_CONTAINER_TYPE(Viewport, FieldContainer);

Viewport::~Viewport()
{
    subRef(camera);
}

} // namespace osg
