#include "OSGPolygonForeground2.h"

#include "OSGDrawAction.h"

namespace osg::v1
{

ZT_CONTAINER_TYPE(PolygonForeground2, Foreground);

PolygonForeground2::~PolygonForeground2()
{
    subRef(material);
}

void PolygonForeground2::draw(DrawActionBase* action, Viewport* viewport)
{
    action->drawPolygon({positions, texCoords, material}, *viewport);
}

} // namespace osg::v1
