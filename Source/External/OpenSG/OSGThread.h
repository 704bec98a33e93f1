/// \file
/// What threads share and what each has of its own.
#pragma once

#include "OSGBase.h"
#include "ztOpenSG_export.h"

#include <array>
#include <cstdint>
#include <mutex>

namespace osg::v1
{

class ChangeList;

/// Locks for more objects than there are locks: an object's address chooses the one it takes.
class LockPool
{
  public:
    void aquire(void const* key) { lockOf(key).lock(); }
    void release(void const* key) { lockOf(key).unlock(); }

  private:
    std::mutex& lockOf(void const* key) { return _locks[(reinterpret_cast<std::uintptr_t>(key) >> 6) % 16]; }

    std::array<std::mutex, 16> _locks;
};

/// Aspects are the copies of each container that threads could hold apart from one another.
class ThreadManager
{
  public:
    /// Always 1: every thread sees the same copy.
    static constexpr unsigned getNumAspects() { return 1; }
};

/// The calling thread's part in the scene graph.
class ZTOPENSG_EXPORT PThreadBase
{
  public:
    /// The list that records this thread's changes; null, as it is at first, records none.
    static ChangeList* getCurrentChangeList();

    /// \param changeList is borrowed: it outlives its use, which ends with the next call on the same thread.
    static void setCurrentChangeList(ChangeList* changeList);
};

} // namespace osg::v1
