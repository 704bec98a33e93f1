#include "OSGNodeUtils.h"

namespace osg::NodeUtils
{

namespace
{

/// Null without an osg::Name.
char const* attachedName(AttachmentContainer const& container)
{
    NamePtr const name = dynamicCast<Name>(container.findAttachment(Name::getClassType().getGroupId(), 0));
    return name != NullFC ? name->name.c_str() : nullptr;
}

} // namespace

char const* getName(NodePtr const& node)
{
    if (node == NullFC)
        return nullptr;
    if (char const* name = attachedName(*node))
        return name;
    if (node->core == NullFC)
        return nullptr;
    char const* const name = attachedName(*node->core);
    return name ? name : node->core->getType().getName();
}

} // namespace osg::NodeUtils
