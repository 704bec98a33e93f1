#include "ztNodeUtils.h"
#include "ztOverlayUtils.h"

#include <cstring>

namespace ztOverlays
{

namespace
{

bool isCalled(osg::NodePtr const& node, char const* name)
{
    return std::strcmp(ztNodeUtils::getName(node), name) == 0;
}

} // namespace

osg::NodePtr findOverlay(char const* name)
{
    osg::NodePtr found;
    osg::traverse(getOverlayPoolRoot(), [&found, name](osg::NodePtr const& node) {
        if (!isCalled(node, name))
            return osg::Action::Continue;
        found = node;
        return osg::Action::Quit;
    });
    return found;
}

std::vector<osg::NodePtr> findOverlays(char const* name)
{
    std::vector<osg::NodePtr> found;
    osg::traverse(getOverlayPoolRoot(), [&found, name](osg::NodePtr const& node) {
        if (isCalled(node, name))
            found.push_back(node);
        return osg::Action::Continue;
    });
    return found;
}

} // namespace ztOverlays
