// Lookup by name, the viewport's list of foregrounds, and drawing.
#include "TestSupport.h"

#include "OSGDrawAction.h"
#include "OSGNodeUtils.h"
#include "ztNodeUtils.h"

#include <algorithm>

namespace
{

using LookupTest = SceneTest;
using ViewportTest = SceneTest;

TEST_F(LookupTest, NameComesFromNodeThenCoreThenType)
{
    struct Row
    {
        char const* name;
        char const* nodeName; // null: none
        bool hasCore;
        char const* coreName;
        char const* expected; // null: none
    };
    for (Row const& row : {
             Row{"nothing", nullptr, false, nullptr, nullptr},
             {"type", nullptr, true, nullptr, "Overlay"},
             {"core", nullptr, true, "core", "core"},
             {"node", "node", true, "core", "node"},
             {"node without core", "node", false, nullptr, "node"},
             {"empty decides on the node", "", true, "core", ""},
             {"empty decides on the core", nullptr, true, "", ""},
         })
    {
        osg::NodePtr const node = makeNode(row.hasCore ? osg::create<osg::Overlay>() : osg::NodeCorePtr());
        if (row.nodeName)
            osg::setName(node, row.nodeName);
        if (row.coreName)
            osg::setName(node->core, row.coreName);
        EXPECT_STREQ(osg::NodeUtils::getName(node), row.expected) << row.name;
        EXPECT_STREQ(ztNodeUtils::getName(node), row.expected ? row.expected : "") << row.name;
    }
    EXPECT_EQ(osg::NodeUtils::getName(osg::NullFC), nullptr);
    EXPECT_STREQ(ztNodeUtils::getName(osg::NullFC), "");
}

TEST_F(LookupTest, FindsByExactNameInTheOrderOfTheWalk)
{
    EXPECT_EQ(ztOverlays::findOverlay("a"), osg::NullFC) << "no pool";
    EXPECT_TRUE(ztOverlays::findOverlays("a").empty());
    osg::NodePtr const root = makeScene();
    osg::NodePtr const group = makeNode(osg::create<osg::Group>(), root);
    osg::NodePtr const first = ztOverlays::createOverlay(group), second = ztOverlays::createOverlay(root),
                       unnamed = ztOverlays::createOverlay(root), empty = makeNode(osg::NullFC, root);
    osg::setName(first, "label");
    osg::setName(second, "label");
    osg::setName(second->core, "core");
    group->travMask = 0;
    using Nodes = std::vector<osg::NodePtr>;
    for (auto const& [name, expected] : {std::pair{"label", Nodes{first, second}},
                                         {"Label", {}},
                                         {"labe", {}},
                                         {"core", {}},
                                         {"Overlay", {unnamed}},
                                         {"Group", {root, group}},
                                         {"", {empty}}})
    {
        EXPECT_EQ(ztOverlays::findOverlays(name), expected) << name;
        EXPECT_EQ(ztOverlays::findOverlay(name), expected.empty() ? osg::NodePtr() : expected.front()) << name;
    }
}

class AttachmentTest : public SceneTest
{
  protected:
    /// The foregrounds of three overlays under a pool root, and two others.
    void SetUp() override
    {
        root = makeScene();
        for (char name : {'C', 'B', 'A'})
        {
            nodes.push_back(ztOverlays::createOverlay(root));
            names.push_back({name, overlayOf(nodes.back())->foreground});
        }
        for (char name : {'F', 'G'})
        {
            others.push_back(makeOverlay()->foreground);
            names.push_back({name, others.back()});
        }
    }

    /// The viewport's list, a letter each.
    std::string list() const
    {
        std::string text;
        for (osg::ForegroundPtr const& entry : viewport->foregrounds)
            text += std::find_if(names.begin(), names.end(), [&entry](auto const& name) {
                        return name.second == entry;
                    })->first;
        return text;
    }

    void setList(std::string const& text)
    {
        viewport->foregrounds.clear();
        for (char letter : text)
            viewport->foregrounds.push_back(std::find_if(names.begin(), names.end(), [letter](auto const& name) {
                                                return name.first == letter;
                                            })->second);
    }

