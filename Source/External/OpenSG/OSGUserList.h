/// \file
/// The list of the containers that use another one.
#pragma once

#include "OSGFieldContainerPtr.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <unordered_map>
#include <utility>
#include <vector>

namespace osg::v1
{

/// Typed pointers, none of them null, in the order in which they were added. Any of them is removed in constant time on
/// average, unless users stand in the list repeatedly, and the others keep their order. A list that never had more than
/// one takes no memory beside its own.
template <class Pointer>
class UserList
{
  public:
    class const_iterator
    {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Pointer;
        using difference_type = std::ptrdiff_t;
        using pointer = Pointer const*;
        using reference = Pointer const&;

        const_iterator() = default;

        reference operator*() const { return *_entry; }
        pointer operator->() const { return _entry; }

        const_iterator& operator++()
        {
            ++_entry;
            skipGaps();
            return *this;
        }

        const_iterator operator++(int)
        {
            const_iterator const before = *this;
            ++*this;
            return before;
        }

        friend bool operator==(const_iterator a, const_iterator b) { return a._entry == b._entry; }
        friend bool operator!=(const_iterator a, const_iterator b) { return !(a == b); }

      private:
        friend class UserList;

        const_iterator(Pointer const* entry, Pointer const* end) : _entry(entry), _end(end) { skipGaps(); }

        void skipGaps()
        {
            while (_entry != _end && !_entry->getContainer())
                ++_entry;
        }

        Pointer const* _entry = nullptr;
        Pointer const* _end = nullptr;
    };

    const_iterator begin() const { return {first(), last()}; }
    const_iterator end() const { return {last(), last()}; }
    std::size_t size() const { return _many ? _many->entries.size() - _many->gaps : _one.getContainer() ? 1 : 0; }
    bool empty() const { return size() == 0; }
    /// The list must not be empty.
    Pointer const& front() const { return *begin(); }

    /// Makes sure that the next push_back() can't fail, even if entries are removed before it.
    void makeRoom()
    {
        if (_many)
            osg::makeRoom(_many->entries);
        else if (!empty())
        {
            auto many = std::make_unique<Many>();
            many->entries.reserve(2);
            many->entries.push_back(_one);
            _many = std::move(many);
            _one = Pointer();
        }
    }

    /// Appends a user, even if it is in the list already.
    void push_back(Pointer user)
    {
        makeRoom();
        if (_many)
            _many->add(user);
        else
            _one = user;
    }

    /// Removes the first entry that points to a container. \return whether there was one
    bool remove(FieldContainer const* user)
    {
        if (_many)
            return _many->remove(user);
        if (empty() || _one.getContainer() != user)
            return false;
        _one = Pointer();
        return true;
    }

    friend bool operator==(UserList const& a, std::vector<Pointer> const& b)
    {
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    }

  private:
    struct Many
    {
        /// A longer list has an index and, between its entries, gaps (null) where some have been removed.
        static constexpr std::size_t unindexedSize = 32;

        std::vector<Pointer> entries;
        std::size_t gaps = 0;
        /// The place of each user's first entry; empty without an index.
        std::unordered_map<FieldContainer const*, std::size_t> index;
        /// Entries that aren't the first of their user.
        std::size_t repeated = 0;

        void add(Pointer const& user)
        {
            entries.push_back(user);
            if (!index.empty())
                enter(entries.size() - 1);
            else if (entries.size() > unindexedSize)
                enter(0);
        }

        /// Enters the entries from a place on into the index. The list does without one that can't be allocated.
        void enter(std::size_t place)
        {
            try
            {
                for (; place < entries.size(); ++place)
                    if (entries[place].getContainer() &&
                        !index.try_emplace(entries[place].getContainer(), place).second)
                        ++repeated;
            }
            catch (std::bad_alloc const&)
            {
                index.clear();
                repeated = 0;
            }
        }

        auto find(std::size_t from, FieldContainer const* user)
        {
            return std::find_if(entries.begin() + std::ptrdiff_t(from), entries.end(),
                                [user](Pointer const& entry) { return entry.getContainer() == user; });
        }

        bool remove(FieldContainer const* user)
        {
            if (!index.empty())
                return removeIndexed(user);
            auto const entry = find(0, user);
            if (!user || entry == entries.end())
                return false;
            entries.erase(entry);
            return true;
        }

        bool removeIndexed(FieldContainer const* user)
        {
            auto const first = index.find(user);
            if (first == index.end())
                return false;
            entries[first->second] = Pointer();
            ++gaps;
            auto const next = repeated > 0 ? find(first->second, user) : entries.end();
            if (next == entries.end())
                index.erase(first);
            else
            {
                first->second = std::size_t(next - entries.begin());
                --repeated;
            }
            if (gaps > entries.size() / 2)
                closeGaps();
            return true;
        }

        void closeGaps()
        {
            std::size_t kept = 0;
            for (std::size_t place = 0; place < entries.size(); ++place)
            {
                auto const first = index.find(entries[place].getContainer());
                if (first == index.end())
                    continue;
                if (first->second == place)
                    first->second = kept;
                entries[kept++] = entries[place];
            }
            entries.resize(kept);
            gaps = 0;
        }
    };

    Pointer const* first() const { return _many ? _many->entries.data() : &_one; }
    Pointer const* last() const { return _many ? _many->entries.data() + _many->entries.size() : &_one + 1; }

    Pointer _one;
    std::unique_ptr<Many> _many;
};

} // namespace osg::v1
