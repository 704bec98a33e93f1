#include "OSGForeground.h"

namespace osg
{

OSG_ABSTRACT_CONTAINER_TYPE(Foreground, FieldContainer);

} // namespace osg
