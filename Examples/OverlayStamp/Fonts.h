/// \file
/// The fonts that the overlays ask for.
#pragma once

#include "OverlayFile.h"

namespace ztExamples
{

/// \throw std::runtime_error if a text's family isn't among the system's, for a frame in another one is a wrong frame;
///     what() is a line that names file, key, value and the nearest family
void requireFonts(std::vector<OverlayEntry> const& entries);

} // namespace ztExamples
