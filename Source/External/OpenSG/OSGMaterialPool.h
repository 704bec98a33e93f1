/// \file
/// The core under which a scene keeps what its parts share.
#pragma once

#include "OSGNode.h"

#include <atomic>

namespace osg::v1
{

class ZTOPENSG_EXPORT MaterialPoolBase : public NodeCore
{
  public:
    /// The node under which all overlays hang, counted; null until initOverlayRoot().
    ZT_FIELD(NodeCore, 0, OverlayRoot, overlayRoot, NodePtr);
    static constexpr UInt16 FieldEnd = NodeCore::FieldEnd + 1;
};

/// The pool core of a scene. The destructor of a derived class may find its `overlayRoot` gone.
class ZTOPENSG_EXPORT MaterialPool : public MaterialPoolBase
{
    ZT_CONTAINER(MaterialPool)

  public:
    /// Makes sure that `overlayRoot` holds a node. A new one is a group under the node that has this core, if there is
    /// one, so that a search that starts at an overlay finds the pool. Marks the new node (but not its core), this pool
    /// and the node above. Threads may call it at the same time: one of them makes the node, and all have it
    /// afterwards.
    void initOverlayRoot();

  protected:
    ~MaterialPool() override;

  private:
    friend class Node;

    /// Whether the node that had the last reference has begun to destroy it.
    bool _isGoing = false;
    /// Whether initOverlayRoot() has come to its end; it is asked without the lock that guards `overlayRoot` till then.
    NotCopied<std::atomic<bool>> _isOverlayRootMade{};
};

using MaterialPoolPtr = FCPtr<MaterialPool>;

} // namespace osg::v1
