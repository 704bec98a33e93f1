/// \file
/// The fonts that the overlays ask for, and those that come with them.
#pragma once

#include "OverlayFile.h"

namespace ztExamples
{

/// Adds a font file to the families that texts can have, for the rest of the process.
/// \throw std::runtime_error if it is no font or there is no QGuiApplication; what() is the reason
void addFont(QString const& path);

/// \throw std::runtime_error if a text's family isn't among those that there are, for a frame in another one is a wrong
/// frame;
///     what() is a line that names file, key, value and the nearest family
void requireFonts(std::vector<OverlayEntry> const& entries);

} // namespace ztExamples
