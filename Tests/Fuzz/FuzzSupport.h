/// \file
/// What the harnesses share: an input's bytes as values, and checks.
#pragma once

#include "OSGBase.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace ztFuzz
{

/// Without the condition the process ends, and libFuzzer keeps the input.
void require(bool condition, char const* what);

/// To be asked when an input's scenes are gone.
void requireNoContainers();

/// Takes values off an input; zeros follow behind its end.
class Bytes
{
  public:
    Bytes(osg::UInt8 const* data, std::size_t size) : _data(data), _end(data + size) {}

    bool isEmpty() const { return _data == _end; }

    /// A value of any bit pattern.
    template <class T>
    T bits()
    {
        T value{};
        std::size_t const size = std::min(sizeof(T), std::size_t(_end - _data));
        std::copy_n(_data, size, reinterpret_cast<osg::UInt8*>(&value));
        _data += size;
        return value;
    }

    unsigned below(unsigned count) { return bits<osg::UInt8>() % count; }
    bool flip() { return below(2); }

    /// Any bit pattern, but mostly a small multiple of 1/8.
    float number() { return below(8) == 0 ? bits<float>() : float(bits<signed char>()) / 8.0f; }

    /// Of any size, but mostly from -16 to 111.
    int integer() { return below(8) == 0 ? bits<int>() >> below(32) : int(below(128)) - 16; }

    std::string text(unsigned maxLength)
    {
        std::size_t const wanted = below(maxLength + 1), size = std::min(wanted, std::size_t(_end - _data));
        return {reinterpret_cast<char const*>(std::exchange(_data, _data + size)), size};
    }

  private:
    osg::UInt8 const* _data;
    osg::UInt8 const* _end;
};

} // namespace ztFuzz
