// Long runs, for which Scripts/soak says how long: memory doesn't grow after the first tenth, and nothing is left.
#include "OSGOpenGLDrawAction.h"
#include "SurfacelessContext.h"
#include "TestSupport.h"

#include <malloc.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <random>

namespace
{

/// In MB: what is in use of the heap, and what the process takes of the machine's memory.
std::pair<double, double> memory()
{
    malloc_trim(0);
    auto const heap = mallinfo2();
    double size = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return {double(heap.uordblks + heap.hblkhd) / 1e6, resident * double(sysconf(_SC_PAGESIZE)) / 1e6};
}

/// Those among the first 100,000 names, which are given anew when they are free.
int countGLObjects()
{
    int count = 0;
    for (GLuint name = 1; name <= 100000; ++name)
        count += glIsTexture(name) + glIsSampler(name) + glIsProgram(name) + glIsShader(name) + glIsBuffer(name) +
                 glIsVertexArray(name);
    return count;
}

/// The parameter: whether what the viewport shows is drawn, too.
class Soak : public SceneTest, public testing::WithParamInterface<bool>
{
  protected:
    void SetUp() override
    {
        glBindFramebuffer(GL_FRAMEBUFFER, make(glGenFramebuffers));
        glBindRenderbuffer(GL_RENDERBUFFER, make(glGenRenderbuffers));
        glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, 160, 90);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, 1);
    }

    std::size_t any(std::size_t count) { return random() % count; }
    osg::NodePtr anyNode() { return root->children[any(root->children.size())]; }

    void change(osg::OverlayPtr const& overlay)
    {
        overlay->contentType = int(any(2));
        overlay->text = "text " + std::to_string(any(30)) + (any(2) ? "\nof two lines" : "");
        overlay->sizeMode = int(any(2));
        overlay->size = float(1 + any(3)) * (overlay->sizeMode ? 0.1f : 5.0f);
        overlay->anchor = {float(any(11)) / 10, float(any(11)) / 10};
        osg::setRefdCP(overlay->image, pictures[any(2)]);
        osg::markChanged(overlay, osg::AllFieldsMask & ~osg::Overlay::DirtyFieldMask);
    }

    void remove()
    {
        ztOverlays::removeOverlays(viewport);
        root->subChild(anyNode());
    }

    void show()
    {
        ztOverlays::updateAllOverlays(viewport);
        ztOverlays::removeOverlays(viewport);
        ztOverlays::addOverlays(viewport);
        if (GetParam())
            viewport->render(&action);
        EXPECT_EQ(action.takeFailure(), "");
    }

    /// Without overlays, and with the driver having let go what is deleted.
    std::pair<double, double> memoryAtRest()
    {
        while (!root->children.empty())
            remove();
        action.release();
        EXPECT_EQ(countGLObjects(), 0);
        for (int frame = 0; frame < 10; ++frame)
        {
            glClear(GL_COLOR_BUFFER_BIT);
            glFinish();
        }
        return memory();
    }

    /// \param countName  the environment variable that holds how often
    void repeat(char const* countName, std::function<void()> const& step)
    {
        char const* const value = std::getenv(countName);
        int const count = value ? std::atoi(value) : 0;
        ASSERT_GE(count, 100) << countName;
        std::pair<double, double> early; // the most of ten times: caches come and go
        for (int i = 0; i < count; ++i)
        {
            if (i <= count / 10 && i % (count / 100) == 0)
            {
                auto const [heap, resident] = memoryAtRest();
                early = {std::max(early.first, heap), std::max(early.second, resident)};
            }
            while (root->children.size() < 8)
                change(overlayOf(ztOverlays::createOverlay(root)));
            step();
        }
        auto const late = memoryAtRest();
        std::cout << count << " times: heap " << early.first << " -> " << late.first << " MB, resident " << early.second
                  << " -> " << late.second << " MB" << std::endl;
        EXPECT_TRUE(late.first < early.first * 1.01 && late.second < early.second * 1.01);
    }

    SurfacelessContext context{false};
    osg::OpenGLDrawAction action;
    osg::NodePtr root = makeScene();
    osg::ViewportPtr viewport = makeViewport(160, 90);
    osg::ImagePtr target = makeImage(160, 90), pictures[2] = {makeImage(20, 9), makeImage(5, 15)};
    std::mt19937 random{1};
};

INSTANTIATE_TEST_SUITE_P(Drawn, Soak, testing::Bool());

TEST_P(Soak, MixedOperations)
{
    using namespace ztOverlays;
    std::vector<osg::OverlayPtr> visible;
    std::function<void()> const operations[] = {
        [&] { change(overlayOf(anyNode())); },
        [&] { removeOverlays(viewport), anyNode()->travMask ^= 1; },
        [&] { updateVisibility(anyNode()); },
        [&] { duplicateOverlay(root, overlayOf(anyNode())), remove(); },
        [&] { remove(); },
        [&] { show(); },
        [&] { reverseOverlaysSGOrder(root); },
        [&] { EXPECT_EQ(findOverlay("Overlay"), root->children[0]); },
        [&] { visible.clear(), getAllVisibleOverlays(visible), blendOverlaysOntoImage(visible, target, viewport); }};
    repeat("ZT_OPERATIONS", [&] { operations[any(std::size(operations))](); });
}

TEST_P(Soak, TextChanges)
{
    repeat("ZT_TEXTS", [this] {
        osg::OverlayPtr const overlay = overlayOf(root->children[0]);
        overlay->contentType = osg::Overlay::ContentText;
        overlay->text = std::to_string(random());
        osg::markChanged(overlay, osg::Overlay::TextFieldMask);
        show();
    });
}

} // namespace
