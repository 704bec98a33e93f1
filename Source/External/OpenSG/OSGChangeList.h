/// \file
/// The record of what a thread did to containers.
#pragma once

#include "OSGFieldContainerPtr.h"

#include <vector>

namespace osg::v1
{

/// Grows by an entry for each event until the host clears it. A host sets one with PThreadBase::setCurrentChangeList()
/// if it reads it.
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

    void addAddRefd(FieldContainerPtr const& container);
    void addSubRefd(FieldContainerPtr const& container);
    void addDestroyed(FieldContainerPtr const& container);
    void addChanged(FieldContainerPtr const& container, BitVector mask);

    std::vector<Entry> const& getEntries() const { return _entries; }
    void clear() { _entries.clear(); }

  private:
    std::vector<Entry> _entries;
};

} // namespace osg::v1
