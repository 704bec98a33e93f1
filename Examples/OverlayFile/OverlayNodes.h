/// \file
/// Overlay nodes from the entries of an overlay file.
#pragma once

#include "OverlayFile.h"

namespace ztExamples
{

/// A new overlay with an entry's settings and without a text, appended to the children of `parent`.
///
/// What the entry is made of besides hangs below it. The children of a guide show its rectangles but the first. A text
/// with a shadow or padding is the first child of its background, and the shadow is the second one.
osg::NodePtr createOverlayNode(osg::NodePtr const& parent, OverlayEntry const& entry);

/// The overlay of a node that is one.
osg::OverlayPtr overlayOf(osg::NodePtr const& node);

/// The overlay that shows an entry's own text or picture, of the node that createOverlayNode() has made.
osg::OverlayPtr contentOf(osg::NodePtr const& node);

/// Gives an overlay a text. It stays as it is, and needs no new rendering, if it has that text already.
void setText(osg::OverlayPtr const& overlay, std::string const& text);

/// Gives an overlay another picture, an entry's, and the entry's size.
void setPicture(osg::OverlayPtr const& overlay, OverlayEntry const& entry);

} // namespace ztExamples
