// Every allocation of every operation is refused in turn, with and without a change list: an operation on one object
// happens as a whole or not at all, counts and links are right, nothing is lost, and it can be done again.
#include "Allocations.h"
#include "OSGRefPtr.h"
#include "TestSupport.h"
#include "ztImage.h"
#include "ztNodeUtils.h"

#include <sstream>

namespace
{

char const longName[] = "a name that no string keeps within itself";

/// What the operations work on.
class Scene : public SceneTest
{
  public:
    osg::NodePtr root = makeScene(), group = makeNode(osg::create<osg::Switch>(), root),
                 spare = makeNode(hold(osg::create<osg::Group>()));
    osg::ImagePtr picture = makeImage(4, 3, {255, 255, 255, 255}), frame = makeImage(60, 40, {9, 9, 9, 255});
    osg::OverlayPtr text = makeText(longName, 9), shown = makePicture(picture, 8);
    osg::NodePtr textNode = makeNode(text, root), shownNode = makeNode(shown, root);
    osg::ChunkMaterialPtr material = osg::dynamicCast<osg::ChunkMaterial>(text->foreground->material);
    osg::ViewportPtr viewport = makeViewport(60, 40, createTile(80, 60));
    std::vector<osg::OverlayPtr> visible;

    Scene()
    {
        text->backgroundTransparency = {};
        osg::setName(shownNode, longName);
        ztOverlays::updateOverlay(shown, 60, 40);
    }
    ~Scene() override { TearDown(); }
    void TestBody() override {}

    void share()
    {
        for (int i = 0; i < 31; ++i)
        {
            makeNode(spare->core);
            hold(osg::create<osg::TextureChunk>())->setImage(picture);
        }
    }

    /// All containers that those of the scene lead to, in the order in which they are found, and their links.
    std::string describe() const;

