#include "OSGThread.h"

namespace osg::v1
{

namespace
{
thread_local ChangeList* currentChangeList = nullptr;
}

ChangeList* PThreadBase::getCurrentChangeList()
{
    return currentChangeList;
}

void PThreadBase::setCurrentChangeList(ChangeList* changeList)
{
    currentChangeList = changeList;
}

} // namespace osg::v1
