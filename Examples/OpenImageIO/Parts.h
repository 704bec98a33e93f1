/// \file
/// The parts of a picture file, in the types that the file has.
#pragma once

#include <Imath/half.h>
#include <OpenImageIO/imageio.h>

#include <QRect>

#include <array>
#include <memory>
#include <optional>

namespace ztExamples
{

struct Part
{
    OIIO::ImageSpec spec;
    /// All channels of a pixel behind one another, rows from the top of the data window, in the types of `spec`.
    std::unique_ptr<std::byte[]> pixels;

    std::byte* at(int x, int y, int channel) const;
};

/// Those that show.
struct Channels
{
    /// Red, green, blue; the same one thrice if it is gray.
    std::array<int, 3> colors;
    int alpha = -1;

    bool isGray() const { return colors[0] == colors[2]; }
};

/// By their names: R, G, B and A without a layer's name in front, or those of the first layer, or Y.
/// \param isNamed  whether others can't be what shows
std::optional<Channels> findChannels(OIIO::ImageSpec const& spec, bool isNamed);

QRect dataWindow(OIIO::ImageSpec const& spec);
QRect displayWindow(OIIO::ImageSpec const& spec);

std::unique_ptr<std::byte[]> allocatePixels(OIIO::ImageSpec const& spec);

/// Makes the data window that of a part. What is new in it is 0.
void setDataWindow(Part& part, QRect const& window);

/// Makes red, green and blue of gray. \return where they are
Channels splitGray(Part& part, Channels const& gray);

/// Calls a function with a value of a channel's type. Types that no frame has are left out.
template <class Function>
void withType(OIIO::TypeDesc type, Function const& function)
{
    switch (type.basetype)
    {
    case OIIO::TypeDesc::UINT8:
        return function(std::uint8_t());
    case OIIO::TypeDesc::INT8:
        return function(std::int8_t());
    case OIIO::TypeDesc::UINT16:
        return function(std::uint16_t());
    case OIIO::TypeDesc::INT16:
        return function(std::int16_t());
    case OIIO::TypeDesc::UINT32:
        return function(std::uint32_t());
    case OIIO::TypeDesc::INT32:
        return function(std::int32_t());
    case OIIO::TypeDesc::HALF:
        return function(half());
    case OIIO::TypeDesc::FLOAT:
        return function(float());
    case OIIO::TypeDesc::DOUBLE:
        return function(double());
    default:
        return;
    }
}

} // namespace ztExamples
