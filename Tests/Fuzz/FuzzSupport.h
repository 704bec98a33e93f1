/// \file
/// What the harnesses share: checks.
#pragma once

namespace ztFuzz
{

/// Without the condition the process ends, and libFuzzer keeps the input.
void require(bool condition, char const* what);

/// To be asked when an input's scenes are gone.
void requireNoContainers();

} // namespace ztFuzz
