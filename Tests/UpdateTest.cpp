// The pool, the choice between rendering and placing, and visibility.
#include "TestSupport.h"

#include "ztMaterials.h"
#include "ztNodeUtils.h"

namespace
{

using PoolTest = SceneTest;
using UpdateTest = SceneTest;
using VisibleWalkTest = SceneTest;
using VisibilityTest = SceneTest;

TEST_F(PoolTest, RootIsMadeOnceByOneOperationAndReversedByAnother)
{
    osg::NodePtr const sceneRoot = osg::create<osg::Node>(), branch = makeNode(osg::NullFC, sceneRoot);
    ztOpenSGUtils::setRoot(sceneRoot); // which alone counts it
    EXPECT_EQ(ztOverlays::getOverlayPoolRoot(), osg::NullFC) << "no pool";
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(branch), osg::NullFC);

    auto const pool = osg::create<osg::MaterialPool>();
    osg::NodePtr const poolNode = makeNode(pool, sceneRoot);
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(branch), osg::NullFC) << "not made yet";
    ztOverlays::reverseOverlaysSGOrder(branch);
    EXPECT_EQ(pool->overlayRoot, osg::NullFC);

    Recorder recorder;
    osg::NodePtr const root = ztOverlays::getOverlayPoolRoot();
    EXPECT_EQ(recorder.marks({{"root", root}, {"pool", pool}, {"node", poolNode}}), "!root !1pool !4node");
    EXPECT_EQ(root, pool->overlayRoot);
    EXPECT_EQ(ztMaterials::findMaterialPool(branch, false, true), osg::NullFC) << "not below";
    EXPECT_EQ(ztMaterials::findMaterialPool(sceneRoot, true, false), osg::NullFC) << "not the top";
    EXPECT_EQ(ztMaterials::findMaterialPool(poolNode, false, false), poolNode);
    EXPECT_EQ(ztOverlays::getOverlayPoolRoot(), root);
    osg::NodePtr const a = ztOverlays::createOverlay(root), b = ztOverlays::createOverlay(root);
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(ztOverlays::createOverlay(b)), root) << "found from an overlay";
    recorder.clear();
    ztOverlays::reverseOverlaysSGOrder(branch);
    ztOverlays::reverseOverlaysSGOrder(osg::NullFC);
    EXPECT_EQ(root->children, (std::vector{b, a}));
    EXPECT_EQ(recorder.text({{"root", root}}), "!4root");
    ztOpenSGUtils::setRoot(osg::NullFC);
    EXPECT_EQ(ztOverlays::getOverlayPoolRoot(), osg::NullFC) << "no scene";
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(osg::NullFC), osg::NullFC);
}

TEST_F(UpdateTest, ChoosesBetweenRenderingAndPlacing)
{
    char const* const picture = nullptr; // 100 pixels high
    // The marks: `!` the image, `!1000` that it isn't dirty any more, `!8` the placement.
    for (auto const& [name, text, sizeMode, size, dirty, targetHeight, expected] :
         {std::tuple{"dirty", "text", 0, 12.0f, true, 1000, "! !1000 !8"},
          {"dirty picture", picture, 0, 12.0f, true, 1000, "!1000 !8"},
          {"dirty without text", "", 0, 12.0f, true, 1000, "!"},
          {"absolute", "text", 0, 0.2f, false, 1000, "!8"},
          {"relative, same height", "text", 1, 0.1f, false, 1000, "!8"},
          {"relative, same whole pixels", "text", 1, 0.1f, false, 1009, "!8"},
          {"relative, a pixel more", "text", 1, 0.1f, false, 1010, "! !1000 !8"},
          {"relative without text", "", 1, 0.1f, false, 1010, "!"},
          {"relative picture, same height", picture, 1, 0.1f, false, 1000, "!8"},
          {"relative picture, another height", picture, 1, 0.1f, false, 2000, "!1000 !8"},
          {"relative, rounded to float", picture, 1, 100.0f / 103, false, 103, "!8"},
          {"another mode", "text", 2, 0.1f, false, 2000, "!8"}})
    {
        osg::OverlayPtr const overlay = text ? makeText("text") : makePicture(makeImage(50, 100));
        overlay->sizeMode = osg::Overlay::SizeRelative;
        overlay->size = 0.1f;
        ztOverlays::updateOverlayImage(overlay, 1000, 1000);
        overlay->sizeMode = sizeMode;
        overlay->size = size;
        overlay->dirty = dirty;
        overlay->text = text ? text : "";
        overlay->anchor.x = 1; // so that a placement shows
        Recorder recorder;
        ztOverlays::updateOverlay(overlay, 1000, targetHeight);
        EXPECT_EQ(recorder.marks(), expected) << name;
        EXPECT_EQ(overlay->dirty, dirty && overlay->text.empty() && text) << name;
    }
}

TEST_F(UpdateTest, AllReachesHiddenAndNestedOverlaysAndMarksNothingWhenQuiet)
{
    osg::NodePtr parent = makeNode(osg::create<osg::Group>(), makeScene());
    for (int i = 0; i < 2; ++i)
    {
        parent->travMask = 0;
        parent = ztOverlays::createOverlay(parent);
        overlayOf(parent)->text = "text";
        overlayOf(parent)->anchor = {0.5f, 0.5f};
    }
    osg::ViewportPtr const viewport = makeViewport(640, 480);
    Recorder recorder;
    ztOverlays::updateAllOverlays(osg::NullFC);
    EXPECT_EQ(recorder.marks(), "");
    ztOverlays::updateAllOverlays(viewport);
    EXPECT_EQ(recorder.marks(), "! !1000 !8 ! !1000 !8");
    recorder.clear();
    ztOverlays::updateAllOverlays(viewport);
    EXPECT_EQ(recorder.text(), "") << "quiet";
    viewport->pixelWidth = 641;
    ztOverlays::updateAllOverlays(viewport);
    EXPECT_EQ(recorder.text(), "!8 !8") << "a wider viewport only moves them";
}