  private:
    template <class T, class Describe>
    static void as(osg::FieldContainerPtr const& container, Describe const& describe)
    {
        if (auto const part = osg::dynamicCast<T>(container); part != osg::NullFC)
            describe(*part);
    }
};

std::string Scene::describe() const
{
    using namespace osg;
    std::ostringstream result;
    std::vector<FieldContainerPtr> found = _held;
    auto const link = [&](FieldContainerPtr const& to) {
        auto const entry = std::find(found.begin(), found.end(), to);
        result << ' ' << (to == NullFC ? -1 : entry - found.begin());
        if (to != NullFC && entry == found.end())
            found.push_back(to);
    };
    auto const linkAll = [&link](auto const& list) { std::for_each(list.begin(), list.end(), link); };
    for (std::size_t i = 0; i < found.size(); ++i)
    {
        FieldContainerPtr const each = found[i];
        result << '\n' << each->getType().getName() << ' ' << each->getRefCount() << ':';
        as<AttachmentContainer>(each, [&](auto& a) { link(a.findAttachment(Name::getClassType().getGroupId())); });
        as<Name>(each, [&](auto& name) { result << name.name; });
        as<Node>(each, [&](auto& node) { link(node.parent), link(node.core), linkAll(node.children); });
        as<NodeCore>(each, [&](auto& core) { linkAll(core.getParents()); });
        as<MaterialPool>(each, [&](auto& pool) { link(pool.overlayRoot); });
        as<Overlay>(each, [&](auto& o) { result << o.dirty, link(o.image), link(o.foreground); });
        as<PolygonForeground2>(each, [&](auto& f) { result << f.positions.size() << f.active, link(f.material); });
        as<ChunkMaterial>(each, [&](auto& chunkMaterial) { linkAll(chunkMaterial.chunks); });
        as<TextureChunk>(each, [&](auto& chunk) { link(chunk.image); });
        as<Viewport>(each, [&](auto& v) { link(v.camera), linkAll(v.foregrounds); });
        as<Image>(each, [&](auto& image) {
            result << image.width << ' ' << image.height << std::string(image.pixels.begin(), image.pixels.end());
            linkAll(image.parents);
        });
    }
    return result.str();
}

struct Row
{
    char const* name;
    void (*operation)(Scene&);
    void (*prepare)(Scene&) = [](Scene&) {};
    bool isOnOneObject = true;
};

/// Makes a scene, prepares it, and does an operation while one of its allocations is refused.
/// \param after  what the operation leaves; empty at first
/// \return whether the operation made so many
bool tryOperation(Row const& row, std::size_t number, osg::ChangeList* changes, std::string& after)
{
    Scene scene;
    row.prepare(scene);
    std::string const before = scene.describe();
    osg::PThreadBase::setCurrentChangeList(changes);
    bool isReached = false;
    try
    {
        isReached = workWithRefusal(number, [&] { row.operation(scene); });
    }
    catch (std::bad_alloc const&)
    {
        isReached = true;
        EXPECT_TRUE(!row.isOnOneObject || scene.describe() == before) << "not at all";
        row.operation(scene);
    }
    osg::PThreadBase::setCurrentChangeList(nullptr);
    if (after.empty())
        after = scene.describe();
    EXPECT_EQ(scene.describe(), after) << "as a whole";
    return isReached;
}

void workWithoutMemory(Scene& s)
{
    osg::NodePtr const scene = ztOpenSGUtils::getRoot();
    osg::setRefdCP(s.shown->image, s.frame);
    s.root->subChild(s.textNode);
    s.spare->subChild(osg::NodePtr(s.spare->children[0]));
    s.shownNode->subAttachment(osg::Name::getClassType().getGroupId());
    s.viewport->subForeground(s.text->foreground);
    ztOpenSGUtils::setRoot(s.spare);
    ztOpenSGUtils::setRoot(scene);
    ztOpenSGUtils::RootScope const scope(scene);
    ztImage::premultiply(s.frame);
    ztOverlays::reverseOverlaysSGOrder(s.root);
    ztOverlays::updateVisibility(s.textNode);
}

void blendOntoItself(Scene& s)
{
    ztImage::blendImage(s.picture, s.picture, {1, 2, 0}, {1, 0, 1, 1}, 1, 0.2f);
}

Row const rows[] = {
    {"without memory", workWithoutMemory,
     [](Scene& s) {
         ztOverlays::createOverlay(ztOverlays::createOverlay(s.spare));
         s.viewport->foregrounds = {s.text->foreground, s.shown->foreground, s.text->foreground};
     }},
    {"copy", [](Scene& s) { osg::NewPtr<osg::Image>(osg::ImagePtr::cast(s.frame->shallowCopy())); }},
    {"core of two", [](Scene& s) { s.group->setCore(s.spare->core); }},
    {"core of many", [](Scene& s) { s.group->setCore(s.spare->core); }, [](Scene& s) { s.share(); }},
    {"child", [](Scene& s) { s.group->addChild(s.spare); }},
    {"another's child", [](Scene& s) { s.spare->addChild(s.textNode); }},
    {"child in another's place", [](Scene& s) { ztNodeUtils::replaceChild(s.group, s.textNode); }},
    {"moved child", [](Scene& s) { ztNodeUtils::moveChild(s.spare, 0, s.textNode); }},
    {"name", [](Scene& s) { osg::setName(s.textNode, longName); }},
    {"other name", [](Scene& s) { osg::setName(s.shownNode, longName); }},
    {"chunk", [](Scene& s) { s.material->addChunk(s.material->chunks[1], osg::ChunkMaterial::AutoSlot); }},
    {"image of two", [](Scene& s) { s.textureOf(s.text)->setImage(s.picture); }},
    {"image of many", [](Scene& s) { s.textureOf(s.text)->setImage(s.picture); }, [](Scene& s) { s.share(); }},
    {"same image", [](Scene& s) { s.textureOf(s.shown)->setImage(s.picture); }, [](Scene& s) { s.share(), s.share(); }},
    {"life", [](Scene& s) { s.textureOf(s.text)->getLife(); }},
    {"scale", [](Scene& s) { ztImage::scale(s.picture, 13, 7, s.frame, ztImageBilinearFilter()); }},
    {"blend", blendOntoItself},
    {"pool root", [](Scene& s) { osg::dynamicCast<osg::MaterialPool>(s.spare->core)->initOverlayRoot(); },
     [](Scene& s) { s.spare->setCore(osg::create<osg::MaterialPool>()); }},
    {"overlay", [](Scene& s) { ztOverlays::createOverlay(s.root); }},
    {"overlay anywhere", [](Scene&) { osg::NewPtr<osg::Node>(ztOverlays::createOverlay(osg::NullFC)); }},
    {"duplicate of a text", [](Scene& s) { ztOverlays::duplicateOverlay(s.group, s.text); }},
    {"duplicate of a picture", [](Scene& s) { ztOverlays::duplicateOverlay(s.group, s.shown); }},
    {"names", [](Scene&) { ztOverlays::findOverlays("Overlay"); }},
    {"text", [](Scene& s) { ztOverlays::updateOverlayImage(s.textNode, s.viewport); }},
    {"text removed", [](Scene& s) { ztOverlays::updateOverlayImage(s.text, 60, 40); },
     [](Scene& s) { ztOverlays::updateOverlay(s.text, 60, 40), s.text->text.clear(); }},
    {"picture becomes text", [](Scene& s) { ztOverlays::updateOverlay(s.shown, 60, 40); },
     [](Scene& s) {
         s.shown->contentType = osg::Overlay::ContentText, s.shown->text = longName;
         s.shown->sizeMode = osg::Overlay::SizeRelative, s.shown->size = 0.4f; // the height of what is blank
     },
     false},
    {"no foreground", [](Scene& s) { ztOverlays::updateOverlayImage(s.shown, 60, 40); },
     [](Scene& s) { osg::setRefdCP(s.shown->foreground, osg::NullFC); }},
    {"place", [](Scene& s) { ztOverlays::updateOverlayPosition(s.shownNode, s.viewport); },
     [](Scene& s) { osg::setRefdCP(s.shown->image, s.frame), s.shown->foreground->positions = {}; }},
    {"visible", [](Scene& s) { ztOverlays::getAllVisibleOverlays(s.visible); }},
    {"add", [](Scene& s) { ztOverlays::addOverlays(s.viewport); }},
    {"remove", [](Scene& s) { ztOverlays::removeOverlays(s.viewport); },
     [](Scene& s) {
         s.viewport->foregrounds = {s.text->foreground, s.shown->foreground};
     }},
    {"update", [](Scene& s) { ztOverlays::updateAllOverlays(s.viewport); }, [](Scene&) {}, false},
    {"stamp",
     [](Scene& s) {
         ztOverlays::blendOverlaysOntoImage({s.text, s.shown}, s.frame, s.viewport);
     },
     [](Scene&) {}, false},
};

} // namespace

