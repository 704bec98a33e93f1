#include "OSGFieldContainerPtr.h"

#include "OSGFieldContainer.h"
#include "OSGThread.h"

namespace osg::v1
{

namespace
{
LockPool refCountLock;
}

LockPool* const FieldContainerPtrBase::_pRefCountLock = &refCountLock;
thread_local bool FieldContainerPtr::_ignore_change = false;

FieldContainerPtrBase::FieldContainerPtrBase(FieldContainer* container, UInt16 parentEPos)
    : _containerSize(container ? container->getType().getContainerSize() : UInt16(0)), _parentEPos(parentEPos),
      _container(container)
{
}

} // namespace osg::v1
