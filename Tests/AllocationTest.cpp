// What allocates nothing, and what little.
#include "Allocations.h"
#include "TestSupport.h"

using AllocationTest = SceneTest;

TEST_F(AllocationTest, QuietFrameAllocatesNothing)
{
    osg::NodePtr const root = makeScene();
    for (osg::OverlayPtr const& overlay : {makeText("text"), makePicture(makeImage(20, 10))})
    {
        makeNode(overlay, root->children.empty() ? root : root->children[0]);
        overlay->dirty = false;
    }
    osg::ViewportPtr viewport = makeViewport(640, 480);
    viewport->foregrounds.push_back(makeText("")->foreground);
    auto const frame = [&] {
        ztOverlays::updateAllOverlays(viewport);
        ztOverlays::traverseVisibleOverlays([](osg::OverlayPtr&) {});
        ztOverlays::addOverlays(viewport);
        ztOverlays::removeOverlays(viewport);
    };
    EXPECT_GT(allocationsOf(frame).count, 0) << "the first makes room in the viewport's list";
    EXPECT_EQ(allocationsOf(frame).count, 0);
}

// What is the image's own isn't counted: a picture comes from the host, and a text's rendering has any size.
TEST_F(AllocationTest, OverlayTakesFewAllocationsAndLittleMemory)
{
    osg::OverlayPtr const source = makePicture(makeImage(20, 10));
    hold(
        ztOverlays::duplicateOverlay(osg::NullFC, source)); // makes the shader's text and the list of the image's users
    osg::NodePtr node;
    Allocations const made = allocationsOf([&] { node = ztOverlays::duplicateOverlay(osg::NullFC, source); });
    EXPECT_LE(made.count, 12);
    EXPECT_LE(made.bytes, 1000);
    osg::subRef(node);
}
