/// \file
/// The objects that the library derives from an overlay's settings.
#pragma once

#include "OSGOverlay.h"

namespace ztOverlays
{

/// Builds image, chunks, material and foreground of a core, in the place of those that it has. The overlay must not be
/// null.
void initOverlay(osg::OverlayPtr overlay);

} // namespace ztOverlays
