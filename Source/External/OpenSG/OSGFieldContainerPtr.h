/// \file
/// Typed pointers to field containers.
///
/// A typed pointer is a plain value: copying it counts nothing and keeps nothing alive. Containers live by the
/// reference counts that addRef(), subRef() and setRefdCP() of OSGFieldContainer.h change.
#pragma once

#include "OSGBase.h"
#include "ztOpenSG_export.h"

#include <type_traits>

namespace osg::v1
{

class FieldContainer;
class LockPool;

/// What all typed pointers are made of.
class ZTOPENSG_EXPORT FieldContainerPtrBase
{
  public:
    /// The parent field position of a pointer that stands in no parent's field.
    static constexpr UInt16 InvalidParentEPos = 0xFFFF;

    /// Guards every reference count; the key is the container.
    static LockPool* const _pRefCountLock;

    constexpr FieldContainerPtrBase() = default;
    explicit FieldContainerPtrBase(FieldContainer* container, UInt16 parentEPos = InvalidParentEPos);

    /// Size of the container in bytes, 0 for null.
    UInt16 getContainerSize() const { return _containerSize; }

    /// In a list of the containers that use this one: the number of the field with which they do so.
    UInt16 getParentEPos() const { return _parentEPos; }

    FieldContainer* getContainer() const { return _container; }

  protected:
    FieldContainerPtrBase(FieldContainer* container, UInt16 parentEPos, UInt16 containerSize)
        : _containerSize(containerSize), _parentEPos(parentEPos), _container(container)
    {
    }

  private:
    UInt16 _containerSize = 0;
    UInt16 _parentEPos = InvalidParentEPos;
    FieldContainer* _container = nullptr;
};

/// A pointer to a container of any type.
class ZTOPENSG_EXPORT FieldContainerPtr : public FieldContainerPtrBase
{
  public:
    /// While true, the calling thread's change marks don't reach the container's `changed`.
    static thread_local bool _ignore_change;

    using FieldContainerPtrBase::FieldContainerPtrBase;

    FieldContainer* operator->() const { return getContainer(); }
};

/// Pointers are equal when they point to the same container.
inline bool operator==(FieldContainerPtrBase const& a, FieldContainerPtrBase const& b)
{
    return a.getContainer() == b.getContainer();
}

inline bool operator!=(FieldContainerPtrBase const& a, FieldContainerPtrBase const& b)
{
    return !(a == b);
}

/// The type of NullFC, which every typed pointer can be made from.
class NullFieldContainerPtr : public FieldContainerPtr
{
};

/// The null typed pointer.
inline constexpr NullFieldContainerPtr NullFC{};

/// A pointer to a container of class `T` or of one derived from it.
template <class T>
class FCPtr : public FieldContainerPtr
{
  public:
    constexpr FCPtr() = default;
    FCPtr(NullFieldContainerPtr const&) {}
    explicit FCPtr(T* container) : FieldContainerPtr(container) {}

    template <class Derived, class = std::enable_if_t<std::is_base_of_v<T, Derived>>>
    FCPtr(FCPtr<Derived> const& other) : FieldContainerPtr(other)
    {
    }

    /// A pointer to a container that is known to be a `T`.
    static FCPtr cast(FieldContainerPtr const& container) { return FCPtr(container); }

    T* get() const { return static_cast<T*>(getContainer()); }
    T* operator->() const { return get(); }
    T& operator*() const { return *get(); }

  private:
    explicit FCPtr(FieldContainerPtr const& container)
        : FieldContainerPtr(container.getContainer(), InvalidParentEPos, container.getContainerSize())
    {
    }
};

} // namespace osg::v1
