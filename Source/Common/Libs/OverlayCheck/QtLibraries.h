/// \file
/// Which versions of Qt a process has loaded.
#pragma once

#include <set>

namespace ztOverlayCheck
{

/// The major versions of Qt's shared core libraries in this process; empty where the system doesn't tell.
std::set<int> loadedQtMajors();

} // namespace ztOverlayCheck
