/// \file
/// Questions to and changes of nodes.
#pragma once

#include "OSGNode.h"
#include "ztOpenSGUtils_export.h"

namespace ztNodeUtils
{

/// Whether a node above the given one is inactive: its `travMask` isn't 0xFFFFFFFF, or it is an osg::Switch that
/// doesn't choose the branch with the given node. The node's own `travMask` plays no part. Null: false.
ZTOPENSGUTILS_EXPORT bool hasInActiveParent(osg::NodePtr const& node);

/// A node's name as osg::NodeUtils::getName() finds it; the empty string where it finds none, and for null. Never null,
/// to be read at once.
ZTOPENSGUTILS_EXPORT char const* getName(osg::NodePtr const& node);

/// Reverses the order of a node's children and marks the node with ChildrenFieldMask. Null: nothing happens.
ZTOPENSGUTILS_EXPORT void reverseChildOrder(osg::NodePtr const& node);

} // namespace ztNodeUtils
