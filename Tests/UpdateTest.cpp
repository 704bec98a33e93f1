// The pool, the choice between rendering and placing, and visibility.
#include "TestSupport.h"

namespace
{

using PoolTest = SceneTest;
using UpdateTest = SceneTest;
using VisibilityTest = SceneTest;

TEST_F(PoolTest, RootIsMadeOnceAndOnlyByOneOperation)
{
    osg::NodePtr const sceneRoot = makeNode(), branch = makeNode(osg::NullFC, sceneRoot);
    ztOpenSGUtils::setRoot(sceneRoot);
    EXPECT_EQ(ztOverlays::getOverlayPoolRoot(), osg::NullFC) << "no pool";
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(branch), osg::NullFC);

    auto const pool = osg::create<osg::MaterialPool>();
    osg::NodePtr const poolNode = makeNode(pool, sceneRoot);
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(branch), osg::NullFC) << "not made yet";
    ztOverlays::reverseOverlaysSGOrder(branch);
    EXPECT_EQ(pool->overlayRoot, osg::NullFC);

    osg::NodePtr const root = ztOverlays::getOverlayPoolRoot();
    ASSERT_NE(root, osg::NullFC);
    EXPECT_EQ(root, pool->overlayRoot);
    Recorder recorder;
    EXPECT_EQ(ztOverlays::getOverlayPoolRoot(), root);
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(branch), root);
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(ztOverlays::createOverlay(root)), root) << "found from an overlay";
    EXPECT_EQ(recorder.marks({{"root", root}, {"pool", poolNode}}).find("pool"), std::string::npos);
    ztOpenSGUtils::setRoot(osg::NullFC);
    EXPECT_EQ(ztOverlays::getOverlayPoolRoot(), osg::NullFC) << "no scene";
    EXPECT_EQ(ztOverlays::getOverlayPoolRootForNode(osg::NullFC), osg::NullFC);
}

TEST_F(PoolTest, ReverseTurnsTheOrderAround)
{
    osg::NodePtr const root = makeScene();
    std::vector<osg::NodePtr> expected;
    for (int i = 0; i < 3; ++i)
        expected.insert(expected.begin(), ztOverlays::createOverlay(root));
    Recorder recorder;
    ztOverlays::reverseOverlaysSGOrder(ztOpenSGUtils::getRoot());
    EXPECT_EQ(root->children, expected);
    EXPECT_EQ(recorder.text({{"root", root}}), "!4root");
    ztOverlays::reverseOverlaysSGOrder(osg::NullFC);
    EXPECT_EQ(root->children, expected);
}

/// What an update marks: "placed" if it only moved the overlay, "rendered" if it made a picture or blanked
/// it.
std::string update(osg::OverlayPtr const& overlay, int targetHeight)
{
    overlay->anchor.x += 1; // so that each placement shows
    Recorder recorder;
    ztOverlays::updateOverlay(overlay, 1000, targetHeight);
    std::string const marks =
        recorder.marks({{"image", shownImage(overlay)}, {"core", overlay}, {"foreground", overlay->foreground}});
    return marks == "!image !1000core !8foreground" ? "rendered, placed"
           : marks == "!1000core !8foreground"      ? "cleared, placed"
           : marks == "!8foreground"                ? "placed"
           : marks == "!image"                      ? "blanked"
                                                    : marks;
}

TEST_F(UpdateTest, ChoosesBetweenRenderingAndPlacing)
{
    struct Row
    {
        char const* name;
        char const* text; // null: a picture 100 pixels high
        int sizeMode;
        float size;
        bool dirty;
        int targetHeight;
        char const* expected;
    };
    for (Row const& row : {
             Row{"dirty", "text", 0, 12, true, 1000, "rendered, placed"},
             {"dirty picture", nullptr, 0, 12, true, 1000, "cleared, placed"},
             {"dirty without text", "", 0, 12, true, 1000, "blanked"},
             {"absolute", "text", 0, 0.2f, false, 1000, "placed"},
             {"relative, same height", "text", 1, 0.1f, false, 1000, "placed"},
             {"relative, same whole pixels", "text", 1, 0.1f, false, 1009, "placed"},
             {"relative, a pixel more", "text", 1, 0.1f, false, 1010, "rendered, placed"},
             {"relative without text", "", 1, 0.1f, false, 1010, "blanked"},
             {"relative picture, same height", nullptr, 1, 0.1f, false, 1000, "placed"},
             {"relative picture, another height", nullptr, 1, 0.1f, false, 2000, "cleared, placed"},
             {"another mode", "text", 2, 0.1f, false, 2000, "placed"},
         })
    {
        osg::OverlayPtr const overlay = row.text ? makeText("text") : makePicture(makeImage(100, 100));
        overlay->sizeMode = osg::Overlay::SizeRelative;
        overlay->size = 0.1f;
        ztOverlays::updateOverlayImage(overlay, 1000, 1000);
        overlay->sizeMode = row.sizeMode;
        overlay->size = row.size;
        overlay->dirty = row.dirty;
        overlay->text = row.text ? row.text : "";
        EXPECT_EQ(update(overlay, row.targetHeight), row.expected) << row.name;
    }
}