TEST_F(UpdateTest, BareCoreIsCompletedAndFollowsItsEdits)
{
    osg::OverlayPtr const overlay = hold(osg::create<osg::Overlay>());
    overlay->text = "before";
    overlay->dirty = false;
    ztOverlays::updateOverlay(overlay, 100, 100);
    EXPECT_GT(shownImage(overlay)->width, 16);
    auto const before = shownImage(overlay)->pixels;
    overlay->text = "after";
    osg::markChanged(overlay, osg::Overlay::TextFieldMask);
    ztOverlays::updateOverlay(overlay, 100, 100);
    EXPECT_NE(shownImage(overlay)->pixels, before);
    EXPECT_FALSE(overlay->dirty) << "its own notification raises nothing";
}

/// Adds an overlay that says its name.
osg::NodePtr add(char const* name, osg::NodePtr const& parent)
{
    osg::NodePtr const node = ztOverlays::createOverlay(parent);
    overlayOf(node)->text = name;
    return node;
}

TEST_F(VisibleWalkTest, DepthFirstChildrenLastToFirst)
{
    osg::NodePtr const root = makeScene();
    osg::NodePtr const a = add("A", root), b = add("B", root), c = add("C", root), d = add("D", a);
    osg::NodePtr const group = makeNode(osg::create<osg::Group>(), c);
    add("E", group);
    for (auto const& [name, node, travMask, expected] : {std::tuple{"all shown", root, 0xFFFFFFFF, "DCEBAD"},
                                                         {"a hidden overlay hides what is below", a, 0, "DCEB"},
                                                         {"one bit missing", b, 0xFFFFFFFE, "DCEAD"},
                                                         {"a hidden group", group, 0, "DCBAD"},
                                                         {"a hidden leaf", d, 1, "DCEBA"},
                                                         {"a hidden root", root, 0, "D"}})
    {
        node->travMask = travMask;
        std::vector<osg::OverlayPtr> overlays{overlayOf(d)}; // to be kept
        ztOverlays::getAllVisibleOverlays(overlays);
        std::string seen;
        for (osg::OverlayPtr const& overlay : overlays)
            seen += overlay->text;
        EXPECT_EQ(seen, expected) << name;
        node->travMask = 0xFFFFFFFF;
    }
    EXPECT_EQ(overlayOf(a)->getRefCount(), 1) << "plain copies";
}

TEST_F(VisibleWalkTest, CallbackMayChangeWhatIsBelow)
{
    EXPECT_NO_THROW(ztOverlays::traverseVisibleOverlays({})) << "no scene";
    osg::NodePtr const root = makeScene();
    EXPECT_NO_THROW(ztOverlays::traverseVisibleOverlays({})) << "no overlay";
    for (char const* name : {"A", "B", "C"})
        hold(add(name, root));
    EXPECT_THROW(ztOverlays::traverseVisibleOverlays({}), std::bad_function_call);
    std::string seen;
    ztOverlays::traverseVisibleOverlays([&](osg::OverlayPtr& overlay) {
        seen += overlay->text;
        overlay = osg::NullFC; // of no effect on the walk
        while (root->children.size() > 1)
            root->subChild(root->children.back());
        if (seen == "CA")
            add("D", root->children[0]);
    });
    EXPECT_EQ(seen, "CAD");
}

TEST_F(VisibilityTest, ActiveFollowsTheNodeAndWhatIsAbove)
{
    constexpr osg::UInt32 all = 0xFFFFFFFF;
    for (auto const& [name, rootMask, nodeMask, choice, inactiveAbove, active] :
         {std::tuple{"all shown", all, all, -1, false, true},
          {"own mask", all, all - 1, -1, false, false},
          {"one bit above missing", all - 1, all, -1, true, false},
          {"chosen branch", all, all, 1, false, true},
          {"other branch", all, all, 0, true, false},
          {"no such branch", all, all, 7, true, false},
          {"no branch", all, all, -2, true, false}})
    {
        auto const core = osg::create<osg::Switch>();
        osg::NodePtr const root = makeNode(core);
        makeNode(osg::NullFC, root);
        osg::NodePtr const branch = makeNode(osg::NullFC, root), node = ztOverlays::createOverlay(branch);
        core->choice = choice;
        root->travMask = rootMask;
        node->travMask = nodeMask;
        EXPECT_EQ(ztNodeUtils::hasInActiveParent(node), inactiveAbove) << name;
        osg::NodePtr const duplicate = ztOverlays::duplicateOverlay(branch, overlayOf(node));
        EXPECT_EQ(overlayOf(duplicate)->foreground->active, !inactiveAbove) << name;
        auto const foreground = overlayOf(node)->foreground;
        foreground->active = !active;
        Recorder recorder;
        ztOverlays::updateVisibility(node);
        EXPECT_EQ(foreground->active, active) << name;
        ztOverlays::updateVisibility(node);
        EXPECT_EQ(recorder.text({{"F", foreground}}), "!1F !1F") << "marked each time";
    }
    EXPECT_FALSE(ztNodeUtils::hasInActiveParent(osg::NullFC));
    Recorder recorder;
    ztOverlays::updateVisibility(osg::NullFC);
    ztOverlays::updateVisibility(makeNode());
    EXPECT_EQ(recorder.marks(), "");
}

} // namespace
