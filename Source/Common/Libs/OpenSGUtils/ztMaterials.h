/// \file
/// The search for what a scene shares.
#pragma once

#include "OSGNode.h"
#include "ztOpenSGUtils_export.h"

namespace ztMaterials
{

/// The node whose core is the scene's osg::MaterialPool: the first one of a walk that sees a node before its children
/// and the children in their order. Where one pool has come into the tree by Node::setCore() and Node::addChild(), it
/// is found without a walk, even if a copied node (Node::shallowCopy()) with a pool comes before it.
///
/// \param start  where to search; null finds nothing
/// \param wholeTree  search from the topmost node above `start` rather than from `start` itself
/// \param recursive  search all nodes below too, rather than that one node
/// \return borrowed, or null
ZTOPENSGUTILS_EXPORT osg::NodePtr findMaterialPool(osg::NodePtr const& start, bool wholeTree, bool recursive);

} // namespace ztMaterials
