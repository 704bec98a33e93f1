/// \file
/// Field containers: reference-counted objects with public fields.
///
/// A container class takes a few lines. Its generated-style base declares the fields and their masks, the class itself
/// has the operations:
///
/// \code
/// class BlendChunkBase : public StateChunk
/// {
///   public:
///     ZT_FIELD(StateChunk, 0, SrcFactor, srcFactor, UInt32) = 1;
///     ZT_FIELD(StateChunk, 1, DestFactor, destFactor, UInt32) = 0;
///     static constexpr UInt16 FieldEnd = StateChunk::FieldEnd + 2;
/// };
///
/// class BlendChunk : public BlendChunkBase
/// {
///     ZT_CONTAINER(BlendChunk)
/// };
///
/// ZT_CONTAINER_TYPE(BlendChunk, StateChunk); // in the source file
/// \endcode
///
/// A host makes, edits and drops containers like this:
///
/// \code
/// osg::RefPtr<osg::BlendChunk> const chunk(osg::create<osg::BlendChunk>()); // counted; destroyed at the scope's end
/// chunk->srcFactor = osg::BlendChunk::One;
/// osg::markChanged(chunk, osg::BlendChunk::SrcFactorFieldMask);
/// \endcode
#pragma once

#include "OSGFieldContainerPtr.h"
#include "OSGType.h"

#include <cstddef>

/// Declares the field `name` of the given type and its mask `Name##FieldMask`; `index` counts from 0 in the class whose
/// base is `Parent`. An initialiser may follow.
#define ZT_FIELD(Parent, index, Name, name, ...)                                              \
    static constexpr ::osg::UInt16 Name##FieldId = Parent::FieldEnd + (index);                \
    static constexpr ::osg::BitVector Name##FieldMask = ::osg::BitVector(1) << Name##FieldId; \
    __VA_ARGS__ name

/// Opens the body of a container class that has no prototype.
#define ZT_ABSTRACT_CONTAINER(Class)                          \
  public:                                                     \
    static ::osg::FieldContainerType const& getClassType()    \
    {                                                         \
        return _type;                                         \
    }                                                         \
    ::osg::FieldContainerType const& getType() const override \
    {                                                         \
        return _type;                                         \
    }                                                         \
                                                              \
  protected:                                                  \
    Class() = default;                                        \
    Class(Class const&) = default;                            \
                                                              \
  private:                                                    \
    static ::osg::FieldContainerType const _type;

/// Opens the body of a container class.
#define ZT_CONTAINER(Class)                               \
    ZT_ABSTRACT_CONTAINER(Class)                          \
    static ::osg::FieldContainer* makePrototype()         \
    {                                                     \
        return new Class;                                 \
    }                                                     \
                                                          \
  public:                                                 \
    ::osg::FieldContainerPtr shallowCopy() const override \
    {                                                     \
        return enter(new Class(*this));                   \
    }                                                     \
                                                          \
  private:

/// Define the type records that the two above declare.
#define ZT_ABSTRACT_CONTAINER_TYPE(Class, Parent) \
    ::osg::FieldContainerType const Class::_type(#Class, &Parent::getClassType(), sizeof(Class), nullptr)
#define ZT_CONTAINER_TYPE(Class, Parent) \
    ::osg::FieldContainerType const Class::_type(#Class, &Parent::getClassType(), sizeof(Class), &Class::makePrototype)

namespace osg::v1
{

/// The base of all containers. Containers are made with create() or shallowCopy() and destroyed by subRef().
class ZTOPENSG_EXPORT FieldContainer
{
  public:
    static constexpr UInt16 FieldEnd = 0;

    /// Who says that a container changed: the one who wrote it, or a container that it uses.
    static constexpr UInt32 OriginExternal = 1;
    static constexpr UInt32 OriginChild = 2;

    static FieldContainerType const& getClassType() { return _type; }
    virtual FieldContainerType const& getType() const = 0;

    /// Whether the container's type is `type` or derives from it.
    bool isOfType(FieldContainerType const& type) const
    {
        return _typeId == type.getId() || getType().isDerivedFrom(type);
    }

    /// A new container of the same type with this one's field values and reference count 0.
    ///
    /// The copy's counted pointers hold no references: the caller adds one for each that is not null. Links to the
    /// containers above (an image's or a core's `parents`, a node's `parent`) and attachments are not taken over.
    virtual FieldContainerPtr shallowCopy() const = 0;

    /// Called after fields were written, by markChanged() (OriginExternal) or by a container that this one uses
    /// (OriginChild). The default does nothing.
    virtual void changed(BitVector mask, UInt32 origin);

    Int32 getRefCount() const { return _refCount; }

    FieldContainer& operator=(FieldContainer const&) = delete;

  protected:
    FieldContainer() = default;
    FieldContainer(FieldContainer const&) {}
    virtual ~FieldContainer();

    /// Enters a new container into the factory's books.
    static FieldContainerPtr enter(FieldContainer* container);

    /// The two halves of subRef(), for a container that would else hold its like in recursion without end: taking the
    /// reference, which tells whether it was the last, and the end that then has to follow.
    static bool takeRef(FieldContainerPtr const& container) noexcept;
    static void destroy(FieldContainerPtr const& container) noexcept;

  private:
    friend class FieldContainerType;
    friend class ReferenceCounting;

    static FieldContainerType const _type;

    Int32 _refCount = 0;
    /// That of getType(), or 0. Beside what a walk reads anyway, it spares most type tests a call and a look elsewhere.
    UInt32 _typeId = 0;
};

/// Keeps the number of containers that live, prototypes left out.
class ZTOPENSG_EXPORT FieldContainerFactory
{
  public:
    static void registerFieldContainer(FieldContainerPtr const& container);
    static void unregisterFieldContainer(FieldContainerPtr const& container);
    static std::size_t getNumContainers();
};

/// Adds a reference. Null: nothing happens.
ZTOPENSG_EXPORT void addRef(FieldContainerPtr const& container) noexcept;

/// Takes a reference; at a count of 0 or below the container is destroyed, which gives back the references that it
/// holds. So a container that nobody has counted yet is destroyed by it too. Null: nothing happens.
ZTOPENSG_EXPORT void subRef(FieldContainerPtr const& container) noexcept;

/// Announces that the fields of `mask` were written: an entry in the thread's change list, then, unless
/// FieldContainerPtr::_ignore_change is set, the container's `changed`. Null: nothing happens.
ZTOPENSG_EXPORT void markChanged(FieldContainerPtr const& container, BitVector mask);

/// The untyped form of setRefdCP().
ZTOPENSG_EXPORT void setRefd(FieldContainerPtr& field, FieldContainerPtr value) noexcept;

/// Assigns to a counted field: the old target loses a reference, the field takes the value, the new target gets a
/// reference. Equal pointers: nothing happens. Either may be null. The new target survives even if the old one held its
/// only reference. Marks nothing.
template <class T>
void setRefdCP(FCPtr<T>& field, std::common_type_t<FCPtr<T>> const& value) noexcept
{
    setRefd(field, value);
}

/// The pointer as a `T`; null if it is null or its container is neither a `T` nor of a type derived from it.
template <class T>
FCPtr<T> dynamicCast(FieldContainerPtr const& container)
{
    if (container == NullFC || !container->isOfType(T::getClassType()))
        return NullFC;
    return FCPtr<T>::cast(container);
}

/// A new container from the prototype of `T`, with reference count 0; null if `T` is abstract.
template <class T>
FCPtr<T> create()
{
    return dynamicCast<T>(T::getClassType().createContainer());
}

} // namespace osg::v1
