#include "OSGChangeList.h"

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

void ChangeList::addAddRefd(FieldContainerPtr const& container)
{
    _entries.push_back({Event::AddRefd, container, 0});
}

void ChangeList::addSubRefd(FieldContainerPtr const& container)
{
    _entries.push_back({Event::SubRefd, container, 0});
}

void ChangeList::addDestroyed(FieldContainerPtr const& container)
{
    _entries.push_back({Event::Destroyed, container, 0});
}

void ChangeList::addChanged(FieldContainerPtr const& container, BitVector mask)
{
    _entries.push_back({Event::Changed, container, mask});
}

} // namespace osg::v1
