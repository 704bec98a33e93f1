#include "ztNodeUtils.h"

#include "OSGNodeUtils.h"

#include <algorithm>

namespace ztNodeUtils
{

namespace
{
bool chooses(osg::Switch const& node, std::vector<osg::NodePtr> const& children, osg::NodePtr const& child)
{
    if (node.choice == osg::Switch::AllChildren)
        return true;
    return std::size_t(node.choice) < children.size() && children[std::size_t(node.choice)] == child;
}

bool isInactiveFor(osg::Node const& node, osg::NodePtr const& child)
{
    if (node.travMask != 0xFFFFFFFF)
        return true;
    osg::SwitchPtr const core = osg::dynamicCast<osg::Switch>(node.core);
    return core != osg::NullFC && !chooses(*core, node.children, child);
}
} // namespace

bool hasInActiveParent(osg::NodePtr const& node)
{
    for (osg::NodePtr child = node; child != osg::NullFC; child = child->parent)
        if (child->parent != osg::NullFC && isInactiveFor(*child->parent, child))
            return true;
    return false;
}

char const* getName(osg::NodePtr const& node)
{
    static std::string const empty;
    char const* const name = osg::NodeUtils::getName(node);
    return name ? name : empty.c_str();
}

void reverseChildOrder(osg::NodePtr const& node)
{
    if (node == osg::NullFC)
        return;
    std::reverse(node->children.begin(), node->children.end());
    osg::markChanged(node, osg::Node::ChildrenFieldMask);
}

} // namespace ztNodeUtils
