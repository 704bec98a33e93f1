/// \file
/// What outputs would replace.
#pragma once

#include "OverlayFile.h"
#include "StampOptions.h"

namespace ztExamples
{

/// Requires that no output is, under whatever name, a file that is read or another output.
/// \throw std::runtime_error for a usage error; what() is one line about it
void requireSafeOutputs(StampOptions const& options, std::vector<OverlayEntry> const& entries);

} // namespace ztExamples
