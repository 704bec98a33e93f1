/// \file
/// The current scene.
#pragma once

#include "OSGNode.h"
#include "OSGRefPtr.h"
#include "ztOpenSGUtils_export.h"

namespace ztOpenSGUtils
{

/// The root of the current scene, borrowed: that of the calling thread's innermost RootScope; else the one of
/// setRoot(), null until one is set.
ZTOPENSGUTILS_EXPORT osg::NodePtr getRoot();

/// Makes a node the root of the current scene, for all threads without a RootScope. The root is counted: a scene that
/// nothing else holds goes when another root, or null, takes its place. Not for use while another such thread asks for
/// the current scene or works on it.
ZTOPENSGUTILS_EXPORT void setRoot(osg::NodePtr const& root);

/// A current scene of the calling thread's own while a scope lasts, for hosts with several documents and for threads
/// with a scene each:
///
/// \code
/// ztOpenSGUtils::RootScope const scope(document.root);
/// ztOverlays::updateAllOverlays(document.viewport);
/// \endcode
///
/// Scopes of a thread lie within each other, and the innermost counts.
class ZTOPENSGUTILS_EXPORT RootScope
{
  public:
    /// \param root  counted until the end of the scope; with null the thread has no current scene meanwhile
    explicit RootScope(osg::NodePtr const& root);
    RootScope(RootScope const&) = delete;
    RootScope& operator=(RootScope const&) = delete;
    ~RootScope();

  private:
    osg::RefPtr<osg::Node> const _root;
    osg::NodePtr const* const _outer;
};

} // namespace ztOpenSGUtils
