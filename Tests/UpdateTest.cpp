// The pool, the choice between rendering and placing, and visibility.
#include "TestSupport.h"

namespace
{

class HostSwitch : public osg::Switch
{
    ZT_CONTAINER(HostSwitch)
};

ZT_CONTAINER_TYPE(HostSwitch, osg::Switch);

} // namespace

using UpdateTest = SceneTest;

TEST_F(UpdateTest, PoolRootIsMadeOnceByOneOperationAndReversedByAnother)
{
    osg::NodePtr const sceneRoot = osg::create<osg::Node>(), branch = makeNode(osg::NullFC, sceneRoot);
    ztOpenSGUtils::setRoot(sceneRoot); // which alone counts it
    EXPECT_EQ(ztOverlays::getOverlayPoolRoot(), osg::NullFC) << "no pool";

    auto const pool = osg::create<osg::MaterialPool>();
    osg::NodePtr const poolNode = makeNode(pool, sceneRoot);
    EXPECT_EQ(sceneRoot->getOnlyPoolNode(), poolNode);
    EXPECT_EQ(branch->getOnlyPoolNode(), osg::NullFC);
    ztOverlays::reverseOverlaysSGOrder(branch);
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(branch), osg::NullFC) << "not made by these";
    Recorder recorder;
    osg::NodePtr const root = ztOverlays::getOverlayPoolRoot();
    EXPECT_EQ(recorder.take({{"R", root}, {"Pool", pool}, {"Node", poolNode}}),
              "+ !R +R !Pool.overlayRoot +R !Node.children");
    {
        ztOpenSGUtils::RootScope const outer(osg::NullFC);
        EXPECT_EQ(ztOverlays::getOverlayPoolRoot(), osg::NullFC) << "this thread has no scene";
        ztOpenSGUtils::RootScope const inner(sceneRoot);
        EXPECT_EQ(ztOverlays::getOverlayPoolRoot(), root);
    }
    EXPECT_EQ(ztOpenSGUtils::getRoot(), sceneRoot);
    osg::NodePtr const a = ztOverlays::createOverlay(root), b = ztOverlays::createOverlay(root);
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(ztOverlays::createOverlay(b)), root) << "found from an overlay";
    recorder.take();
    ztOverlays::reverseOverlaysSGOrder(branch);
    EXPECT_EQ(root->children, (std::vector{b, a}));
    EXPECT_EQ(recorder.take({{"R", root}}), "!R.children");
    osg::setRefdCP(pool->overlayRoot, osg::NullFC);
    EXPECT_NE(ztOverlays::getOverlayPoolRoot(), osg::NullFC) << "made anew";
    poolNode->setCore(osg::create<osg::Group>());
    EXPECT_EQ(ztOverlays::getOverlayPoolRoot(), osg::NullFC) << "no pool any more";
}

TEST_F(UpdateTest, ChoosesBetweenRenderingAndPlacing)
{
    // The marks: `!` the image, `!.dirty` that it isn't dirty any more, `!.positions` the placement. A picture is 100
    // pixels high.
    std::string const text = "text", hidden("\0text", 5), picture = "picture";
    for (auto const& [name, content, sizeMode, size, dirty, targetHeight, expected] :
         {std::tuple{"dirty", text, 0, 12.0f, true, 1000, "! !.dirty !.positions"},
          {"dirty picture", picture, 0, 12.0f, true, 1000, "!.dirty !.positions"},
          {"without text", hidden, 0, 12.0f, true, 1000, "!"},
          {"below a point", text, 0, 0.9f, true, 1000, "!"},
          {"absolute", text, 0, 0.2f, false, 1000, "!.positions"},
          {"relative, same whole pixels", text, 1, 0.1f, false, 1009, "!.positions"},
          {"relative, a pixel more", text, 1, 0.1f, false, 1010, "! !.dirty !.positions"},
          {"relative, rounded to float", picture, 1, 100.0f / 103, false, 103, "!.positions"},
          {"another mode", text, 2, 0.1f, false, 2000, "!.positions"}})
    {
        osg::OverlayPtr const overlay =
            content == picture ? makePicture(makeImage(50, 100), 0.1f, 1) : makeText("text", 0.1f, 1);
        overlay->backgroundTransparency = {};
        ztOverlays::updateOverlayImage(overlay, 1000, 1000);
        overlay->sizeMode = sizeMode;
        overlay->size = size;
        overlay->dirty = dirty;
        overlay->text = content;
        overlay->anchor.x = 1; // so that a placement shows
        Recorder recorder;
        ztOverlays::updateOverlay(overlay, 1000, targetHeight);
        EXPECT_EQ(recorder.take(), expected) << name;
        bool const isBlank = expected == std::string("!");
        EXPECT_EQ(shownImage(overlay)->pixels == makeImage(16, 16)->pixels, isBlank) << name;
        EXPECT_EQ(overlay->dirty, dirty && isBlank) << name;
    }
}

class VisibleWalkTest : public SceneTest, public testing::WithParamInterface<int>
{
};

// Depths below and beyond what is walked by recursion.
INSTANTIATE_TEST_SUITE_P(Depths, VisibleWalkTest, testing::Values(0, 63, 100));

