#include "OSGNode.h"

#include <algorithm>

namespace osg
{

OSG_ABSTRACT_CONTAINER_TYPE(NodeCore, AttachmentContainer);
OSG_CONTAINER_TYPE(Node, AttachmentContainer);
OSG_CONTAINER_TYPE(Group, NodeCore);
OSG_CONTAINER_TYPE(Switch, Group);

Node::~Node()
{
    for (NodePtr const& child : children)
    {
        if (child->parent.get() == this)
            child->parent = NullFC;
        subRef(child);
    }
    leaveCore();
    subRef(core);
}

void Node::leaveCore()
{
    if (core == NullFC)
        return;
    auto& parents = core->_parents;
    auto const self = std::find(parents.begin(), parents.end(), NodePtr(this));
    if (self != parents.end())
        parents.erase(self);
}

void Node::setCore(NodeCorePtr const& newCore)
{
    if (core == newCore)
        return;
    leaveCore();
    setRefdCP(core, newCore);
    if (core != NullFC)
        core->_parents.push_back(NodePtr(this));
}

void Node::addChild(NodePtr const& child)
{
    if (child == NullFC)
        return;
    for (Node const* above = this; above; above = above->parent.get())
        if (above == child.get())
            return;

    NodePtr const added = child;
    addRef(added);
    if (added->parent != NullFC)
        added->parent->subChild(added);
    children.push_back(added);
    added->parent = NodePtr(this);
}

void Node::subChild(NodePtr const& child)
{
    auto const entry = std::find(children.begin(), children.end(), child);
    if (entry == children.end())
        return;
    NodePtr const removed = *entry;
    children.erase(entry);
    removed->parent = NullFC;
    subRef(removed);
}

Action::ResultE traverse(NodePtr const& start, std::function<Action::ResultE(NodePtr const&)> const& callback)
{
    if (start == NullFC)
        return Action::Continue;
    if (callback(start) == Action::Quit)
        return Action::Quit;
    for (std::size_t i = 0; i < start->children.size(); ++i)
    {
        NodePtr const child = start->children[i];
        if (traverse(child, callback) == Action::Quit)
            return Action::Quit;
    }
    return Action::Continue;
}

} // namespace osg
