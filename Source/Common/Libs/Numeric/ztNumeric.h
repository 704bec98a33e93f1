/// \file
/// The one conversion from floating point to integers.
#pragma once

#include <limits>

namespace ztNumeric
{

/// A value without its fraction: truncated towards zero, the nearest int for a value beyond the range of int, 0 for
/// NaN. A float argument converts to double exactly.
inline int truncate(double value)
{
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    if (value >= highest)
        return std::numeric_limits<int>::max();
    if (value <= lowest)
        return std::numeric_limits<int>::min();
    return value == value ? static_cast<int>(value) : 0;
}

} // namespace ztNumeric
