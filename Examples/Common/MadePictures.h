/// \file
/// Pictures that the host draws for the size of each frame: guides, what is beneath texts, pictures of shapes. They are
/// drawn anew where another size or text asks for it.
#pragma once

#include "OverlayFile.h"

#include <tuple>

namespace ztExamples
{

/// What a shadow has been painted for: text, part of its rendering, size of the frame, pixels for each DPI-independent
/// pixel.
using ShadowState = std::tuple<std::string, QRect, QSize, double>;

/// Pixels for each DPI-independent pixel.
QSizeF dpiScale();

/// In pixels, that the library shows a picture at.
QSizeF shownSize(osg::Int32 sizeMode, float size, QSizeF const& picture, int targetHeight);

/// The image that an overlay shows: a text's rendering or its picture.
osg::ImagePtr shownImage(osg::Overlay const& overlay);

/// \param node  that createOverlayNode() has made for a guide
/// \param limit  in which the pixels are counted; PixelLimit::add() says what it throws
void layOutGuide(osg::NodePtr const& node, Guide const& guide, QSize const& target, PixelLimit& limit);

/// Background and shadow of a text that is laid out, for which createOverlayNode() has made nodes.
void layOutBeneath(osg::NodePtr const& node, OverlayEntry const& entry, QSize const& target, PixelLimit& limit,
                   ShadowState& painted);

/// Gives an overlay its picture of shapes at the size that the entry asks for, pixel for pixel.
/// \throw std::runtime_error too if it can't be drawn
void drawShapes(osg::OverlayPtr const& overlay, OverlayEntry const& entry, QSize const& target, PixelLimit& limit);

} // namespace ztExamples
