/// \file
/// Overlay nodes from the entries of an overlay file.
#pragma once

#include "OverlayFile.h"

namespace ztExamples
{

/// A new overlay with an entry's settings and without a text, appended to the children of `parent`.
osg::NodePtr createOverlayNode(osg::NodePtr const& parent, OverlayEntry const& entry);

/// Gives an overlay a text. It stays as it is, and needs no new rendering, if it has that text already.
void setText(osg::OverlayPtr const& overlay, std::string const& text);

} // namespace ztExamples
