#include "OSGMaterialPool.h"

namespace osg::v1
{

ZT_CONTAINER_TYPE(MaterialPool, NodeCore);

MaterialPool::~MaterialPool()
{
    subRef(overlayRoot);
}

void MaterialPool::initOverlayRoot()
{
    if (overlayRoot != NullFC)
        return;
    NodePtr const root = create<Node>();
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
}

} // namespace osg::v1
