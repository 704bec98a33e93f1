/// \file
/// Questions to and changes of nodes.
#pragma once

#include "OSGNode.h"
#include "ztOpenSGUtils_export.h"

#include <cstddef>
#include <string>

namespace ztNodeUtils
{

/// Whether a node above the given one is inactive: its `travMask` isn't 0xFFFFFFFF, or it is an osg::Switch that
/// doesn't choose the branch with the given node. The node's own `travMask` plays no part. Null: false.
ZTOPENSGUTILS_EXPORT bool hasInActiveParent(osg::NodePtr const& node);

/// A node's name as osg::NodeUtils::getName() finds it; the empty string where it finds none, and for null. Never null,
/// to be read at once.
ZTOPENSGUTILS_EXPORT char const* getName(osg::NodePtr const& node);

/// Makes a node a child of `parent` with osg::Node::insertChild(), and marks `parent`, and the parent that it had
/// before if that is another one, with ChildrenFieldMask. Nothing happens, and nothing is marked, if the one is null or
/// would become its own descendant.
ZTOPENSGUTILS_EXPORT void moveChild(osg::NodePtr const& parent, std::size_t index, osg::NodePtr const& child);

/// Puts a node in the place of a child with osg::Node::replaceChild(), and marks both parents as moveChild() does, the
/// replaced node excepted. Nothing happens, and nothing is marked, if one is null, `old` has no parent, or `child` is
/// `old` or above it.
ZTOPENSGUTILS_EXPORT void replaceChild(osg::NodePtr const& old, osg::NodePtr const& child);

/// Gives a node, which must not be null, a name, and marks the osg::Name that holds it with NameFieldMask.
ZTOPENSGUTILS_EXPORT void rename(osg::NodePtr const& node, std::string const& name);

/// Reverses the order of a node's children and marks the node with ChildrenFieldMask. Null: nothing happens.
ZTOPENSGUTILS_EXPORT void reverseChildOrder(osg::NodePtr const& node);

} // namespace ztNodeUtils
