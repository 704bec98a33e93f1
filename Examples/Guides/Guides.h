/// \file
/// What the guides' programs share.
#pragma once

#include "OSGRefPtr.h"
#include "OSGViewport.h"
#include "ztOverlayUtils.h"

#include <QImage>

#include <string>

namespace ztGuides
{

/// \throw std::logic_error with the claim unless it holds
void expect(bool holds, char const* claim);

/// A scene with a material pool and nothing else.
osg::RefPtr<osg::Node> createScene();

osg::RefPtr<osg::Viewport> createViewport(int width, int height);

/// A new label of the current scene, 5% of the target's height.
osg::NodePtr addLabel(std::string const& text);

/// A new picture of the current scene, 48 DPI-independent pixels high.
osg::NodePtr addPicture(QImage const& picture);

osg::OverlayPtr overlayOf(osg::NodePtr const& node);

/// Stamps the current scene's visible overlays onto a frame.
void stamp(QImage& frame);

void hosting();
/// Saves the guide's pictures in a folder, unless it is empty.
void placement(QString const& folder);
void stamping();
void drawing();

} // namespace ztGuides
