#include "OSGMaterialPool.h"
#include "ztMaterials.h"
#include "ztNodeUtils.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"

namespace ztOverlays
{

namespace
{

osg::MaterialPoolPtr findPool(osg::NodePtr const& start)
{
    osg::NodePtr const node = ztMaterials::findMaterialPool(start, true, true);
    return node != osg::NullFC ? osg::dynamicCast<osg::MaterialPool>(node->core) : osg::MaterialPoolPtr();
}

} // namespace

osg::NodePtr getOverlayPoolRoot()
{
    osg::MaterialPoolPtr const pool = findPool(ztOpenSGUtils::getRoot());
    if (pool == osg::NullFC)
        return osg::NullFC;
    pool->initOverlayRoot();
    return pool->overlayRoot;
}

osg::NodePtr getOverlayPoolRootForNode(osg::NodePtr const& node)
{
    osg::MaterialPoolPtr const pool = findPool(node);
    return pool != osg::NullFC ? pool->overlayRoot : osg::NodePtr();
}

void reverseOverlaysSGOrder(osg::NodePtr const& node)
{
    osg::NodePtr const root = getOverlayPoolRootForNode(node);
    if (root != osg::NullFC)
        ztNodeUtils::reverseChildOrder(root);
}

} // namespace ztOverlays
