/// \file
/// The scene graph's tree: nodes, the cores that make them something, and the walk over them.
#pragma once

#include "OSGAttachment.h"
#include "OSGUserList.h"

#include <cstddef>
#include <functional>
#include <memory_resource>
#include <type_traits>
#include <utility>
#include <vector>

namespace osg::v1
{

class Node;
class NodeCore;

using NodePtr = FCPtr<Node>;
using NodeCorePtr = FCPtr<NodeCore>;

/// What a node is: a group, a switch, an overlay. Several nodes may share a core.
class ZTOPENSG_EXPORT NodeCore : public AttachmentContainer
{
    ZT_ABSTRACT_CONTAINER(NodeCore)

  public:
    /// The nodes that have this core. They are kept by Node::setCore() and hold it, not the other way round.
    UserList<NodePtr> const& getParents() const { return _parents; }

  private:
    friend class Node;

    NotCopied<UserList<NodePtr>> _parents;
};

/// A place in the tree. A node holds a reference on its core and on each child; the child's `parent` holds none.
/// `core`, `children` and `parent` are written through the functions below; only the order of the children, none of
/// which stands there twice, is free. The destructor of a derived class may find its children and core gone.
class ZTOPENSG_EXPORT Node : public AttachmentContainer
{
    ZT_CONTAINER(Node)

    /// The pool nodes of a tree, in a form to which others are added, and from which they are taken, without a search.
    struct PoolNodes
    {
        UInt32 count = 0;
        /// The addresses, combined by exclusive or: that of the node if there is one.
        std::uintptr_t addresses = 0;
    };

    /// Of this node and of those of which it is the `parent`.
    NotCopied<PoolNodes> _poolNodes;

  public:
    /// The `travMask` of a node that is shown to all.
    static constexpr UInt32 AllTravMask = 0xFFFFFFFF;

    ZT_FIELD(AttachmentContainer, 4, Parent, parent, NotCopied<NodePtr>);
    // What walks read comes last in memory: a core that is made next follows closely.
    ZT_FIELD(AttachmentContainer, 3, Core, core, NodeCorePtr);
    ZT_FIELD(AttachmentContainer, 0, TravMask, travMask, UInt32) = AllTravMask;
    ZT_FIELD(AttachmentContainer, 1, NodeFlags, nodeFlags, UInt32) = 0;
    ZT_FIELD(AttachmentContainer, 2, Children, children, std::vector<NodePtr>);
    static constexpr UInt16 FieldEnd = AttachmentContainer::FieldEnd + 5;

    /// Makes `newCore`, which may be null, this node's core. Marks nothing.
    void setCore(NodeCorePtr const& newCore);

    /// Appends a child, which leaves the parent that it had. Nothing happens for null and for a node that would become
    /// its own descendant. Marks nothing: the caller marks this node with ChildrenFieldMask.
    void addChild(NodePtr const& child);

    /// addChild() ahead of the child that stands at an index once `child` has left its parent, or behind all of them
    /// for an index beyond.
    void insertChild(std::size_t index, NodePtr const& child);

    /// Puts `child` in the place of one of this node's children, and lets go of that one. Nothing happens where
    /// addChild() does nothing, and if `old` is none of the children or `child` itself. Marks nothing.
    void replaceChild(NodePtr const& old, NodePtr const& child);

    /// Takes a child out, and with it the reference on it. Nothing happens if it is none of this node's children. Marks
    /// nothing.
    void subChild(NodePtr const& child);

    /// The node with a MaterialPool at or below this one, if it is the only one that has come there with setCore() and
    /// addChild(); else null.
    NodePtr getOnlyPoolNode() const;

  protected:
    ~Node() override;

  private:
    bool canAdopt(NodePtr const& child) const;
    /// Lets go of the children, kept in reverse order, then of the core, up to a node that goes with this one: a child
    /// that has children itself, or the root of a pool.
    /// \return that one, or null
    Node* letGoOfNext();
    Node* letGoOfChildren();
    Node* letGoOfCore();
    void leaveCore();
    void leaveParent();
    /// What this node is itself.
    PoolNodes asPoolNodes() const;
    void addPoolNodes(PoolNodes const& added);
    void subPoolNodes(PoolNodes const& removed);
};

/// A core that only groups its node's children.
class ZTOPENSG_EXPORT Group : public NodeCore
{
    ZT_CONTAINER(Group)
};

using GroupPtr = FCPtr<Group>;

class ZTOPENSG_EXPORT SwitchBase : public Group
{
  public:
    /// Index of the chosen child, or one of Switch::AllChildren and Switch::NoChild.
    ZT_FIELD(Group, 0, Choice, choice, Int32) = -1;
    static constexpr UInt16 FieldEnd = Group::FieldEnd + 1;
};

/// A group that chooses one of its node's children, all of them or none.
class ZTOPENSG_EXPORT Switch : public SwitchBase
{
    ZT_CONTAINER(Switch)

  public:
    static constexpr Int32 AllChildren = -1;
    static constexpr Int32 NoChild = -2;
};

using SwitchPtr = FCPtr<Switch>;

struct Action
{
    /// What a traverse callback wants next.
    enum ResultE
    {
        Continue = 0,
        Quit = 2
    };
};

/// Visits a node and all below it, hidden ones too: a node before its children, the children from first to last. A null
/// start node leads to no visit, nor does a null child. The callback may change the children of the nodes that it sees,
/// but destroys none of these. A tree may be of any depth; beyond 64 levels the walk needs memory.
/// \throw std::bad_alloc if it can't be had
/// \return Quit if a callback returned it, which ends the walk at once; else Continue.
template <class Callback, class = std::enable_if_t<std::is_invocable_v<Callback, NodePtr const&>>>
Action::ResultE traverse(NodePtr const& start, Callback&& callback)
{
    if (start == NullFC)
        return Action::Continue;
    if (callback(start) == Action::Quit)
        return Action::Quit;
    // Each node whose children are being visited, with the index of the next.
    using Levels = std::pmr::vector<std::pair<Node const*, std::size_t>>;
    constexpr std::size_t room = 64;
    alignas(Levels::value_type) std::byte memory[room * sizeof(Levels::value_type)];
    std::pmr::monotonic_buffer_resource resource(memory, sizeof(memory));
    Levels levels(&resource);
    levels.reserve(room);
    levels.emplace_back(start.get(), 0);
    while (!levels.empty())
    {
        auto& [node, next] = levels.back();
        if (next >= node->children.size())
        {
            levels.pop_back();
            continue;
        }
        NodePtr const child = node->children[next++];
        if (child == NullFC)
            continue;
        if (callback(child) == Action::Quit)
            return Action::Quit;
        if (!child->children.empty())
            levels.emplace_back(child.get(), 0);
    }
    return Action::Continue;
}

/// The same with a callback of any kind.
/// \throw std::bad_function_call if the callback is empty and the start node isn't null
ZTOPENSG_EXPORT Action::ResultE traverse(NodePtr const& start,
                                         std::function<Action::ResultE(NodePtr const&)> const& callback);

} // namespace osg::v1
