/// \file
/// A layer of overlays over a picture of any depth.
#pragma once

#include "Colors.h"
#include "Parts.h"

#include <QImage>

namespace ztExamples
{

/// Merges a layer over the channels that show. Only what it covers is read and written; where that lies outside the
/// data window, the window grows. A gray part gets colour if the layer has some.
/// \param channels  of the part, those of the new one afterwards
/// \param layer  of the display window's size, see toPixels()
void mergeLayer(Part& part, Channels& channels, QImage const& layer, LayerColors const& colors);

} // namespace ztExamples
