#include "OSGMaterialPool.h"

#include "OSGRefPtr.h"

#include <mutex>

namespace osg::v1
{

ZT_CONTAINER_TYPE(MaterialPool, NodeCore);

namespace
{
// Recursive, because whoever is told of a change may ask for the root.
std::recursive_mutex overlayRootMutex;
} // namespace

MaterialPool::~MaterialPool()
{
    subRef(overlayRoot);
}

void MaterialPool::initOverlayRoot()
{
    if (_isOverlayRootMade.load(std::memory_order_acquire) && overlayRoot != NullFC)
        return;
    std::lock_guard<std::recursive_mutex> const lock(overlayRootMutex);
    if (overlayRoot != NullFC)
        return;
    if (!getParents().empty())
        makeRoom(getParents().front()->children); // nothing fails once there is a root
    NewPtr<Node> const root;
    root->setCore(create<Group>());
    markChanged(root, AllFieldsMask);
    setRefdCP(overlayRoot, root);
    markChanged(MaterialPoolPtr(this), OverlayRootFieldMask);
    if (!getParents().empty())
    {
        NodePtr const poolNode = getParents().front();
        poolNode->addChild(root);
        markChanged(poolNode, Node::ChildrenFieldMask);
    }
    _isOverlayRootMade.store(true, std::memory_order_release);
}

} // namespace osg::v1
