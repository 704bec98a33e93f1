// What allocates nothing. Its executable counts every operator new.
#include "TestSupport.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{
std::atomic<long> allocations{0};
}

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

namespace
{

using AllocationTest = SceneTest;

TEST_F(AllocationTest, QuietFrameAllocatesNothing)
{
    osg::NodePtr const root = makeScene();
    for (int contentType : {osg::Overlay::ContentText, osg::Overlay::ContentImage})
    {
        osg::OverlayPtr const overlay = overlayOf(ztOverlays::createOverlay(root));
        overlay->contentType = contentType;
        osg::setRefdCP(overlay->image, makeImage(20, 10));
        overlay->dirty = false;
        overlay->anchor = {1, 1};
    }
    osg::ViewportPtr const viewport = makeViewport(640, 480);
    long visible = 0;
    auto const frame = [&] {
        ztOverlays::updateAllOverlays(viewport);
        ztOverlays::traverseVisibleOverlays([&visible](osg::OverlayPtr&) { ++visible; });
    };
    long const atFirst = allocations;
    frame();
    ASSERT_GT(allocations, atFirst) << "the first frame puts the picture into its place";
    long const before = allocations;
    frame();
    EXPECT_EQ(allocations, before);
    EXPECT_EQ(visible, 4);
}

} // namespace
