// Lookup by name, the viewport's list of foregrounds, and drawing.
#include "TestSupport.h"

#include "OSGDrawAction.h"
#include "OSGNodeUtils.h"
#include "ztNodeUtils.h"

#include <map>

namespace
{

using LookupTest = SceneTest;

TEST_F(LookupTest, NameComesFromNodeThenCoreThenType)
{
    char const* const none = nullptr;
    for (auto const& [row, hasCore, nodeName, coreName, expected] :
         {std::tuple{"nothing", false, none, none, none},
          {"type", true, none, none, "Overlay"},
          {"core", true, none, "core", "core"},
          {"node", true, "node", "core", "node"},
          {"node without core", false, "node", none, "node"},
          {"empty decides on the node", true, "", "core", ""},
          {"empty decides on the core", true, none, "", ""}})
    {
        osg::NodePtr const node = makeNode(hasCore ? osg::create<osg::Overlay>() : osg::NodeCorePtr());
        if (nodeName)
            osg::setName(node, nodeName);
        if (coreName)
            osg::setName(node->core, coreName);
        EXPECT_STREQ(osg::NodeUtils::getName(node), expected) << row;
        EXPECT_STREQ(ztNodeUtils::getName(node), expected ? expected : "") << row;
    }
    EXPECT_EQ(osg::NodeUtils::getName(osg::NullFC), nullptr);
    EXPECT_STREQ(ztNodeUtils::getName(osg::NullFC), "");
}

TEST_F(LookupTest, FindsByExactNameInTheOrderOfTheWalk)
{
    EXPECT_EQ(ztOverlays::findOverlay("a"), osg::NullFC) << "no pool";
    EXPECT_TRUE(ztOverlays::findOverlays("a").empty());
    osg::NodePtr const root = makeScene(), group = makeNode(osg::create<osg::Group>(), root);
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

class AttachmentTest : public SceneTest, public osg::DrawActionBase
{
  protected:
    /// The foregrounds of three overlays under a pool root, and two others.
    void SetUp() override
    {
        for (char name : {'C', 'B', 'A'})
        {
            nodes.push_back(ztOverlays::createOverlay(root));
            foregrounds[name] = overlayOf(nodes.back())->foreground;
        }
        for (char name : {'F', 'G'})
            foregrounds[name] = makeOverlay()->foreground;
    }

    /// The viewport's list, a letter each.
    std::string list() const
    {
        std::string text;
        for (osg::ForegroundPtr const& entry : viewport->foregrounds)
            for (auto const& [name, foreground] : foregrounds)
                if (foreground == entry)
                    text += name;
        return text;
    }

    void setList(std::string const& text)
    {
        viewport->foregrounds.clear();
        for (char name : text)
            viewport->foregrounds.push_back(foregrounds.at(name));
    }

    /// Remembers whose polygon is drawn, if it is so in all its parts and in the viewport.
    void drawPolygon(osg::TexturedPolygon const& polygon, osg::Viewport& shownOn) override
    {
        for (auto const& [name, foreground] : foregrounds)
            if (&polygon.positions == &foreground->positions && &polygon.texCoords == &foreground->texCoords &&
                polygon.material == foreground->material && &shownOn == viewport.get())
                drawn += name;
    }

    std::string drawn;
    osg::NodePtr root = makeScene();
    std::vector<osg::NodePtr> nodes;
    std::map<char, osg::PolygonForeground2Ptr> foregrounds;
    osg::ViewportPtr viewport = makeViewport(10, 10);
};

TEST_F(AttachmentTest, AddAndRemove)
{
    for (auto const& [name, operation, before, hidden, after] :
         {std::tuple{"to the front", &ztOverlays::addOverlays, "FG", "", "ABCFG"},
          {"once more", ztOverlays::addOverlays, "ABCFG", "", "ABCABCFG"},
          {"visible ones only", ztOverlays::addOverlays, "FG", "B", "ACFG"},
          {"none visible", ztOverlays::addOverlays, "FG", "ABC", "FG"},
          {"first entries go", ztOverlays::removeOverlays, "FABCAGBC", "", "FAGBC"},
          {"a hidden one stays", ztOverlays::removeOverlays, "ABCFG", "B", "BFG"},
          {"what isn't there", ztOverlays::removeOverlays, "GF", "", "GF"},
          {"from nothing", ztOverlays::removeOverlays, "", "", ""}})
    {
        setList(before);
        for (std::size_t i = 0; i < nodes.size(); ++i)
            nodes[i]->travMask = std::string(hidden).find("CBA"[i]) == std::string::npos ? 0xFFFFFFFF : 0;
        Recorder recorder;
        operation(viewport);
        EXPECT_EQ(list(), after) << name;
        EXPECT_EQ(recorder.text({{"viewport", viewport}}), "!2viewport") << name << ": one mark, no reference";
    }
    makeNode(nodes[0]->core, root);
    setList("CFCC");
    ztOverlays::removeOverlays(viewport);
    EXPECT_EQ(list(), "FC") << "a core under two nodes is taken out twice";
}

TEST_F(AttachmentTest, GuardsStopWithoutAMark)
{
    setList("FA");
    osg::ViewportPtr null;
    osg::NodePtr const scene = hold(ztOpenSGUtils::getRoot());
    Recorder recorder;
    for (auto const operation : {ztOverlays::addOverlays, ztOverlays::removeOverlays})
    {
        ztOpenSGUtils::setRoot(scene);
        operation(null);
        std::vector<osg::NodePtr> overlays;
        root->children.swap(overlays);
        operation(viewport);
        root->children.swap(overlays);
        ztOpenSGUtils::setRoot(osg::NullFC);
        operation(viewport);
    }
    EXPECT_EQ(recorder.marks(), "") << "no viewport, no overlays, no scene";
    EXPECT_EQ(list(), "FA");
}

TEST_F(AttachmentTest, DrawsTheVisibleOnesAndTheViewportItsActiveOnes)
{
    nodes[1]->travMask = 0;
    foregrounds['C']->active = false;
    ztOverlays::drawOverlays(this, viewport.get());
    EXPECT_EQ(drawn, "AC") << "active plays no part";
    drawn.clear();
    setList("CFAB");
    viewport->render(this);
    EXPECT_EQ(drawn, "FAB") << "visibility plays none";
}

} // namespace
