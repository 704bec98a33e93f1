#include "ztPixels.h"

#include "ztNumeric.h"

#include <algorithm>

namespace ztPixels
{

namespace
{

/// a × b / 255, rounded to the nearest; exact for 0 to 255.
unsigned multiply(unsigned a, unsigned b)
{
    unsigned const product = a * b + 128;
    return (product + (product >> 8)) >> 8;
}

std::uint8_t toChannel(double value)
{
    return std::uint8_t(ztNumeric::truncate(std::clamp(value, 0.0, 255.0) + 0.5));
}

} // namespace

void blend(std::uint8_t* target, std::uint8_t const* source, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i, target += channels, source += channels)
        for (unsigned c = 0, uncovered = 255u - source[3]; c < channels; ++c)
            target[c] = std::uint8_t(std::min(source[c] + multiply(target[c], uncovered), 255u));
}

void blendModulated(std::uint8_t* target, std::uint8_t const* source, std::size_t pixels, Modulation const& modulation)
{
    for (std::size_t i = 0; i < pixels; ++i, target += channels, source += channels)
    {
        double const uncovered = 1.0 - modulation.coverage * source[3] / 255.0;
        for (int c = 0; c < channels; ++c)
            target[c] = toChannel(source[c] * modulation.factors[c] + target[c] * uncovered);
    }
}

void premultiply(std::uint8_t* row, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i, row += channels)
        for (int c = 0; c < 3; ++c)
            row[c] = std::uint8_t(multiply(row[c], row[3]));
}

void fromWords(std::uint32_t const* words, std::uint8_t* row, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i, row += channels)
    {
        row[0] = std::uint8_t(words[i] >> 16);
        row[1] = std::uint8_t(words[i] >> 8);
        row[2] = std::uint8_t(words[i]);
        row[3] = std::uint8_t(words[i] >> 24);
    }
}

} // namespace ztPixels
