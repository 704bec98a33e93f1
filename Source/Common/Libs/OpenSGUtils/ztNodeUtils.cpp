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
    if (node.travMask != osg::Node::AllTravMask)
        return true;
    osg::SwitchPtr const core = osg::dynamicCast<osg::Switch>(node.core);
    return core != osg::NullFC && !chooses(*core, node.children, child);
}

/// A node has come below `parent`, from `before`, which may be null.
void markMove(osg::NodePtr const& before, osg::NodePtr const& parent)
{
    if (before != osg::NullFC && before != parent)
        osg::markChanged(before, osg::Node::ChildrenFieldMask);
    osg::markChanged(parent, osg::Node::ChildrenFieldMask);
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

void moveChild(osg::NodePtr const& parent, std::size_t index, osg::NodePtr const& child)
{
    if (parent == osg::NullFC || child == osg::NullFC)
        return;
    osg::NodePtr const below = parent, moved = child, before = child->parent;
    below->insertChild(index, moved);
    if (moved->parent == below)
        markMove(before, below);
}

void replaceChild(osg::NodePtr const& old, osg::NodePtr const& child)
{
    if (old == osg::NullFC || old->parent == osg::NullFC || child == osg::NullFC || child == old)
        return;
    osg::NodePtr const below = old->parent, replaced = old, moved = child, before = child->parent;
    below->replaceChild(replaced, moved);
    if (moved->parent == below)
        markMove(before != replaced ? before : osg::NullFC, below);
}

void rename(osg::NodePtr const& node, std::string const& name)
{
    osg::setName(node, name);
    osg::markChanged(node->findAttachment(osg::Name::getClassType().getGroupId()), osg::Name::NameFieldMask);
}

void reverseChildOrder(osg::NodePtr const& node)
{
    if (node == osg::NullFC)
        return;
    std::reverse(node->children.begin(), node->children.end());
    osg::markChanged(node, osg::Node::ChildrenFieldMask);
}

} // namespace ztNodeUtils
