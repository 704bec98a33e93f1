/// \file
/// What Qt has to draw texts with.
#pragma once

namespace ztOverlayCheck
{

/// Whether there is a QGuiApplication.
bool hasApplication();

} // namespace ztOverlayCheck
