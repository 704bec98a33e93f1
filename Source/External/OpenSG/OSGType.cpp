#include "OSGType.h"

#include "OSGFieldContainer.h"

#include <atomic>

namespace osg::v1
{

namespace
{
UInt32 nextTypeId()
{
    static std::atomic<UInt32> next{0};
    return ++next;
}
} // namespace

TypeBase::TypeBase(char const* name, TypeBase const* parent) : _id(nextTypeId()), _name(name), _parent(parent) {}

FieldContainerType::FieldContainerType(char const* name, FieldContainerType const* parent, UInt16 containerSize,
                                       FieldContainer* (*makePrototype)())
    : TypeBase(name, parent), _prototype(makePrototype ? makePrototype() : nullptr), _containerSize(containerSize)
{
}

FieldContainerType::~FieldContainerType()
{
    delete _prototype;
}

FieldContainerPtr FieldContainerType::getPrototype() const
{
    return FieldContainerPtr(_prototype);
}

FieldContainerPtr FieldContainerType::createContainer() const
{
    return _prototype ? _prototype->shallowCopy() : FieldContainerPtr();
}

UInt32 FieldContainerType::getGroupId() const
{
    auto const* const parent = static_cast<FieldContainerType const*>(getParent());
    return parent && parent->_prototype ? parent->getGroupId() : getId();
}

} // namespace osg::v1