TEST_F(UpdateTest, BlankedRelativeTextIsTriedAgainUnlessItsHeightFits)
{
    osg::OverlayPtr const overlay = makeText("");
    overlay->sizeMode = osg::Overlay::SizeRelative;
    overlay->size = 1;
    overlay->dirty = false;
    EXPECT_EQ(update(overlay, 100), "blanked");
    EXPECT_EQ(update(overlay, 16), "placed");
    overlay->dirty = true;
    EXPECT_EQ(update(overlay, 16), "blanked");
    EXPECT_TRUE(overlay->dirty);
}

TEST_F(UpdateTest, EmptySlotIsOnlyPlaced)
{
    osg::OverlayPtr const overlay = makePicture(osg::NullFC);
    ztOverlays::updateOverlayImage(overlay, 10, 10);
    overlay->sizeMode = osg::Overlay::SizeRelative;
    EXPECT_EQ(update(overlay, 100), "placed");
}

TEST_F(UpdateTest, QuietUpdateMarksNothing)
{
    osg::NodePtr const root = makeScene();
    for (char const* text : {"one", "two"})
    {
        osg::OverlayPtr const overlay = overlayOf(ztOverlays::createOverlay(root));
        overlay->text = text;
        overlay->anchor = {0.5f, 0.5f};
    }
    osg::ViewportPtr const viewport = makeViewport(640, 480);
    Recorder recorder;
    ztOverlays::updateAllOverlays(viewport);
    EXPECT_EQ(recorder.marks(), "! !1000 !8 ! !1000 !8");
    recorder.clear();
    ztOverlays::updateAllOverlays(viewport);
    EXPECT_EQ(recorder.text(), "");
    viewport->pixelWidth = 641;
    ztOverlays::updateAllOverlays(viewport);
    EXPECT_EQ(recorder.text(), "!8 !8") << "a wider viewport only moves them";
}

TEST_F(UpdateTest, AllReachesHiddenAndNestedOverlays)
{
    osg::NodePtr const root = makeScene(), group = makeNode(osg::create<osg::Group>(), root);
    std::vector<osg::NodePtr> const nodes{ztOverlays::createOverlay(group), ztOverlays::createOverlay(root)};
    osg::NodePtr const below = ztOverlays::createOverlay(nodes[1]);
    group->travMask = nodes[1]->travMask = 0;
    for (osg::NodePtr const& node : {nodes[0], nodes[1], below})
        overlayOf(node)->text = "text";
    ztOverlays::updateAllOverlays(osg::NullFC);
    EXPECT_TRUE(overlayOf(below)->dirty);
    ztOverlays::updateAllOverlays(makeViewport(100, 100));
    for (osg::NodePtr const& node : {nodes[0], nodes[1], below})
        EXPECT_FALSE(overlayOf(node)->dirty);
    ztOverlays::updateOverlay(osg::NodePtr(), makeViewport(1, 1));
    ztOverlays::updateOverlay(group, makeViewport(1, 1));
    ztOverlays::updateOverlay(osg::OverlayPtr(), 1, 1);
}

TEST_F(UpdateTest, BareCoreIsCompleted)
{
    osg::OverlayPtr const bare = hold(osg::create<osg::Overlay>());
    bare->text = "text";
    bare->dirty = false;
    ztOverlays::updateOverlay(bare, 100, 100);
    EXPECT_GT(shownImage(bare)->width, 16);
}

TEST_F(UpdateTest, EditedFieldIsRenderedWithoutAFurtherCall)
{
    osg::OverlayPtr const overlay = makeText("before");
    ztOverlays::updateOverlay(overlay, 100, 100);
    auto const before = shownImage(overlay)->pixels;
    overlay->text = "after";
    osg::markChanged(overlay, osg::Overlay::TextFieldMask);
    ztOverlays::updateOverlay(overlay, 100, 100);
    EXPECT_NE(shownImage(overlay)->pixels, before);
    EXPECT_FALSE(overlay->dirty) << "its own notification raises nothing";
}

