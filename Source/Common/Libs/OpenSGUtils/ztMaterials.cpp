#include "ztMaterials.h"

#include "OSGMaterialPool.h"

namespace ztMaterials
{

osg::NodePtr findMaterialPool(osg::NodePtr const& start, bool wholeTree, bool recursive)
{
    osg::NodePtr top = start;
    while (wholeTree && top != osg::NullFC && top->parent != osg::NullFC)
        top = top->parent;

    if (recursive && top != osg::NullFC)
        if (osg::NodePtr const only = top->getOnlyPoolNode(); only != osg::NullFC)
            return only;

    osg::NodePtr found;
    osg::traverse(top, [&](osg::NodePtr const& node) {
        if (osg::dynamicCast<osg::MaterialPool>(node->core) != osg::NullFC)
            found = node;
        return found != osg::NullFC || !recursive ? osg::Action::Quit : osg::Action::Continue;
    });
    return found;
}

} // namespace ztMaterials