TEST_P(VisibleWalkTest, IsDepthFirstChildrenLastToFirst)
{
    ztOverlays::traverseVisibleOverlays({}); // no scene
    osg::NodePtr root = makeScene();
    for (int depth = 0; depth < GetParam(); ++depth)
        root = makeNode(osg::NullFC, root);
    osg::NodePtr const a = makeNode(makeText("A"), root), b = makeNode(makeText("B"), root);
    osg::NodePtr const group = makeNode(osg::create<osg::Group>(), makeNode(makeText("C"), root));
    group->children.push_back(osg::NullFC);
    makeNode(makeText("D"), a);
    makeNode(makeText("E"), group);
    auto const seen = [&b] {
        std::string names;
        std::vector<osg::OverlayPtr> overlays{overlayOf(b)}; // to be kept
        ztOverlays::getAllVisibleOverlays(overlays);
        for (osg::OverlayPtr const& overlay : overlays)
            names += overlay->text;
        return names;
    };
    EXPECT_EQ(seen(), "BCEBAD");
    a->travMask -= 1;
    EXPECT_EQ(seen(), "BCEB") << "one bit missing hides what is below, too";
    group->travMask = 0;
    EXPECT_EQ(seen(), "BCB");
    std::string visited;
    ztOverlays::traverseVisibleOverlays([&](osg::OverlayPtr& overlay) {
        visited += overlay->text;
        overlay = osg::NullFC; // of no effect on the walk
        while (root->children.size() > 1)
            root->subChild(root->children.back());
        a->travMask = 0xFFFFFFFF;
        if (visited == "CA")
            makeNode(makeText("F"), a);
    });
    EXPECT_EQ(visited, "CAFD") << "the callback may change what is below";
}

TEST_F(UpdateTest, HiddenAndNestedOnesAreUpdatedTooOnce)
{
    osg::NodePtr const node = makeNode(makeText("A"), makeScene());
    node->travMask = 0;
    makeNode(makeText("B"), node);
    osg::ViewportPtr const viewport = makeViewport(640, 480);
    Recorder recorder;
    ztOverlays::updateAllOverlays(viewport);
    EXPECT_EQ(recorder.take(), "! !.dirty !.positions ! !.dirty !.positions");
    ztOverlays::updateAllOverlays(viewport);
    EXPECT_EQ(recorder.take(), "") << "quiet";
}

TEST_F(UpdateTest, ActiveFollowsTheNodeAndWhatIsAbove)
{
    constexpr osg::UInt32 all = 0xFFFFFFFF;
    for (auto const& [name, rootMask, nodeMask, choice, shown] : {std::tuple{"all branches", all, all, -1, true},
                                                                  {"own mask", all, all - 1, -1, true},
                                                                  {"one bit above missing", all - 1, all, -1, false},
                                                                  {"chosen branch", all, all, 1, true},
                                                                  {"other branch", all, all, 0, false},
                                                                  {"no such branch", all, all, 7, false},
                                                                  {"no branch", all, all, -2, false}})
    {
        auto const core = osg::create<HostSwitch>();
        osg::NodePtr const root = makeNode(core);
        makeNode(osg::NullFC, root);
        osg::NodePtr const branch = makeNode(osg::NullFC, root), node = ztOverlays::createOverlay(branch);
        core->choice = choice;
        root->travMask = rootMask;
        node->travMask = nodeMask;
        EXPECT_EQ(ztOverlays::createOverlay(root)->travMask, 0u) << "new ones below a switch are hidden";
        osg::NodePtr const duplicate = ztOverlays::duplicateOverlay(branch, overlayOf(node));
        EXPECT_EQ(overlayOf(duplicate)->foreground->active, shown) << name;
        auto const foreground = overlayOf(node)->foreground;
        foreground->active = nodeMask != all || !shown;
        Recorder recorder;
        ztOverlays::updateVisibility(node);
        EXPECT_EQ(foreground->active, shown && nodeMask == all) << name;
        EXPECT_EQ(recorder.take({{"F", foreground}}), "!F.active");
    }
    ztOverlays::updateVisibility(osg::NullFC);
    ztOverlays::updateVisibility(makeNode());
}

TEST_F(UpdateTest, TreesAndChainsMayBeOfAnyDepth)
{
    constexpr int depth = 1000000;
    osg::NodePtr const root = makeScene(), lowest = makeNode(makeText("lowest"));
    osg::NodePtr top = lowest;
    osg::CameraPtr camera = createTile(80, 60);
    for (int i = 0; i < depth; ++i)
    {
        osg::NodePtr const above = osg::create<osg::Node>();
        above->addChild(top);
        top = above;
        auto const decorator = osg::create<osg::ShearedStereoCameraDecorator>();
        osg::setRefdCP(decorator->decoratee, camera);
        camera = decorator;
    }
    root->addChild(top);
    osg::NodePtr pools = osg::create<osg::Node>();
    for (int i = 0; i < depth / 10; ++i)
    {
        auto const pool = osg::create<osg::MaterialPool>();
        osg::setRefdCP(pool->overlayRoot, pools);
        pools = osg::create<osg::Node>();
        pools->setCore(pool);
    }
    osg::subRef(pools);
    osg::ViewportPtr const viewport = makeViewport(20, 10, camera);
    EXPECT_EQ(viewport->getLayoutArea().right, 80.0f);
    int width, height;
    ztOverlays::getViewportSize(viewport, width, height);
    EXPECT_EQ(width, 80);
    osg::setRefdCP(viewport->camera, osg::NullFC);
    ztOverlays::updateAllOverlays(viewport);
    std::vector<osg::OverlayPtr> visible;
    ztOverlays::getAllVisibleOverlays(visible);
    EXPECT_EQ(visible, std::vector{overlayOf(lowest)});
    EXPECT_FALSE(visible.front()->dirty);
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(lowest), root);
    root->subChild(top);
    EXPECT_EQ(lowest->parent, osg::NullFC);
}
