/// \file
/// A layer of overlays over a picture of any depth.
#pragma once

#include "Colors.h"
#include "Parts.h"

#include <QImage>

#include <vector>

namespace ztExamples
{

/// Pixels of a row of a layer, from the first to the last one that it covers.
struct Span
{
    QRgb const* pixels;
    /// In the coordinates of the display window.
    QRect place;
};

/// Those of all rows, from the top.
/// \param layer  of the display window's size, see toPixels()
/// \param origin  of the display window
std::vector<Span> coveredSpans(QImage const& layer, QPoint const& origin);

/// Whether a part can hold what spans show: within its data window, with colour if they have some.
bool hasRoom(OIIO::ImageSpec const& spec, Channels const& channels, std::vector<Span> const& spans);

/// Makes the data window larger and gives colour to a gray part, if spans need it. \return where its channels are then
Channels makeRoom(Part& part, Channels const& channels, std::vector<Span> const& spans);

/// Merges spans over the channels that show, for which there is room. What they don't cover is neither read nor
/// written.
void merge(Part& part, Channels const& channels, std::vector<Span> const& spans, LayerColors const& colors);

} // namespace ztExamples
