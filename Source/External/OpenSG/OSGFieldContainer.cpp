#include "OSGFieldContainer.h"

#include "OSGChangeList.h"
#include "OSGThread.h"

#include <atomic>

namespace osg::v1
{

namespace
{
std::atomic<std::size_t> numContainers{0};
} // namespace

FieldContainerType const FieldContainer::_type("FieldContainer", nullptr, sizeof(FieldContainer), nullptr);

FieldContainer::~FieldContainer() = default;

void FieldContainer::changed(BitVector, UInt32) {}

FieldContainerPtr FieldContainer::enter(FieldContainer* container)
{
    container->_typeId = container->getType().getId();
    FieldContainerPtr const pointer(container);
    FieldContainerFactory::registerFieldContainer(pointer);
    return pointer;
}

void FieldContainerFactory::registerFieldContainer(FieldContainerPtr const&)
{
    ++numContainers;
}

void FieldContainerFactory::unregisterFieldContainer(FieldContainerPtr const&)
{
    --numContainers;
}

std::size_t FieldContainerFactory::getNumContainers()
{
    return numContainers;
}

class ReferenceCounting
{
  public:
    /// Returns the count afterwards.
    static Int32 change(FieldContainer* container, Int32 difference)
    {
        FieldContainerPtrBase::_pRefCountLock->aquire(container);
        Int32 const count = container->_refCount += difference;
        FieldContainerPtrBase::_pRefCountLock->release(container);
        return count;
    }

    static void reportAdded(FieldContainerPtr const& container)
    {
        if (ChangeList* changeList = PThreadBase::getCurrentChangeList())
            changeList->addAddRefd(container);
    }

    static void sub(FieldContainerPtr const& container)
    {
        if (FieldContainer::takeRef(container))
            FieldContainer::destroy(container);
    }
};

bool FieldContainer::takeRef(FieldContainerPtr const& container) noexcept
{
    if (container == NullFC)
        return false;
    bool const isLast = ReferenceCounting::change(container.getContainer(), -1) <= 0;
    if (ChangeList* changeList = PThreadBase::getCurrentChangeList())
        isLast ? changeList->addDestroyed(container) : changeList->addSubRefd(container);
    return isLast;
}

void FieldContainer::destroy(FieldContainerPtr const& container) noexcept
{
    static_assert(ThreadManager::getNumAspects() == 1, "one delete destroys the container's only aspect");
    delete container.getContainer();
    FieldContainerFactory::unregisterFieldContainer(container);
}

void addRef(FieldContainerPtr const& container) noexcept
{
    if (container == NullFC)
        return;
    ReferenceCounting::change(container.getContainer(), 1);
    ReferenceCounting::reportAdded(container);
}

void subRef(FieldContainerPtr const& container) noexcept
{
    // The caller's pointer may lie in a container that is destroyed here.
    ReferenceCounting::sub(FieldContainerPtr(container));
}

void setRefd(FieldContainerPtr& field, FieldContainerPtr value) noexcept
{
    if (field == value)
        return;
    // The new target is counted before the old one goes, which may hold its last reference, and reported
    // after.
    if (value != NullFC)
        ReferenceCounting::change(value.getContainer(), 1);
    subRef(field);
    field = value;
    if (value != NullFC)
        ReferenceCounting::reportAdded(value);
}

void markChanged(FieldContainerPtr const& container, BitVector mask)
{
    if (container == NullFC)
        return;
    if (ChangeList* changeList = PThreadBase::getCurrentChangeList())
        changeList->addChanged(container, mask);
    if (!FieldContainerPtr::_ignore_change)
        container->changed(mask, FieldContainer::OriginExternal);
}

} // namespace osg::v1
