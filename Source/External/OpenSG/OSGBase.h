/// \file
/// Plain values that the containers hold.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// The scene graph. Its names stand in a namespace of their version, so that a process may load another library with
/// classes of the same names.
namespace osg
{
inline namespace v1
{
}
} // namespace osg

namespace osg::v1
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

/// A string whose copies share the characters. No character is written in place, so that one thread may read what
/// another one shares.
class SharedString
{
  public:
    SharedString() = default;
    SharedString(std::string text) : _text(std::make_shared<std::string const>(std::move(text))) {}
    SharedString(char const* text) : SharedString(std::string(text)) {}

    /// To be read before the next write.
    std::string const& str() const
    {
        static std::string const empty;
        return _text ? *_text : empty;
    }
    operator std::string const&() const { return str(); }

    /// An empty string shares what it becomes.
    SharedString& operator+=(SharedString const& added)
    {
        if (empty())
            return *this = added;
        return *this = SharedString(str() + added.str());
    }

    bool empty() const { return str().empty(); }

    friend bool operator==(SharedString const& a, SharedString const& b)
    {
        return a._text == b._text || a.str() == b.str();
    }
    friend bool operator!=(SharedString const& a, SharedString const& b) { return !(a == b); }
    template <class Text>
    friend bool operator==(SharedString const& a, Text const& b)
    {
        return a.str() == b;
    }
    template <class Text>
    friend bool operator!=(SharedString const& a, Text const& b)
    {
        return a.str() != b;
    }

  private:
    std::shared_ptr<std::string const> _text;
};

/// Makes sure that a list takes one more entry without an allocation.
template <class T>
void makeRoom(std::vector<T>& list)
{
    if (list.size() == list.capacity())
        list.reserve(std::max(2 * list.size(), std::size_t(1)));
}

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

} // namespace osg::v1
