// What allocates nothing. Its executable counts every operator new.
#include "TestSupport.h"

#include <cstdlib>

static thread_local long allocations = 0;

void* operator new(std::size_t size)
{
    ++allocations;
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
    osg::ViewportPtr const viewport = makeViewport(640, 480);
    auto const allocationsOfAFrame = [&] {
        long const before = allocations;
        ztOverlays::updateAllOverlays(viewport);
        ztOverlays::traverseVisibleOverlays([](osg::OverlayPtr&) {});
        return allocations - before;
    };
    EXPECT_GT(allocationsOfAFrame(), 0) << "the first puts the picture into its place";
    EXPECT_EQ(allocationsOfAFrame(), 0);
}
