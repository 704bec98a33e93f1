/// \file
/// Texts by Qt alone: the peer of the overlay library's rendering.
#pragma once

#include "OSGOverlay.h"

#include <QImage>
#include <QPainter>

namespace ztBenchmarks
{

/// The calls of Qt that rendering an overlay's text takes, and nothing else.
/// \param targetHeight  height in pixels of the target that the overlay is shown on
QImage renderWithQt(osg::Overlay const& overlay, int targetHeight);

/// Paints an overlay's text straight into a picture, as a host without the library would.
void paintWithQt(QPainter& painter, osg::Overlay const& overlay, QSize const& target);

} // namespace ztBenchmarks
