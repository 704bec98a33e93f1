/// \file
/// What a node is called.
#pragma once

#include "OSGNode.h"
#include "ztOpenSGExt_export.h"

namespace osg::NodeUtils
{

/// A node's name: the string of its osg::Name, which may be empty; else that of its core's osg::Name; else the name of
/// its core's type.
///
/// \return owned by where it was found, to be read at once; null for a null node and for one without a core and an
///     osg::Name
ZTOPENSGEXT_EXPORT char const* getName(NodePtr const& node);

} // namespace osg::NodeUtils
