/// \file
/// Plain values that the containers hold.
#pragma once

#include <cstdint>
#include <vector>

namespace osg
{

using UInt8 = std::uint8_t;
using UInt16 = std::uint16_t;
using UInt32 = std::uint32_t;
using UInt64 = std::uint64_t;
using Int32 = std::int32_t;

/// A set of fields of one container, one bit a field.
using BitVector = std::uint64_t;

/// The mask of all fields: every one of the 64 bits.
inline constexpr BitVector AllFieldsMask = ~BitVector(0);

template <class T, unsigned N>
struct Vector;

template <class T>
struct Vector<T, 2u>
{
    T x{}, y{};
};

template <class T>
struct Vector<T, 3u>
{
    T x{}, y{}, z{};
};

template <class T, unsigned N>
struct Point;

template <class T>
struct Point<T, 2u>
{
    T x{}, y{};
};

/// Red, green, blue, nominally 0 to 1.
template <class T>
struct Color3
{
    T r{}, g{}, b{};
};

/// Red, green, blue, alpha, nominally 0 to 1, colour not multiplied by alpha.
template <class T>
struct Color4
{
    T r{}, g{}, b{}, a{};
};

using Vec2f = Vector<float, 2u>;
using Vec3f = Vector<float, 3u>;
using Pnt2f = Point<float, 2u>;
using Color3f = Color3<float>;
using Color4f = Color4<float>;

/// A field that a copy of its container starts without: a link to the containers above, or what only the original
/// carries.
template <class T>
struct NotCopied : T
{
    NotCopied() = default;
    NotCopied(NotCopied const&) : T() {}
    NotCopied& operator=(NotCopied const&) = default;
    using T::operator=;
};

/// A list field: a vector that is emptied through a virtual operation of its own.
template <class T>
class MField : public std::vector<T>
{
  public:
    MField() = default;
    MField(MField const&) = default;
    MField& operator=(MField const&) = default;
    virtual ~MField() = default;

    virtual void clear() { std::vector<T>::clear(); }
};

} // namespace osg
