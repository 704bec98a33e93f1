#include "OSGChangeList.h"

#include <exception>

namespace osg::v1
{

void ChangeList::addAddRefd(FieldContainerPtr const& container) noexcept
{
    add({Event::AddRefd, container, 0});
}

void ChangeList::addSubRefd(FieldContainerPtr const& container) noexcept
{
    add({Event::SubRefd, container, 0});
}

void ChangeList::addDestroyed(FieldContainerPtr const& container) noexcept
{
    add({Event::Destroyed, container, 0});
}

void ChangeList::addChanged(FieldContainerPtr const& container, BitVector mask) noexcept
{
    add({Event::Changed, container, mask});
}

void ChangeList::add(Entry const& entry) noexcept
{
    if (!_isComplete)
        return;
    try
    {
        _entries.push_back(entry);
    }
    catch (std::exception const&)
    {
        _isComplete = false;
    }
}

void ChangeList::clear()
{
    _entries.clear();
    _isComplete = true;
}

} // namespace osg::v1
