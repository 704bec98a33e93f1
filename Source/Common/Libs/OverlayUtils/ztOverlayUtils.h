/// \file
/// Screen overlays: text labels and pictures that stay fixed in a viewport, in front of the rendered scene, and that
/// can be stamped onto an image.
///
/// An overlay is a node with an osg::Overlay core under the scene's pool root. The host writes the core's fields and
/// marks what it wrote; the library renders, places, shows and composites.
///
/// \code
/// osg::NodePtr node = ztOverlays::createOverlay(ztOverlays::getOverlayPoolRoot());
/// osg::OverlayPtr label = osg::dynamicCast<osg::Overlay>(node->core);
/// label->text = "Frame 12";
/// osg::markChanged(label, osg::OverlayBase::TextFieldMask);
/// ztOverlays::updateAllOverlays(viewport);
/// \endcode
///
/// Sizes and coordinates are pixels of the target, which is a viewport or an image, y up from the lower edge. Pointers
/// in arguments and results are borrowed. Nothing here reports an error: a null argument, a node that is no overlay and
/// a missing pool, image or viewport make an operation do less or nothing. Any value of a numeric field or argument is
/// safe, whatever it then looks like.
///
/// An overlay ends in this order: osg::Viewport::subForeground() takes its foreground out of each viewport that may
/// show it, attached once or more often, hidden or not; then its node leaves its parent by osg::Node::subChild(), and
/// the parent is marked with ChildrenFieldMask.
///
/// Where memory is lacking, std::bad_alloc or std::length_error is thrown. An operation on one overlay or list has then
/// happened wholly or not at all, but that a text may be blank and `dirty`; of several overlays each has been dealt
/// with or not. Qt is less careful: if it fails while it lays a text out, memory of its own may be lost, and other
/// threads' texts may wait for ever.
///
/// Everything runs on the calling thread. Threads can work on overlays of their own at the same time, as long as these
/// show no common osg::Image; what changes the children of one node, as making an overlay under it does, is one
/// thread's at a time, and nobody searches or walks a pool meanwhile that holds the node. All may ask for the pool
/// root. Threads with a scene each say so with ztOpenSGUtils::RootScope.
///
/// Text needs the host's QGuiApplication; without one a text overlay is blank and stays `dirty`. Beside the picture it
/// takes about 40 bytes a character and 400 a line while it is rendered. `text` and `font` are shorter than 2 GiB.
#pragma once

#include "OSGOverlay.h"
#include "OSGViewport.h"
#include "ztOverlayUtils_export.h"

#include <functional>
#include <vector>

