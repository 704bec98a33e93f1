#include "Guides.h"

#include "OSGChangeList.h"
#include "OSGDrawAction.h"
#include "OSGMaterialPool.h"
#include "OSGThread.h"
#include "ztImage.h"
#include "ztOpenSGUtils.h"

#include <algorithm>

namespace ztGuides
{

//! [scene]
osg::RefPtr<osg::Node> createScene()
{
    osg::RefPtr<osg::Node> scene(osg::create<osg::Node>());
    scene->setCore(osg::create<osg::MaterialPool>());
    return scene;
}
//! [scene]

osg::RefPtr<osg::Viewport> createViewport(int width, int height)
{
    osg::RefPtr<osg::Viewport> viewport(osg::create<osg::Viewport>());
    viewport->pixelWidth = width;
    viewport->pixelHeight = height;
    osg::markChanged(viewport, osg::Viewport::PixelWidthFieldMask | osg::Viewport::PixelHeightFieldMask);
    return viewport;
}

osg::OverlayPtr overlayOf(osg::NodePtr const& node)
{
    return osg::dynamicCast<osg::Overlay>(node->core);
}

//! [label]
osg::NodePtr addLabel(std::string const& text)
{
    osg::NodePtr const node = ztOverlays::createOverlay(ztOverlays::getOverlayPoolRoot());
    osg::OverlayPtr const label = overlayOf(node);
    label->text = text;
    label->sizeMode = osg::Overlay::SizeRelative;
    label->size = 0.05f;
    osg::markChanged(label,
                     osg::Overlay::TextFieldMask | osg::Overlay::SizeModeFieldMask | osg::Overlay::SizeFieldMask);
    return node;
}
//! [label]

//! [picture]
osg::NodePtr addPicture(QImage const& picture)
{
    // Premultiplied, bottom row first.
    QImage const pixels = picture.convertToFormat(QImage::Format_RGBA8888_Premultiplied).mirrored();
    osg::ImagePtr const image = ztImage::create(pixels.width(), pixels.height(), pixels.constBits());

    osg::NodePtr const node = ztOverlays::createOverlay(ztOverlays::getOverlayPoolRoot());
    osg::OverlayPtr const overlay = overlayOf(node);
    overlay->contentType = osg::Overlay::ContentImage;
    osg::setRefdCP(overlay->image, image); // counted
    overlay->size = 48;
    osg::markChanged(overlay,
                     osg::Overlay::ContentTypeFieldMask | osg::Overlay::ImageFieldMask | osg::Overlay::SizeFieldMask);
    return node;
}
//! [picture]

namespace
{

//! [show]
void show(osg::NodePtr const& node, bool isShown)
{
    node->travMask = isShown ? osg::Node::AllTravMask : 0;
    osg::markChanged(node, osg::Node::TravMaskFieldMask);
    ztOverlays::updateVisibility(node); // render() draws active foregrounds only
}
//! [show]

/// How often texts have been rendered: an update marks `dirty` alone once it has done so.
std::size_t takeRenderings(osg::ChangeList& changes)
{
    auto const& entries = changes.getEntries();
    auto const renderings = std::count_if(entries.begin(), entries.end(), [](osg::ChangeList::Entry const& entry) {
        return entry.event == osg::ChangeList::Event::Changed && entry.mask == osg::Overlay::DirtyFieldMask;
    });
    changes.clear();
    return std::size_t(renderings);
}

void checkMarks(osg::NodePtr const& node, osg::ViewportPtr const& viewport)
{
    osg::OverlayPtr const label = overlayOf(node);
    ztOverlays::updateAllOverlays(viewport);
    expect(!label->dirty, "an update renders");
    //! [marks]
    label->offset = {8, -8};
    osg::markChanged(label, osg::Overlay::OffsetFieldMask);
    expect(!label->dirty, "the next update only places");

    label->text = "Take 4";
    osg::markChanged(label, osg::Overlay::TextFieldMask);
    expect(label->dirty, "the next update renders");
    //! [marks]
}

void checkHiding(osg::NodePtr const& node, osg::ViewportPtr viewport)
{
    ztOverlays::addOverlays(viewport);
    show(node, false);
    expect(viewport->foregrounds.size() == 1, "a hidden overlay stays attached");
    expect(!overlayOf(node)->foreground->active, "it isn't drawn");
    ztOverlays::removeOverlays(viewport);
    expect(viewport->foregrounds.size() == 1, "removeOverlays() passes it over");
    show(node, true);
}

//! [remove]
void removeOverlay(osg::NodePtr const& node, std::vector<osg::ViewportPtr> const& viewports)
{
    for (osg::ViewportPtr const& viewport : viewports)
        viewport->subForeground(overlayOf(node)->foreground); // every entry, hidden or not
    osg::NodePtr const parent = node->parent;
    parent->subChild(node); // destroys the node unless something else holds it
    osg::markChanged(parent, osg::Node::ChildrenFieldMask);
}
//! [remove]

//! [documents]
void updateDocument(osg::NodePtr const& root, osg::ViewportPtr const& viewport)
{
    ztOpenSGUtils::RootScope const scope(root); // this thread's current scene as long as the scope lasts
    ztOverlays::updateAllOverlays(viewport);
}
//! [documents]

void checkDocuments(osg::ViewportPtr const& viewport)
{
    auto const other = createScene();
    osg::NodePtr const label = [&] {
        ztOpenSGUtils::RootScope const scope(other);
        return addLabel("Of another document");
    }();
    ztOverlays::updateAllOverlays(viewport);
    expect(overlayOf(label)->dirty, "a scene is for itself");
    updateDocument(other, viewport);
    expect(!overlayOf(label)->dirty, "in the scope it is the current one");
}

//! [viewports in turn]
void drawInTurn(std::vector<osg::ViewportPtr> const& viewports, osg::DrawActionBase& action)
{
    for (osg::ViewportPtr const& viewport : viewports)
    {
        ztOverlays::updateAllOverlays(viewport);
        viewport->render(&action);
    }
}
//! [viewports in turn]

//! [viewports side by side]
/// A copy of an overlay for one viewport alone.
osg::NodePtr addCopy(osg::OverlayPtr const& source, osg::ViewportPtr const& viewport)
{
    osg::NodePtr const node = ztOverlays::duplicateOverlay(ztOverlays::getOverlayPoolRoot(), source);
    viewport->foregrounds.push_back(overlayOf(node)->foreground);
    osg::markChanged(viewport, osg::Viewport::ForegroundsFieldMask);
    return node;
}
//! [viewports side by side]

class NoDrawing : public osg::DrawActionBase
{
    void drawPolygon(osg::TexturedPolygon const&, osg::Viewport&) override {}
};

void checkViewports(osg::NodePtr const& node)
{
    auto const upper = createViewport(1280, 720), lower = createViewport(1280, 360);
    NoDrawing action;
    osg::ChangeList changes;
    osg::PThreadBase::setCurrentChangeList(&changes);
    drawInTurn({upper, lower}, action);
    takeRenderings(changes);
    drawInTurn({upper, lower}, action);
    expect(takeRenderings(changes) == 2, "a text of relative size is rendered for each height, in each frame");

    osg::NodePtr const copy = addCopy(overlayOf(node), lower);
    auto const update = [&] {
        ztOverlays::updateOverlay(node, upper);
        ztOverlays::updateOverlay(copy, lower);
    };
    update();
    takeRenderings(changes);
    update();
    expect(takeRenderings(changes) == 0, "with an overlay for each viewport nothing is rendered");
    osg::PThreadBase::setCurrentChangeList(nullptr);
    removeOverlay(copy, {upper, lower});
    expect(lower->foregrounds.empty(), "nothing is left in the viewport");
}

} // namespace

void hosting()
{
    //! [root]
    ztOpenSGUtils::setRoot(createScene()); // holds the scene until another root, or null, is set
    //! [root]
    auto viewport = createViewport(1280, 720);
    osg::NodePtr const label = addLabel("Take 3");
    checkMarks(label, viewport);
    checkHiding(label, viewport);
    ztOverlays::addOverlays(viewport);
    show(label, false);
    removeOverlay(label, {viewport});
    expect(viewport->foregrounds.empty(), "a removed overlay leaves nothing behind");
    checkDocuments(viewport);
    checkViewports(addLabel("Take 5"));
}

} // namespace ztGuides
