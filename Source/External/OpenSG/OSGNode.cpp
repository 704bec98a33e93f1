#include "OSGNode.h"

#include "OSGMaterialPool.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace osg::v1
{

ZT_ABSTRACT_CONTAINER_TYPE(NodeCore, AttachmentContainer);
ZT_CONTAINER_TYPE(Node, AttachmentContainer);
ZT_CONTAINER_TYPE(Group, NodeCore);
ZT_CONTAINER_TYPE(Switch, Group);

namespace
{

/// In a list without repeated entries.
std::vector<NodePtr>::const_iterator findFromBothEnds(std::vector<NodePtr> const& nodes, NodePtr const& node)
{
    auto last = nodes.end();
    for (auto first = nodes.begin(); first != last; ++first)
    {
        if (*first == node)
            return first;
        if (*--last == node)
            return last;
        if (first == last)
            break;
    }
    return nodes.end();
}

} // namespace

// A tree is destroyed without recursion, however deep it is and the pools in it are. Meanwhile a node's children stand
// in reverse order, and `parent` leads from a node that goes to the one that it goes with.
Node::~Node()
{
    parent = NullFC; // which has let go of this node, or ended
    std::reverse(children.begin(), children.end());
    for (Node* node = this; node;)
        if (Node* const next = node->letGoOfNext())
        {
            next->parent = NodePtr(node);
            std::reverse(next->children.begin(), next->children.end());
            node = next;
        }
        else
        {
            Node* const above = node->parent.get();
            node->parent = NullFC;
            if (node != this)
                destroy(NodePtr(node));
            node = above;
        }
}

Node* Node::letGoOfNext()
{
    Node* const child = letGoOfChildren();
    return child ? child : letGoOfCore();
}

Node* Node::letGoOfChildren()
{
    while (!children.empty())
    {
        NodePtr const child = children.back();
        children.pop_back();
        if (child != NullFC && child->parent.get() == this)
            child->parent = NullFC;
        if (!takeRef(child))
            continue;
        if (!child->children.empty())
            return child.get();
        destroy(child);
    }
    return nullptr;
}

Node* Node::letGoOfCore()
{
    auto const pool = dynamicCast<MaterialPool>(core);
    if (pool == NullFC || !pool->_isGoing)
    {
        if (core != NullFC)
            core->_parents.remove(this);
        if (!takeRef(core))
        {
            core = NullFC;
            return nullptr;
        }
    }
    if (pool != NullFC && !std::exchange(pool->_isGoing, true))
        if (NodePtr const root = std::exchange(pool->overlayRoot, NullFC); takeRef(root))
            return root.get();
    destroy(std::exchange(core, NullFC));
    return nullptr;
}

void Node::leaveCore()
{
    if (core != NullFC && core->_parents.remove(this))
        subPoolNodes(asPoolNodes());
}

void Node::leaveParent()
{
    if (parent == NullFC)
        return;
    parent->subPoolNodes(_poolNodes);
    parent = NullFC;
}

Node::PoolNodes Node::asPoolNodes() const
{
    if (dynamicCast<MaterialPool>(core) == NullFC)
        return {};
    return {1, reinterpret_cast<std::uintptr_t>(this)};
}

void Node::addPoolNodes(PoolNodes const& added)
{
    if (added.count == 0)
        return;
    for (Node* above = this; above; above = above->parent.get())
    {
        above->_poolNodes.count += added.count;
        above->_poolNodes.addresses ^= added.addresses;
    }
}

void Node::subPoolNodes(PoolNodes const& removed)
{
    addPoolNodes({0 - removed.count, removed.addresses});
}

NodePtr Node::getOnlyPoolNode() const
{
    return _poolNodes.count == 1 ? NodePtr(reinterpret_cast<Node*>(_poolNodes.addresses)) : NodePtr();
}

void Node::setCore(NodeCorePtr const& newCore)
{
    if (core == newCore)
        return;
    if (newCore != NullFC)
        newCore->_parents.makeRoom(); // what follows can't fail
    leaveCore();
    setRefdCP(core, newCore);
    if (core == NullFC)
        return;
    core->_parents.push_back(NodePtr(this));
    addPoolNodes(asPoolNodes());
}

bool Node::canAdopt(NodePtr const& child) const
{
    for (Node const* above = this; above; above = above->parent.get())
        if (above == child.get())
            return false;
    return child != NullFC;
}

void Node::addChild(NodePtr const& child)
{
    insertChild(std::numeric_limits<std::size_t>::max(), child);
}

void Node::insertChild(std::size_t index, NodePtr const& child)
{
    if (!canAdopt(child))
        return;

    NodePtr const added = child;
    makeRoom(children); // what follows can't fail
    addRef(added);
    if (added->parent != NullFC)
        added->parent->subChild(added);
    added->leaveParent();
    children.insert(children.begin() + std::ptrdiff_t(std::min(index, children.size())), added);
    added->parent = NodePtr(this);
    addPoolNodes(added->_poolNodes);
}

void Node::replaceChild(NodePtr const& old, NodePtr const& child)
{
    NodePtr const replaced = old;
    if (replaced == child || findFromBothEnds(children, replaced) == children.end() || !canAdopt(child))
        return;
    addChild(child);
    auto const place = findFromBothEnds(children, replaced) - children.begin();
    std::rotate(children.begin() + place, children.end() - 1, children.end());
    subChild(replaced);
}

void Node::subChild(NodePtr const& child)
{
    auto const entry = findFromBothEnds(children, child);
    if (entry == children.end())
        return;
    NodePtr const removed = *entry;
    children.erase(entry);
    if (removed != NullFC && removed->parent.get() == this) // a copy's children have another parent
        removed->leaveParent();
    subRef(removed);
}

Action::ResultE traverse(NodePtr const& start, std::function<Action::ResultE(NodePtr const&)> const& callback)
{
    return traverse<decltype(callback)>(start, callback);
}

} // namespace osg::v1
