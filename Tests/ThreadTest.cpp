// What may run beside what. The thread sanitizer sees where it may not.
#include "OSGDrawAction.h"
#include "TestSupport.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace
{

constexpr std::size_t threadCount = 4;

/// Runs a function, which gets its thread's number, on all threads at once.
template <class Function>
void inParallel(Function const& function)
{
    std::atomic<std::size_t> waiting{threadCount};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < threadCount; ++i)
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            function(i);
        });
    for (std::thread& thread : threads)
        thread.join();
}

class CountingAction : public osg::DrawActionBase
{
  public:
    std::size_t polygons = 0;
    void drawPolygon(osg::TexturedPolygon const& polygon, osg::Viewport&) override
    {
        polygons += polygon.positions.size() == 4;
    }
};

using ThreadTest = SceneTest;

/// A scene of a thread's own, from its making to its end. \return what they look like, stamped
std::vector<osg::UInt8> showOverlays(osg::ImagePtr const& target, osg::ImagePtr const& picture,
                                     osg::ViewportPtr viewport)
{
    osg::ChangeList changes;
    osg::PThreadBase::setCurrentChangeList(&changes);
    osg::NodePtr const scene = osg::create<osg::Node>();
    scene->setCore(osg::create<osg::MaterialPool>());
    ztOpenSGUtils::RootScope const scope(scene);
    osg::NodePtr const root = ztOverlays::getOverlayPoolRoot();
    std::vector<osg::OverlayPtr> overlays;
    for (int i = 0; i < 4; ++i)
    {
        osg::OverlayPtr const overlay = SceneTest::overlayOf(
            i < 2 ? ztOverlays::createOverlay(root) : ztOverlays::duplicateOverlay(root, overlays[std::size_t(i) - 2]));
        overlay->contentType = i % 2;
        overlay->text = "text " + std::to_string(i);
        overlay->size = 9.0f + float(i);
        overlay->anchor = {float(i) / 3.0f, 0.5f};
        osg::setRefdCP(overlay->image, picture);
        osg::markChanged(overlay, osg::AllFieldsMask & ~osg::Overlay::DirtyFieldMask);
        overlays.push_back(overlay);
        ztOverlays::updateVisibility(root->children.back());
    }
    ztOverlays::updateAllOverlays(viewport);
    ztOverlays::addOverlays(viewport);
    CountingAction action;
    viewport->render(&action);
    EXPECT_EQ(action.polygons, overlays.size());
    ztOverlays::blendOverlaysOntoImage(overlays, target, viewport);
    ztOverlays::removeOverlays(viewport);
    EXPECT_TRUE(viewport->foregrounds.empty());
    osg::PThreadBase::setCurrentChangeList(nullptr);
    EXPECT_GT(changes.getEntries().size(), 100u);
    return target->pixels;
}

} // namespace

TEST_F(ThreadTest, ScenesOfTheirOwnAreTheSameOnAllThreads)
{
    std::vector<osg::UInt8> const background = makeImage(160, 90, {10, 20, 30, 255})->pixels;
    std::vector<osg::ImagePtr> targets, pictures;
    std::vector<osg::ViewportPtr> viewports;
    for (std::size_t i = 0; i <= threadCount; ++i)
    {
        targets.push_back(makeImage(160, 90, {10, 20, 30, 255}));
        pictures.push_back(makeImage(20, 10, {100, 50, 0, 100}));
        viewports.push_back(makeViewport(320, 180));
    }
    auto const expected = showOverlays(targets.back(), pictures.back(), viewports.back());
    EXPECT_NE(expected, background);
    inParallel([&](std::size_t i) {
        for (int frame = 0; frame < 5; ++frame)
        {
            targets[i]->pixels = background;
            EXPECT_EQ(showOverlays(targets[i], pictures[i], viewports[i]), expected);
        }
    });
}

TEST_F(ThreadTest, SharedContainersAreCountedByAllThreads)
{
    std::vector<osg::NodePtr> const shared = {makeNode(), makeNode()};
    inParallel([&shared](std::size_t i) {
        for (int step = 0; step < 10000; ++step)
        {
            osg::NodePtr field;
            osg::setRefdCP(field, shared[(i + std::size_t(step)) % 2]);
            osg::addRef(shared[0]);
            osg::setRefdCP(field, osg::NullFC);
        }
        for (int step = 0; step < 10000; ++step)
            osg::subRef(shared[0]);
    });
    for (osg::NodePtr const& node : shared)
        EXPECT_EQ(node->getRefCount(), 1);
}

TEST_F(ThreadTest, LastReferenceIsDroppedByAnyThread)
{
    for (int round = 0; round < 100; ++round)
    {
        osg::NodePtr const node = ztOverlays::createOverlay(osg::NullFC);
        for (std::size_t i = 0; i < threadCount; ++i)
            osg::addRef(node);
        inParallel([&node](std::size_t) {
            EXPECT_EQ(node->children.size(), 0u) << "alive while this thread holds it";
            osg::subRef(node);
        });
    }
}

TEST_F(ThreadTest, PoolRootIsMadeByOneOfThoseWhoAsk)
{
    for (int round = 0; round < 100; ++round)
    {
        osg::NodePtr const scene = osg::create<osg::Node>();
        scene->setCore(osg::create<osg::MaterialPool>());
        ztOpenSGUtils::setRoot(scene);
        std::array<osg::NodePtr, threadCount> found;
        inParallel([&found](std::size_t i) {
            found[i] = ztOverlays::getOverlayPoolRoot();
            EXPECT_NE(found[i]->parent, osg::NullFC) << "complete";
        });
        EXPECT_EQ(scene->children, std::vector{found[0]});
        EXPECT_EQ(std::count(found.begin(), found.end(), found[0]), threadCount);
    }
}
