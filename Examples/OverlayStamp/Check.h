/// \file
/// What an overlay file holds, in words.
#pragma once

#include "OverlayFile.h"

namespace ztExamples
{

/// A line about an entry, with its place.
QString describe(OverlayEntry const& entry);

} // namespace ztExamples