TEST(FaultTest, LeavesNoTrace)
{
    for (Row const& row : rows)
        for (bool const isRecorded : {false, true})
        {
            std::string after;
            bool isReached = true;
            for (std::size_t number = 0; isReached; ++number)
            {
                SCOPED_TRACE(row.name + std::string(isRecorded ? ", recorded " : " ") + std::to_string(number));
                osg::ChangeList list;
                isReached = tryOperation(row, number, isRecorded ? &list : nullptr, after) && !HasFatalFailure();
            }
        }
}

TEST(FaultTest, UsersLeaveAListWhoseIndexLacksMemory)
{
    std::vector<osg::RefPtr<osg::Node>> nodes(40);
    for (auto& node : nodes)
        node = osg::RefPtr<osg::Node>(osg::create<osg::Node>());
    bool isReached = true;
    for (std::size_t number = 1; isReached; ++number)
    {
        osg::UserList<osg::NodePtr> users;
        isReached = workWithRefusal(number, [&] {
            for (auto const& node : nodes)
                try
                {
                    users.push_back(node);
                }
                catch (std::bad_alloc const&)
                {
                    users.push_back(node);
                }
        });
        for (auto const& node : nodes)
            ASSERT_TRUE(users.remove(node.get())) << number;
        ASSERT_TRUE(users.empty());
    }
}

TEST(FaultTest, ChangeListEndsWhereItCannotGrowAndSaysSo)
{
    osg::ChangeList list;
    osg::RefPtr<osg::Node> const node(osg::create<osg::Node>());
    osg::PThreadBase::setCurrentChangeList(&list);
    workWithRefusal(2, [&node] { osg::addRef(node), osg::addRef(node), osg::addRef(node); });
    EXPECT_EQ(node->getRefCount(), 4);
    EXPECT_EQ(list.getEntries().size(), 1u) << "and no later one";
    EXPECT_FALSE(list.isComplete());
    list.clear();
    osg::subRef(node), osg::subRef(node), osg::subRef(node);
    EXPECT_TRUE(list.isComplete() && list.getEntries().size() == 3);
    osg::PThreadBase::setCurrentChangeList(nullptr);
}
