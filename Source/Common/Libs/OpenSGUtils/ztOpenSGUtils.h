/// \file
/// The current scene.
#pragma once

#include "OSGNode.h"
#include "ztOpenSGUtils_export.h"

namespace ztOpenSGUtils
{

/// The root of the current scene, borrowed; null until one is set.
ZTOPENSGUTILS_EXPORT osg::NodePtr getRoot();

/// Makes a node the root of the current scene, for all threads. The root is counted: a scene that nothing else holds
/// goes when another root, or null, takes its place. Not for use while another thread works on the scene.
ZTOPENSGUTILS_EXPORT void setRoot(osg::NodePtr const& root);

} // namespace ztOpenSGUtils
