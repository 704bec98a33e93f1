/// \file
/// What the library needs to know of the display.
#pragma once

#include "ztUtils_export.h"

#include <atomic>

namespace ztPlatform
{

/// For the functions below, which each placement of an overlay calls.
namespace Detail
{
extern ZTUTILS_EXPORT std::atomic<double> dpiScaleX;
extern ZTUTILS_EXPORT std::atomic<double> dpiScaleY;
} // namespace Detail

/// Pixels for each DPI-independent pixel, horizontally and vertically; above 0 and finite, 1.0 until set.
inline double getDpiScaleX()
{
    return Detail::dpiScaleX;
}
inline double getDpiScaleY()
{
    return Detail::dpiScaleY;
}

/// Sets both scales, for all threads. What the host shows has to be updated by the host: a relative text overlay takes
/// a new scale into account when it is `dirty`.
///
/// \return false, and the scales stay as they are, if one of the two is not above 0 and finite
ZTUTILS_EXPORT bool setDpiScale(double x, double y);

} // namespace ztPlatform
