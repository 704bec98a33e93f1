#include "ztOpenSGUtils.h"

namespace ztOpenSGUtils
{

namespace
{
osg::NodePtr currentRoot;
}

osg::NodePtr getRoot()
{
    return currentRoot;
}

void setRoot(osg::NodePtr const& root)
{
    osg::setRefdCP(currentRoot, root);
}

} // namespace ztOpenSGUtils
