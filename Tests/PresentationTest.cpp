// Lookup by name, the viewport's list of foregrounds, and drawing.
#include "TestSupport.h"

#include "OSGDrawAction.h"
#include "OSGNodeUtils.h"

using PresentationTest = SceneTest;

TEST_F(PresentationTest, FindsTheNameOfNodeElseCoreElseTypeInTheOrderOfTheWalk)
{
    EXPECT_EQ(ztOverlays::findOverlay("a"), osg::NullFC) << "no pool";
    osg::NodePtr const root = makeScene(), group = makeNode(osg::create<osg::Group>(), root);
    group->travMask = 0;
    std::vector<osg::NodePtr> nodes;
    char const* const none = nullptr;
    std::tuple<bool, char const*, char const*, char const*> const rows[] = {
        {true, "label", "core", "label"}, {true, none, none, "Overlay"}, {true, none, "core", "core"},
        {false, "label", none, "label"},  {true, "", "core", ""},        {true, none, "", ""},
        {false, none, none, none}};
    for (auto const& [hasCore, nodeName, coreName, expected] : rows)
    {
        osg::NodePtr const node =
            makeNode(hasCore ? osg::create<osg::Overlay>() : osg::NodeCorePtr(), nodes.empty() ? group : root);
        if (nodeName)
            osg::setName(node, nodeName);
        if (coreName)
            osg::setName(node->core, coreName);
        EXPECT_STREQ(osg::NodeUtils::getName(node), expected);
        nodes.push_back(node);
    }
    EXPECT_EQ(osg::NodeUtils::getName(osg::NullFC), none);
    using Nodes = std::vector<osg::NodePtr>;
    for (auto const& [name, expected] : {std::pair{"label", Nodes{nodes[0], nodes[3]}},
                                         {"Label", {}},
                                         {"labe", {}},
                                         {"", {nodes[4], nodes[5], nodes[6]}}})
    {
        EXPECT_EQ(ztOverlays::findOverlays(name), expected) << name;
        EXPECT_EQ(ztOverlays::findOverlay(name), expected.empty() ? osg::NodePtr() : expected.front()) << name;
    }
}

class DrawingTest : public SceneTest, public osg::DrawActionBase
{
  public:
    void beginFrame() override { drawn.push_back(osg::NullFC); }
    void endFrame() override
    {
        drawn.push_back(osg::NullFC);
        if (edit)
            throw 1;
    }
    void drawPolygon(osg::TexturedPolygon const& polygon, osg::Viewport&) override
    {
        drawn.push_back(polygon.material);
        if (edit)
            edit();
    }

    /// What drawing a polygon does besides.
    std::function<void()> edit;

    /// Null where a frame begins or ends.
    std::vector<osg::MaterialPtr> drawn;
};

TEST_F(DrawingTest, NothingIsMarkedWithoutOverlays)
{
    osg::ViewportPtr viewport = makeViewport(10, 10);
    for (osg::NodePtr const& root : {osg::NodePtr(), makeScene()})
    {
        ztOpenSGUtils::RootScope const scope(root);
        Recorder recorder;
        ztOverlays::addOverlays(viewport);
        ztOverlays::removeOverlays(viewport);
        EXPECT_EQ(recorder.take(), "");
    }
}

