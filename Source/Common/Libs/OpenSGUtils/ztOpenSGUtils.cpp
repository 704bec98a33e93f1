#include "ztOpenSGUtils.h"

namespace ztOpenSGUtils
{

namespace
{
osg::NodePtr currentRoot;
/// That of the innermost RootScope.
thread_local osg::NodePtr const* threadRoot = nullptr;
} // namespace

osg::NodePtr getRoot()
{
    return threadRoot ? *threadRoot : currentRoot;
}

void setRoot(osg::NodePtr const& root)
{
    osg::setRefdCP(currentRoot, root);
}

RootScope::RootScope(osg::NodePtr const& root) : _root(root), _outer(threadRoot)
{
    threadRoot = &_root;
}

RootScope::~RootScope()
{
    threadRoot = _outer;
}

} // namespace ztOpenSGUtils