namespace ztOverlays
{

using osg::ImagePtr;
using osg::OverlayPtr;
using osg::PolygonForeground2Ptr;
using osg::ViewportPtr;

/// \name Pool
/// \{

/// The node under which the current scene's overlays hang. It is made if the scene has a material pool and no such node
/// yet; null without a pool. The current scene is that of ztOpenSGUtils::getRoot(), and the first pool of a walk over
/// the whole tree that the root stands in is the scene's.
ZTOVERLAYUTILS_EXPORT osg::NodePtr getOverlayPoolRoot();

/// The pool root of the tree that a node is in, null if there is none or none has been made. Of several pools it is
/// that of the first, as ztMaterials::findMaterialPool() finds it. A root hangs in one tree only, even if several have
/// nodes with its pool.
ZTOVERLAYUTILS_EXPORT osg::NodePtr getOverlayPoolRootForNode(osg::NodePtr const& node);

/// Reverses the order of the overlays directly under the root that getOverlayPoolRootForNode() gives.
ZTOVERLAYUTILS_EXPORT void reverseOverlaysSGOrder(osg::NodePtr const& node);

/// \}
/// \name Making
/// \{

/// A new overlay with default settings and a blank image, appended to the children of `parent`. Under a parent with an
/// osg::Switch core it starts hidden (`travMask` 0), else shown. A null parent: the overlay hangs nowhere, its count is
/// 0 and it is the caller's.
ZTOVERLAYUTILS_EXPORT osg::NodePtr createOverlay(osg::NodePtr const& parent);

/// A new overlay with the settings of another, appended to the children of `parent`, which may be null. A picture is
/// shared; a text's rendering is not, and the duplicate is blank until it is rendered. Its foreground is active unless
/// a node above is inactive. Name, visibility and children are not taken over.
/// \return null, and nothing happens, if `source` is null
ZTOVERLAYUTILS_EXPORT osg::NodePtr duplicateOverlay(osg::NodePtr const& parent, OverlayPtr const& source);

/// \}
/// \name Lookup
///
/// Both search the current scene's pool, hidden nodes and nodes that are no overlays too, in the order of
/// osg::traverse(), and compare names as ztNodeUtils::getName() gives them byte by byte: the node's own, else its
/// core's, else that of the core's type. The name must not be null.
/// \{

/// The first node of a name, or null.
ZTOVERLAYUTILS_EXPORT osg::NodePtr findOverlay(char const* name);

/// All nodes of a name.
ZTOVERLAYUTILS_EXPORT std::vector<osg::NodePtr> findOverlays(char const* name);

/// \}
/// \name Rendering
/// \{

/// Renders a text overlay anew for a target of a size, clears `dirty`, and places the overlay. A picture needs no
/// rendering and the rest happens. A text that has nothing to draw (no text, a font size below one point, no
/// QGuiApplication) becomes blank, stays as dirty as it was and isn't placed. A rendering that would take more than 2
/// GiB, or that Qt can't allocate, leaves an image of 0 by 0. An overlay without a foreground gets one.
///
/// A text is never rendered into its `image`. But where `contentType` turns to ContentText and `image` to another one
/// between two updates, the overlay still shows the old picture, and the text is rendered into that. A material that
/// doesn't begin with an osg::TextureChunk has no place for a picture: a text stays as dirty as it was.
ZTOVERLAYUTILS_EXPORT void updateOverlayImage(OverlayPtr const& overlay, int viewportWidth, int viewportHeight);

/// The same for a node's overlay and the viewport's own size in pixels.
ZTOVERLAYUTILS_EXPORT void updateOverlayImage(osg::NodePtr const& node, ViewportPtr const& viewport);

/// \}
/// \name Size and placement
/// \{

/// The size that the overlays of a viewport are laid out for: its own size in pixels, or the full size of the first
/// osg::TileCameraDecorator among its camera decorators. A sheared stereo decorator directly over a perspective camera
/// widens it by the camera's `aspect` if that is above 1 and heightens it by its inverse if it is below. A null
/// viewport gives 0 by 0. The chain of decorators must be finite.
ZTOVERLAYUTILS_EXPORT void getViewportSize(ViewportPtr const& viewport, int& width, int& height);

/// Places an overlay on a target of a size: writes the foreground's `positions`, and marks them, if a corner has moved
/// by more than 1e-6.
///
/// With a size of w by h the lower left corner is at (width × ax − ax × w + ox, height × ay − ay × h + oy), where a is
/// the `anchor` and o the `offset` times the DPI scales. A text has the size of its image. A picture has the height
/// `size` × DPI scale or `size` × target height, and its own proportions. Nothing happens without a foreground.
ZTOVERLAYUTILS_EXPORT void updateOverlayPosition(OverlayPtr const& overlay, int viewportWidth, int viewportHeight);

/// The same for a node's overlay and the size from getViewportSize().
ZTOVERLAYUTILS_EXPORT void updateOverlayPosition(osg::NodePtr const& node, ViewportPtr const& viewport);

/// \}
/// \name Update
/// \{

/// Brings an overlay up to date for a target of a size: updateOverlayImage() if it is `dirty`, or if its size is
/// relative and its image hasn't the height that follows from it; else updateOverlayPosition().
ZTOVERLAYUTILS_EXPORT void updateOverlay(OverlayPtr const& overlay, int viewportWidth, int viewportHeight);

/// The same for a node's overlay and the size from getViewportSize().
ZTOVERLAYUTILS_EXPORT void updateOverlay(osg::NodePtr const& node, ViewportPtr const& viewport);

/// updateOverlay() for every node of the current scene's pool, hidden ones too.
ZTOVERLAYUTILS_EXPORT void updateAllOverlays(ViewportPtr const& viewport);

/// \}
/// \name Visibility
/// \{

/// Brings the `active` flag of a node's foreground in line: true exactly if the node's `travMask` is 0xFFFFFFFF and no
/// node above, up to the scene's root, is inactive. Marks the flag in any case. The visible walk below looks no higher
/// than the pool root.
ZTOVERLAYUTILS_EXPORT void updateVisibility(osg::NodePtr const& node);

/// Calls the callback with each visible overlay of the current scene's pool: those whose `travMask` and that of all
/// nodes up to the pool root is 0xFFFFFFFF. A node comes before its children, and the children from last to first; an
/// overlay with several nodes comes with each. The callback may change the children of the nodes that it sees, but
/// destroys none of these.
///
/// \throw std::bad_function_call if the callback is empty and there is a visible overlay
ZTOVERLAYUTILS_EXPORT void traverseVisibleOverlays(std::function<void(OverlayPtr&)> const& callback);

/// Appends the visible overlays to the vector, in the order of traverseVisibleOverlays().
ZTOVERLAYUTILS_EXPORT void getAllVisibleOverlays(std::vector<OverlayPtr>& overlays);

/// \}
/// \name Viewport
/// \{

/// Puts the foregrounds of the visible overlays at the front of the viewport's `foregrounds`, in the order of
/// traverseVisibleOverlays(), whether they are there already or not; for an overlay without a foreground null, which
/// osg::Viewport::render() passes over. The entries hold no references: they leave the list before their overlay is
/// destroyed or loses its foreground. Marks the list, even if no overlay is visible; nothing happens if the pool has no
/// nodes at all or the viewport is null. The cost is linear in overlays plus entries.
ZTOVERLAYUTILS_EXPORT void addOverlays(ViewportPtr& viewport);

/// Takes the first entry of each visible overlay's foreground out of the viewport's `foregrounds`; an overlay that has
/// become hidden since keeps its entry. Marks and costs as addOverlays().
ZTOVERLAYUTILS_EXPORT void removeOverlays(ViewportPtr& viewport);

/// Draws the foregrounds of the visible overlays, active or not, in the order of traverseVisibleOverlays(). Neither
/// pointer may be null, and each visible overlay has a foreground: one made by hand, rather than by createOverlay() or
/// duplicateOverlay(), has been updated before. It opens no frame: an osg::DrawFrame of the caller's around it makes it
/// one.
ZTOVERLAYUTILS_EXPORT void drawOverlays(osg::DrawActionBase* action, osg::Viewport* viewport);

/// \}
/// \name Image
/// \{

/// Stamps overlays onto an image, in list order, each over those before it: lays them out for the image's size, blends
/// each one on, and updates them for the viewport's own size in pixels. A null viewport: they stay laid out for the
/// image. Null entries are passed over, repeated ones blended repeatedly; whether an overlay is visible plays no part.
/// Where blending throws, that overlay and those after it stay out of the image, but all are updated for the viewport.
///
/// A picture (`contentType` ContentImage) whose size, cut to whole pixels, isn't its image's is resampled with
/// ztImageBilinearFilter. An overlay's lower left corner is cut to whole pixels, too. A coordinate of that corner below
/// 0 counts from the far edge: −1 is the last pixel. So an overlay that reaches beyond the left or lower edge isn't cut
/// there but comes to lie at the opposite one. A text that has nothing to draw stays where it was and blends nothing.
/// Nor does a picture that would be resampled to a side of more than 2^24 pixels or to more than 2 GiB.
///
/// Overlays that share a foreground are blended where the last of them lies, each with the picture that the foreground
/// shows when its turn comes. The image may be one that overlays of the list show: it is updated like any other, and
/// what it holds when an overlay's turn comes is blended onto it. If only such an overlay holds it, and shows another
/// one from now on, it is blended onto and goes.
ZTOVERLAYUTILS_EXPORT void blendOverlaysOntoImage(std::vector<OverlayPtr> const& overlays, ImagePtr const& image,
                                                  ViewportPtr const& viewport);

/// \}

} // namespace ztOverlays
