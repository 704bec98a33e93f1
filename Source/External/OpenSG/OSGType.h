/// \file
/// Type records: what a container's class is called, what it derives from, and how a new one is made.
#pragma once

#include "OSGBase.h"
#include "ztOpenSG_export.h"

namespace osg::v1
{

class FieldContainer;
class FieldContainerPtr;

/// A named type with an id of its own and a link to its parent type.
class ZTOPENSG_EXPORT TypeBase
{
  public:
    TypeBase(char const* name, TypeBase const* parent);
    TypeBase(TypeBase const&) = delete;
    TypeBase& operator=(TypeBase const&) = delete;

    UInt32 getId() const { return _id; }
    char const* getName() const { return _name; }
    /// Null for a type that derives from none.
    TypeBase const* getParent() const { return _parent; }

    /// Whether this type is `other` or derives from it, however far down.
    bool isDerivedFrom(TypeBase const& other) const
    {
        TypeBase const* type = this;
        while (type && type->_id != other._id)
            type = type->_parent;
        return type;
    }

  private:
    UInt32 _id;
    char const* _name;
    TypeBase const* _parent;
};

/// The type record of a container class. There is one for each class, made when the library that defines the class is
/// loaded; ZT_CONTAINER and ZT_CONTAINER_TYPE declare and define it.
class ZTOPENSG_EXPORT FieldContainerType : public TypeBase
{
  public:
    /// The name and the parent, null for none, outlive the record. `makePrototype` makes the container that all new
    /// ones are copied from; it is null for an abstract class. The size is that of a container in bytes.
    FieldContainerType(char const* name, FieldContainerType const* parent, UInt16 containerSize,
                       FieldContainer* (*makePrototype)());
    ~FieldContainerType();

    /// The container that new ones are copied from, null for an abstract class. Writing its fields changes the defaults
    /// of every container made afterwards; its counted pointers stay null.
    FieldContainerPtr getPrototype() const;

    /// A container with the prototype's field values and reference count 0; null without a prototype.
    FieldContainerPtr createContainer() const;

    /// The group under which a container keeps an attachment of this type. A type whose parent is abstract opens a
    /// group, which the types derived from it share.
    UInt32 getGroupId() const;

    /// Size of a container in bytes.
    UInt16 getContainerSize() const { return _containerSize; }

  private:
    FieldContainer* _prototype;
    UInt16 _containerSize;
};

} // namespace osg::v1
