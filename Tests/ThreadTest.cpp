// What may run beside what: a test for each row of Docs/threads.md. The thread sanitizer sees what may not.
#include "OSGDrawAction.h"
#include "TestSupport.h"
#include "ztNodeUtils.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <set>
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

std::vector<osg::OverlayPtr> makeOverlays(osg::NodePtr const& root, osg::ImagePtr const& picture)
{
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
    return overlays;
}

/// A scene of a thread's own, from its making to its end. \return what they look like, stamped
std::vector<osg::UInt8> showOverlays(osg::ImagePtr const& target, osg::ImagePtr const& picture,
                                     osg::ViewportPtr viewport)
{
    osg::ChangeList changes;
    osg::PThreadBase::setCurrentChangeList(&changes);
    osg::NodePtr const scene = osg::create<osg::Node>();
    scene->setCore(osg::create<osg::MaterialPool>());
    ztOpenSGUtils::RootScope const scope(scene);
    std::vector<osg::OverlayPtr> const overlays = makeOverlays(ztOverlays::getOverlayPoolRoot(), picture);
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

TEST_F(ThreadTest, ScenesOfTheirOwn)
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

TEST_F(ThreadTest, SharedContainers)
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

TEST_F(ThreadTest, AContainersLastReference)
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

TEST_F(ThreadTest, APoolWithoutARoot)
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

TEST_F(ThreadTest, OverlaysOfTheirOwnInOneScene)
{
    osg::NodePtr const root = makeScene();
    std::vector<std::pair<osg::NodePtr, osg::ImagePtr>> owns;
    for (std::size_t i = 0; i <= threadCount; ++i)
        owns.emplace_back(ztOverlays::createOverlay(root), makeImage(50, 50));
    auto const work = [&owns](std::size_t i) {
        auto const& [node, target] = owns[i];
        for (int step = 1; step < 20; ++step)
        {
            overlayOf(node)->text = std::string(std::size_t(step), 'x');
            osg::markChanged(overlayOf(node), osg::Overlay::TextFieldMask);
            ztOverlays::updateVisibility(node);
            ztOverlays::blendOverlaysOntoImage({overlayOf(node)}, target, osg::NullFC);
        }
    };
    work(threadCount); // fonts are read before, by libraries that the sanitizer doesn't see into
    inParallel(work);
    for (auto const& [node, target] : owns)
        EXPECT_EQ(target->pixels, owns.back().second->pixels);
    EXPECT_NE(owns[0].second->pixels, makeImage(50, 50)->pixels);
}

TEST_F(ThreadTest, ASceneThatNobodyChanges)
{
    osg::NodePtr const node = makeNode(makeText("text"), makeScene());
    osg::ViewportPtr const viewport = makeViewport(100, 100);
    ztOverlays::updateAllOverlays(viewport);
    inParallel([&](std::size_t) {
        for (int step = 0; step < 100; ++step)
        {
            ztOverlays::updateAllOverlays(viewport);
            std::vector<osg::OverlayPtr> overlays;
            ztOverlays::getAllVisibleOverlays(overlays);
            EXPECT_EQ(overlays, std::vector{overlayOf(node)});
            EXPECT_EQ(ztOverlays::findOverlay("Overlay"), node);
            EXPECT_FALSE(ztNodeUtils::hasInActiveParent(node));
        }
    });
}

TEST_F(ThreadTest, TheDPIScale)
{
    std::vector<osg::OverlayPtr> overlays;
    for (std::size_t i = 0; i < threadCount; ++i)
        overlays.push_back(makePicture(makeImage(1, 1), 10));
    inParallel([&overlays](std::size_t i) {
        for (int step = 0; step < 1000; ++step)
        {
            ztPlatform::setDpiScale(1 + step % 2, 1 + step % 2);
            ztOverlays::updateOverlayPosition(overlays[i], 100, 100);
            float const height = overlays[i]->foreground->positions[2].y;
            EXPECT_TRUE(height == 10 || height == 20) << height;
        }
    });
}

TEST(ThreadTableTest, HasARowForEachTest)
{
    std::set<std::string> rows, tests = {"openglcontextsoftheirown"}; // which is tested with OpenGL
    auto const squeezed = [](std::string text) {
        text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return !std::isalpha(c); }), text.end());
        std::transform(text.begin(), text.end(), text.begin(), [](char c) { return char(std::tolower(c)); });
        return text;
    };
    std::ifstream table(ZT_THREAD_TABLE);
    for (std::string line; std::getline(table, line);)
        if (line.size() > 7 && line.substr(line.size() - 7) == "| yes |")
            rows.insert(squeezed(line.substr(2, line.find(" |", 2) - 2)));
    testing::TestSuite const& suite = *testing::UnitTest::GetInstance()->GetTestSuite(0);
    for (int i = 0; i < suite.total_test_count(); ++i)
        tests.insert(squeezed(suite.GetTestInfo(i)->name()));
    EXPECT_EQ(rows, tests);
}
