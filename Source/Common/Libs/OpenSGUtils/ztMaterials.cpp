#include "ztMaterials.h"

#include "OSGMaterialPool.h"

namespace ztMaterials
{

namespace
{

bool isPool(osg::NodePtr const& node)
{
    return node != osg::NullFC && osg::dynamicCast<osg::MaterialPool>(node->core) != osg::NullFC;
}

} // namespace

osg::NodePtr findMaterialPool(osg::NodePtr const& start, bool wholeTree, bool recursive)
{
    osg::NodePtr top = start;
    while (wholeTree && top != osg::NullFC && top->parent != osg::NullFC)
        top = top->parent;

    osg::NodePtr const only = recursive && top != osg::NullFC ? top->getOnlyPoolNode() : osg::NodePtr();
    if (isPool(only))
        return only;

    osg::NodePtr found;
    osg::traverse(top, [&](osg::NodePtr const& node) {
        if (isPool(node))
            found = node;
        return found != osg::NullFC || !recursive ? osg::Action::Quit : osg::Action::Continue;
    });
    return found;
}

} // namespace ztMaterials