    osg::NodePtr root;
    std::vector<osg::NodePtr> nodes;
    std::vector<osg::PolygonForeground2Ptr> others;
    std::vector<std::pair<char, osg::ForegroundPtr>> names;
    osg::ViewportPtr viewport = makeViewport(10, 10);
};

TEST_F(AttachmentTest, AddAndRemove)
{
    struct Row
    {
        char const* name;
        void (*operation)(osg::ViewportPtr&);
        char const* before;
        char const* hidden; // which of C, B, A
        char const* after;
    };
    for (Row const& row : {
             Row{"to the front", ztOverlays::addOverlays, "FG", "", "ABCFG"},
             {"once more", ztOverlays::addOverlays, "ABCFG", "", "ABCABCFG"},
             {"visible ones only", ztOverlays::addOverlays, "FG", "B", "ACFG"},
             {"none visible", ztOverlays::addOverlays, "FG", "ABC", "FG"},
             {"first entries go", ztOverlays::removeOverlays, "FABCAGBC", "", "FAGBC"},
             {"a hidden one stays", ztOverlays::removeOverlays, "ABCFG", "B", "BFG"},
             {"what isn't there", ztOverlays::removeOverlays, "GF", "", "GF"},
             {"from nothing", ztOverlays::removeOverlays, "", "", ""},
         })
    {
        setList(row.before);
        for (std::size_t i = 0; i < nodes.size(); ++i)
            nodes[i]->travMask = std::string(row.hidden).find(names[i].first) == std::string::npos ? 0xFFFFFFFF : 0;
        Recorder recorder;
        row.operation(viewport);
        EXPECT_EQ(list(), row.after) << row.name;
        EXPECT_EQ(recorder.text({{"viewport", viewport}}), "!2viewport") << row.name << ": one mark, no reference";
    }
}

TEST_F(AttachmentTest, CoreUnderTwoNodesIsTakenOutTwice)
{
    makeNode(nodes[0]->core, root);
    setList("CFCC");
    ztOverlays::removeOverlays(viewport);
    EXPECT_EQ(list(), "FC");
}

TEST_F(AttachmentTest, GuardsStopWithoutAMark)
{
    setList("FA");
    osg::ViewportPtr null;
    Recorder recorder;
    for (auto const operation : {ztOverlays::addOverlays, ztOverlays::removeOverlays})
    {
        operation(null);
        EXPECT_EQ(recorder.text(), "") << "no viewport";
    }
    std::vector<osg::NodePtr> const held = nodes;
    for (osg::NodePtr const& node : held)
        hold(node), root->subChild(node);
    recorder.clear();
    for (auto const operation : {ztOverlays::addOverlays, ztOverlays::removeOverlays})
        operation(viewport);
    ztOpenSGUtils::setRoot(osg::NullFC);
    for (auto const operation : {ztOverlays::addOverlays, ztOverlays::removeOverlays})
        operation(viewport);
    EXPECT_EQ(recorder.marks(), "");
    EXPECT_EQ(list(), "FA");
}

/// Remembers the materials of what it is to draw.
struct Renderer : osg::DrawActionBase
{
    void drawPolygon(osg::TexturedPolygon const& polygon, osg::Viewport& viewport) override
    {
        drawn.push_back(polygon.material);
        shownOn = &viewport;
    }
    std::vector<osg::MaterialPtr> drawn;
    osg::Viewport* shownOn = nullptr;
};

TEST_F(AttachmentTest, DrawsTheVisibleOnesAndTheViewportItsActiveOnes)
{
    auto const material = [this](std::size_t i) { return overlayOf(nodes[i])->foreground->material; };
    nodes[1]->travMask = 0;
    overlayOf(nodes[0])->foreground->active = false;
    Renderer direct;
    ztOverlays::drawOverlays(&direct, viewport.get());
    EXPECT_EQ(direct.drawn, (std::vector{material(2), material(0)})) << "active plays no part";
    EXPECT_EQ(direct.shownOn, viewport.get());

    setList("CFAB");
    Renderer attached;
    viewport->render(&attached);
    EXPECT_EQ(attached.drawn, (std::vector{others[0]->material, material(2), material(1)})) << "visibility plays none";
}

TEST_F(ViewportTest, LayoutAreaIsTheTileOrTheWhole)
{
    osg::ViewportPtr const viewport = makeViewport(801, 600);
    auto const area = [&viewport] {
        osg::LayoutArea const a = viewport->getLayoutArea();
        return std::array{a.left, a.bottom, a.right, a.top};
    };
    EXPECT_EQ(area(), (std::array{0.0f, 0.0f, 801.0f, 600.0f}));
    auto const stereo = osg::create<osg::ShearedStereoCameraDecorator>();
    auto const perspective = osg::create<osg::PerspectiveCamera>();
    osg::setRefdCP(viewport->camera, stereo);
    osg::setRefdCP(stereo->decoratee, perspective);
    for (float aspect : {1.0f, 1.5f, 0.3f})
    {
        perspective->aspect = aspect;
        int width, height;
        ztOverlays::getViewportSize(viewport, width, height);
        EXPECT_EQ(area(), (std::array{0.0f, 0.0f, float(width), float(height)})) << "what overlays are laid out for";
    }
    auto const tile = osg::create<osg::TileCameraDecorator>();
    tile->fullWidth = 4000;
    tile->fullHeight = 2000;
    tile->left = 0.25f;
    tile->right = 0.5f;
    tile->bottom = 0.5f;
    osg::setRefdCP(stereo->decoratee, tile);
    EXPECT_EQ(area(), (std::array{1000.0f, 1000.0f, 2000.0f, 2000.0f}));
}

TEST_F(ViewportTest, TextureRevisionGrowsWithItsImage)
{
    osg::OverlayPtr const overlay = makeText("text");
    osg::TextureChunkPtr const texture = textureOf(overlay);
    auto const grows = [&texture](auto const& change) {
        osg::UInt64 const before = texture->getImageRevision();
        change();
        return texture->getImageRevision() > before;
    };
    EXPECT_TRUE(grows([&] { ztOverlays::updateOverlay(overlay, 100, 100); })) << "rendered";
    EXPECT_FALSE(grows([&] { ztOverlays::updateOverlay(overlay, 200, 100); })) << "placed";
    EXPECT_FALSE(grows([&] { osg::markChanged(texture, osg::TextureChunk::MinFilterFieldMask); }));
    EXPECT_TRUE(grows([&] { osg::markChanged(shownImage(overlay), osg::Image::PixelsFieldMask); }));
    overlay->contentType = osg::Overlay::ContentImage;
    EXPECT_TRUE(grows([&] { ztOverlays::updateOverlayPosition(overlay, 100, 100); })) << "another image";
}

} // namespace
