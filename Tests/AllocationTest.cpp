// What allocates nothing. Its executable counts every operator new.
#include "TestSupport.h"

#include <cstdlib>

static thread_local long allocations = 0, allocatedBytes = 0;

void* operator new(std::size_t size)
{
    ++allocations;
    allocatedBytes += long(size);
    if (void* memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

using AllocationTest = SceneTest;

TEST_F(AllocationTest, QuietFrameAllocatesNothing)
{
    osg::NodePtr const root = makeScene();
    for (osg::OverlayPtr const& overlay : {makeText("text"), makePicture(makeImage(20, 10))})
    {
        makeNode(overlay, root);
        overlay->dirty = false;
    }
    osg::ViewportPtr viewport = makeViewport(640, 480);
    viewport->foregrounds.push_back(makeText("")->foreground);
    auto const allocationsOfAFrame = [&] {
        long const before = allocations;
        ztOverlays::updateAllOverlays(viewport);
        ztOverlays::traverseVisibleOverlays([](osg::OverlayPtr&) {});
        ztOverlays::addOverlays(viewport);
        ztOverlays::removeOverlays(viewport);
        return allocations - before;
    };
    EXPECT_GT(allocationsOfAFrame(), 0) << "the first makes room in the viewport's list";
    EXPECT_EQ(allocationsOfAFrame(), 0);
}

// What is the image's own isn't counted: a picture comes from the host, and a text's rendering has any size.
TEST_F(AllocationTest, OverlayTakesFewAllocationsAndLittleMemory)
{
    osg::OverlayPtr const source = makePicture(makeImage(20, 10));
    hold(
        ztOverlays::duplicateOverlay(osg::NullFC, source)); // makes the shader's text and the list of the image's users
    long const allocationsBefore = allocations, bytesBefore = allocatedBytes;
    osg::NodePtr const node = ztOverlays::duplicateOverlay(osg::NullFC, source);
    EXPECT_LE(allocations - allocationsBefore, 12);
    EXPECT_LE(allocatedBytes - bytesBefore, 1000);
    osg::subRef(node);
}