class VisibleWalkTest : public SceneTest
{
  protected:
    /// Adds an overlay that the walk reports by its name.
    osg::NodePtr add(char name, osg::NodePtr const& parent)
    {
        osg::NodePtr const node = ztOverlays::createOverlay(parent);
        overlayOf(node)->text = std::string(1, name);
        return node;
    }

    static std::string walk()
    {
        std::string seen;
        ztOverlays::traverseVisibleOverlays([&seen](osg::OverlayPtr& overlay) {
            seen += overlay->text;
            overlay = osg::NullFC; // of no effect on the walk
        });
        return seen;
    }
};

TEST_F(VisibleWalkTest, DepthFirstChildrenLastToFirst)
{
    osg::NodePtr const root = makeScene();
    osg::NodePtr const a = add('A', root), b = add('B', root), c = add('C', root), d = add('D', a);
    osg::NodePtr const group = makeNode(osg::create<osg::Group>(), c);
    add('E', group);
    EXPECT_EQ(walk(), "CEBAD");
    struct Row
    {
        char const* name;
        osg::NodePtr node;
        osg::UInt32 travMask;
        char const* seen;
    };
    for (Row const& row : {
             Row{"a hidden overlay hides what is below", a, 0, "CEB"},
             {"one bit missing", b, 0xFFFFFFFE, "CEAD"},
             {"a hidden group", group, 0, "CBAD"},
             {"a hidden leaf", d, 1, "CEBA"},
             {"a hidden root", root, 0, ""},
         })
    {
        row.node->travMask = row.travMask;
        EXPECT_EQ(walk(), row.seen) << row.name;
        row.node->travMask = 0xFFFFFFFF;
    }
}

TEST_F(VisibleWalkTest, GetAllAppendsPlainCopies)
{
    osg::NodePtr const root = makeScene();
    osg::OverlayPtr const a = overlayOf(add('A', root)), b = overlayOf(add('B', root));
    std::vector<osg::OverlayPtr> overlays{a};
    ztOverlays::getAllVisibleOverlays(overlays);
    ztOverlays::getAllVisibleOverlays(overlays);
    EXPECT_EQ(overlays, (std::vector{a, b, a, b, a}));
    EXPECT_EQ(a->getRefCount(), 1);
}

TEST_F(VisibleWalkTest, EmptyCallbackThrowsAtTheFirstOverlay)
{
    EXPECT_NO_THROW(ztOverlays::traverseVisibleOverlays({})) << "no scene";
    osg::NodePtr const root = makeScene();
    EXPECT_NO_THROW(ztOverlays::traverseVisibleOverlays({}));
    osg::NodePtr const node = add('A', root);
    EXPECT_THROW(ztOverlays::traverseVisibleOverlays({}), std::bad_function_call);
    node->travMask = 0;
    EXPECT_NO_THROW(ztOverlays::traverseVisibleOverlays({}));
}

TEST_F(VisibleWalkTest, CallbackMayTakeChildrenAway)
{
    osg::NodePtr const root = makeScene();
    for (char name : {'A', 'B', 'C'})
        hold(add(name, root));
    std::string seen;
    ztOverlays::traverseVisibleOverlays([&](osg::OverlayPtr& overlay) {
        seen += overlay->text;
        while (root->children.size() > 1)
            root->subChild(root->children.back());
    });
    EXPECT_EQ(seen, "CA");
}

TEST_F(VisibilityTest, ActiveFollowsTheNodeAndWhatIsAbove)
{
    for (auto const& [name, aboveMask, ownMask, active] :
         {std::tuple{"shown", 0xFFFFFFFFu, 0xFFFFFFFFu, true}, std::tuple{"hidden", 0xFFFFFFFFu, 0xFFFFFFFEu, false},
          std::tuple{"hidden above", 7u, 0xFFFFFFFFu, false}})
    {
        osg::NodePtr const above = makeNode(), node = ztOverlays::createOverlay(above);
        osg::PolygonForeground2Ptr const foreground = overlayOf(node)->foreground;
        above->travMask = aboveMask;
        node->travMask = ownMask;
        foreground->active = !active;
        Recorder recorder;
        ztOverlays::updateVisibility(node);
        EXPECT_EQ(foreground->active, active) << name;
        ztOverlays::updateVisibility(node);
        EXPECT_EQ(recorder.text({{"foreground", foreground}}), "!1foreground !1foreground") << "marked each time";
    }
    Recorder recorder;
    ztOverlays::updateVisibility(osg::NullFC);
    ztOverlays::updateVisibility(makeNode());
    EXPECT_EQ(recorder.marks(), "");
}

} // namespace
