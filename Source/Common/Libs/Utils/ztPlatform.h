/// \file
/// What the library needs to know of the display.
#pragma once

#include "ztUtils_export.h"

namespace ztPlatform
{

/// Pixels for each DPI-independent pixel, horizontally and vertically; above 0 and finite, 1.0 until set.
ZTUTILS_EXPORT double getDpiScaleX();
ZTUTILS_EXPORT double getDpiScaleY();

/// Sets both scales, for all threads. What the host shows has to be updated by the host: a relative text overlay takes
/// a new scale into account when it is `dirty`.
///
/// \return false, and the scales stay as they are, if one of the two is not above 0 and finite
ZTUTILS_EXPORT bool setDpiScale(double x, double y);

} // namespace ztPlatform
