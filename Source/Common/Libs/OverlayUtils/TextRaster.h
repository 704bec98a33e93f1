/// \file
/// Text to pixels.
#pragma once

#include "OSGOverlay.h"

namespace ztOverlays
{

/// Renders an overlay's text, in its font, colours and size, into an image and marks the image. A rendering that would
/// take more than 2 GiB, or that Qt can't allocate, leaves an image of 0 by 0.
/// \param viewportHeight  height in pixels of the target that the overlay is shown on
/// \return false if there is nothing to draw, and the image is as before: no text, a font size below one point, no
///     QGuiApplication
bool renderText(osg::Overlay const& overlay, int viewportHeight, osg::ImagePtr const& image);

} // namespace ztOverlays
