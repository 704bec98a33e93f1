/// \file
/// Pointers that own.
#pragma once

#include "OSGFieldContainer.h"

#include <utility>

namespace osg::v1
{

/// A typed pointer that holds a reference on its container, for what a scope or an object keeps alive:
///
///     osg::RefPtr<osg::Viewport> const viewport(osg::create<osg::Viewport>());
///
/// It is passed wherever a typed pointer is; the copy that a plain typed pointer takes counts nothing.
template <class T>
class RefPtr : public FCPtr<T>
{
  public:
    RefPtr() = default;
    explicit RefPtr(FCPtr<T> const& container) : FCPtr<T>(container) { addRef(container); }
    RefPtr(RefPtr const& other) : RefPtr(static_cast<FCPtr<T> const&>(other)) {}
    RefPtr(RefPtr&& other) noexcept : FCPtr<T>(std::exchange(static_cast<FCPtr<T>&>(other), NullFC)) {}
    ~RefPtr() { subRef(*this); }

    /// The new container is counted before the old one goes.
    RefPtr& operator=(FCPtr<T> const& container)
    {
        setRefdCP<T>(*this, container);
        return *this;
    }
    RefPtr& operator=(RefPtr const& other) { return *this = static_cast<FCPtr<T> const&>(other); }
    RefPtr& operator=(RefPtr&& other) noexcept
    {
        std::swap(static_cast<FCPtr<T>&>(*this), static_cast<FCPtr<T>&>(other));
        return *this;
    }
};

/// A typed pointer to a new container, which is destroyed at the end of the scope if nobody has counted it by then. It
/// is declared after those of the containers that are to hold it.
template <class T>
class NewPtr : public FCPtr<T>
{
  public:
    NewPtr() : NewPtr(create<T>()) {}
    explicit NewPtr(FCPtr<T> const& container) : FCPtr<T>(container) {}
    NewPtr(NewPtr const&) = delete;
    NewPtr& operator=(NewPtr const&) = delete;
    ~NewPtr()
    {
        if (*this != NullFC && (*this)->getRefCount() == 0)
            subRef(*this);
    }

    /// The container, which is the caller's from now on.
    FCPtr<T> release() { return std::exchange(static_cast<FCPtr<T>&>(*this), NullFC); }
};

} // namespace osg::v1
