/// \file
/// The record of what a thread did to containers.
#pragma once

#include "OSGFieldContainerPtr.h"

#include <vector>

namespace osg::v1
{

/// Grows by an entry for each event until the host clears it. A host sets one with PThreadBase::setCurrentChangeList()
/// if it reads it.
///
/// Where the list can't be allocated, what it reports goes on all the same: counting and destruction don't fail for it.
/// The entries then end before the first event that found no place, and isComplete() says so.
class ZTOPENSG_EXPORT ChangeList
{
  public:
    enum class Event
    {
        AddRefd,
        SubRefd,
        Destroyed,
        Changed
    };

    struct Entry
    {
        Event event;
        /// Names the container; dangling once the container has been destroyed.
        FieldContainerPtr container;
        /// The fields of a Changed entry, 0 otherwise.
        BitVector mask;
    };

    void addAddRefd(FieldContainerPtr const& container) noexcept;
    void addSubRefd(FieldContainerPtr const& container) noexcept;
    void addDestroyed(FieldContainerPtr const& container) noexcept;
    void addChanged(FieldContainerPtr const& container, BitVector mask) noexcept;

    std::vector<Entry> const& getEntries() const { return _entries; }

    /// Whether the entries are all events since the list was made or cleared. A host that mirrors the containers has to
    /// look at these themselves where it is false.
    bool isComplete() const { return _isComplete; }

    /// Begins anew, with a list that is empty and complete.
    void clear();

  private:
    void add(Entry const& entry) noexcept;

    bool _isComplete = true;
    std::vector<Entry> _entries;
};

} // namespace osg::v1
