#include "OSGForeground.h"

namespace osg::v1
{

ZT_ABSTRACT_CONTAINER_TYPE(Foreground, FieldContainer);

} // namespace osg::v1