TEST_F(DrawingTest, VisibleOverlaysAreAddedRemovedAndDrawn)
{
    osg::ViewportPtr viewport = makeViewport(10, 10), null;
    osg::NodePtr const root = makeScene();
    osg::OverlayPtr const cores[] = {makeText(""), makeText(""), makeText(""), makeText("")};
    for (int i : {2, 1, 0})
        makeNode(cores[i], root);
    osg::NodePtr const nodeB = root->children[1];
    auto const a = cores[0]->foreground, b = cores[1]->foreground, c = cores[2]->foreground, x = cores[3]->foreground;
    using List = std::vector<osg::ForegroundPtr>;
    for (auto const& [operation, maskOfB, before, after] :
         {std::tuple{&ztOverlays::addOverlays, 0xFFFFFFFF, List{a, x}, List{a, b, c, a, x}},
          {ztOverlays::addOverlays, 0, {x}, {a, c, x}},
          {ztOverlays::removeOverlays, 0xFFFFFFFF, {x, a, b, c, a, c}, {x, a, c}},
          {ztOverlays::removeOverlays, 0, {a, b, c, x}, {b, x}}})
    {
        nodeB->travMask = maskOfB;
        viewport->foregrounds = before;
        Recorder recorder;
        operation(null);
        operation(viewport);
        EXPECT_EQ(viewport->foregrounds, after) << before.size();
        EXPECT_EQ(recorder.take({{"viewport", viewport}}), "!viewport.foregrounds") << "one mark, no reference";
    }
    c->active = false;
    ztOverlays::drawOverlays(this, viewport.get());
    viewport->foregrounds = {c, x, b, osg::NullFC};
    viewport->render(this);
    // Visibility counts for drawOverlays alone, active and frames for the viewport alone.
    osg::MaterialPtr const edge;
    EXPECT_EQ(drawn, (std::vector{a->material, c->material, edge, x->material, b->material, edge}));
}

TEST_F(DrawingTest, ACoreUnderTwoNodesIsTakenOutTwice)
{
    osg::NodePtr const root = makeScene();
    osg::OverlayPtr const overlay = makeText("");
    makeNode(overlay, root);
    makeNode(overlay, root);
    osg::ViewportPtr viewport = makeViewport(10, 10);
    viewport->foregrounds = {overlay->foreground, makeText("")->foreground, overlay->foreground, overlay->foreground};
    std::vector<osg::ForegroundPtr> const left(viewport->foregrounds.begin() + 1, viewport->foregrounds.end() - 1);
    ztOverlays::removeOverlays(viewport);
    EXPECT_EQ(viewport->foregrounds, left);
}

TEST_F(DrawingTest, ListMayBeEditedWhileItIsDrawn)
{
    osg::NodePtr const root = makeNode();
    osg::ViewportPtr const viewport = makeViewport(10, 10);
    auto& list = viewport->foregrounds;
    auto const destroy = [&](std::size_t i) {
        osg::NodePtr const node = root->children[i];
        viewport->subForeground(overlayOf(node)->foreground);
        root->subChild(node);
    };
    using Edit = std::function<void()>;
    for (auto const& [name, action, expected] :
         {std::tuple{"cleared", Edit([&list] { list = {}; }), std::vector{0}},
          {"the drawn one destroyed", [&] { destroy(0); }, {0, 2}},
          {"the last one destroyed", [&] { destroy(root->children.size() - 1); }, {0, 1}},
          {"added behind", [&list] { list.push_back(list[0]); }, {0, 1, 2}},
          {"added in front", [&list] { list.insert(list.begin(), osg::ForegroundPtr(list[0])); }, {0, 0, 0}}})
    {
        list.clear();
        drawn.clear();
        for (int i = 0; i < 3; ++i)
            list.push_back(overlayOf(ztOverlays::createOverlay(root))->foreground);
        std::vector<osg::MaterialPtr> sequence{osg::NullFC};
        for (int const place : expected)
            sequence.push_back(overlayOf(root->children[std::size_t(place)])->foreground->material);
        sequence.push_back(osg::NullFC);
        edit = action;
        viewport->render(this); // whose frame's end throws
        EXPECT_EQ(drawn, sequence) << name;
        while (!root->children.empty())
            destroy(0);
    }
}

TEST_F(DrawingTest, EveryEntryOfAForegroundIsTakenOut)
{
    osg::ViewportPtr const viewport = makeViewport(10, 10);
    auto& list = viewport->foregrounds;
    auto const a = makeText("")->foreground, b = makeText("")->foreground;
    list = {a, b, a, osg::NullFC};
    Recorder recorder;
    viewport->subForeground(a);
    viewport->subForeground(a);
    EXPECT_EQ(list, (std::vector<osg::ForegroundPtr>{b, osg::NullFC}));
    EXPECT_EQ(recorder.take({{"viewport", viewport}}), "!viewport.foregrounds");
}
