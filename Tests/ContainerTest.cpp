// Typed pointers, counts, types, the edit protocol, attachments, nodes, images and chunks.
#include "OSGRefPtr.h"
#include "TestSupport.h"
#include "ztNodeUtils.h"

#include <random>

using ContainerTest = SceneTest;

namespace
{

class HostOverlay : public osg::Overlay
{
    ZT_CONTAINER(HostOverlay)

  public:
    void changed(osg::BitVector mask, osg::UInt32 origin) override { told.emplace_back(mask, origin); }

    std::vector<std::pair<osg::BitVector, osg::UInt32>> told;
};

ZT_CONTAINER_TYPE(HostOverlay, osg::Overlay);

} // namespace

TEST_F(ContainerTest, CountsAreReportedAndTheLastReferenceDestroys)
{
    osg::NodePtr const a = makeNode(), b = makeNode(), parent = osg::create<osg::Node>(),
                       child = osg::create<osg::Node>();
    parent->addChild(child);
    EXPECT_EQ(parent.getContainerSize(), sizeof(osg::Node));
    osg::NodePtr field;
    Recorder recorder;
    osg::addRef(osg::NullFC);
    osg::subRef(osg::NullFC);
    osg::markChanged(osg::NullFC, osg::AllFieldsMask);
    for (osg::NodePtr const& value : {a, a, b, parent, child})
        osg::setRefdCP(field, value);
    EXPECT_EQ(child->parent, osg::NullFC) << "which is gone";
    osg::setRefdCP(field, osg::NullFC);
    EXPECT_EQ(recorder.take({{"A", a}, {"B", b}, {"parent", parent}, {"child", child}}),
              "+A -A +B -B +parent xparent -child +child xchild");
}

TEST_F(ContainerTest, OverlayBecomesDirtyByWhatDecidesThePicture)
{
    using O = osg::Overlay;
    osg::OverlayPtr const overlay = hold(osg::create<O>());
    // The picture's fields come first: all but anchor, offset and foreground. Who writes dirty says what it is to be.
    for (osg::UInt16 field = O::ContentTypeFieldId; field <= O::DirtyFieldId; ++field)
    {
        overlay->dirty = false;
        osg::markChanged(overlay, field < O::DirtyFieldId ? osg::BitVector(1) << field : osg::AllFieldsMask);
        EXPECT_EQ(overlay->dirty, field <= O::SizeFieldId) << field;
    }
}

TEST_F(ContainerTest, AttachmentsAreCountedReplacedAndLeftBehindByACopy)
{
    osg::NodePtr const node = makeNode();
    auto const name = osg::create<osg::Name>();
    osg::UInt32 const group = name->getType().getGroupId();
    node->addAttachment(osg::NullFC);
    node->addAttachment(name);
    node->addAttachment(name);
    EXPECT_EQ(name->getRefCount(), 1) << "added anew";
    EXPECT_EQ(node->findAttachment(group, 1), osg::NullFC);
    EXPECT_EQ(node->findAttachment(group + 1), osg::NullFC);
    EXPECT_EQ(hold(osg::dynamicCast<osg::Node>(node->shallowCopy()))->findAttachment(group), osg::NullFC);
    node->subAttachment(group);
    EXPECT_EQ(node->findAttachment(group), osg::NullFC);
}

using Nodes = std::map<char, osg::NodePtr>;
using ztNodeUtils::moveChild, ztNodeUtils::replaceChild;

// The children "abcd" of one node and "e" of another; what a host does to them, and what it marks.
static struct
{
    char const* name;
    void (*operation)(Nodes&);
    char const *children, *others, *marks;
} const childRows[] = {
    {"forward", [](Nodes& n) { moveChild(n['P'], 2, n['a']); }, "bcad", "e", "+a -a !P.children"},
    {"to the front", [](Nodes& n) { moveChild(n['P'], 0, n['P']->children[2]); }, "cabd", "e", "+c -c !P.children"},
    {"to the end", [](Nodes& n) { moveChild(n['P'], 9, n['a']); }, "bcda", "e", "+a -a !P.children"},
    {"from another", [](Nodes& n) { moveChild(n['P'], 1, n['e']); }, "aebcd", "", "+e -e !Q.children !P.children"},
    {"into itself", [](Nodes& n) { moveChild(n['a'], 0, n['P']); }, "abcd", "e", ""},
    {"nothing", [](Nodes& n) { moveChild(n['P'], 0, osg::NullFC); }, "abcd", "e", ""},
    {"replaced", [](Nodes& n) { replaceChild(n['P']->children[1], n['e']); }, "aecd", "",
     "+e -e -b !Q.children !P.children"},
    {"by a sibling", [](Nodes& n) { replaceChild(n['a'], n['c']); }, "cbd", "e", "+c -c -a !P.children"},
    {"by its own child", [](Nodes& n) { n['b']->addChild(n['e']), replaceChild(n['b'], n['e']); }, "aecd", "",
     "+e -e +e -e -b !P.children"},
    {"by its parent", [](Nodes& n) { replaceChild(n['a'], n['P']); }, "abcd", "e", ""},
    {"by itself", [](Nodes& n) { replaceChild(n['a'], n['a']); }, "abcd", "e", ""},
    {"without a parent", [](Nodes& n) { replaceChild(n['P'], n['a']); }, "abcd", "e", ""},
};

/// Those of a node that know it, by their letters.
static std::string childrenOf(osg::NodePtr const& parent, Nodes const& nodes)
{
    std::string children;
    for (osg::NodePtr const& child : parent->children)
        for (auto const& [letter, node] : nodes)
            children += std::string(node == child && child->parent == parent, letter);
    return children;
}

TEST_F(ContainerTest, ChildrenAreMovedAndReplacedAndMarked)
{
    for (auto const& row : childRows)
    {
        Nodes nodes;
        Recorder::Names names;
        for (char const* name : {"P", "Q", "a", "b", "c", "d", "e"})
        {
            nodes[*name] = makeNode(osg::NullFC, *name < 'a' ? osg::NullFC : nodes[*name == 'e' ? 'Q' : 'P']);
            names.emplace_back(name, nodes[*name]);
        }
        Recorder recorder;
        row.operation(nodes);
        EXPECT_EQ(recorder.take(names), row.marks) << row.name;
        EXPECT_EQ(childrenOf(nodes['P'], nodes), row.children) << row.name;
        EXPECT_EQ(childrenOf(nodes['Q'], nodes), row.others) << row.name;
    }
    osg::NodePtr const node = makeNode(osg::create<osg::Group>()), other = makeNode(node->core);
    Recorder recorder;
    node->setCore(other->core);
    EXPECT_EQ(node->core->getParents(), (std::vector{node, other})) << "it has it already";
    ztNodeUtils::rename(node, "new");
    auto const name = node->findAttachment(osg::Name::getClassType().getGroupId());
    EXPECT_EQ(recorder.take({{"name", name}}), "+name !name.name");
}

TEST_F(ContainerTest, TreesAreDestroyedDownwardsFromTheFirstChildToTheLast)
{
    auto const below = [](osg::NodePtr const& parent) {
        parent->addChild(osg::create<osg::Node>());
        return parent->children.back();
    };
    osg::NodePtr const root = osg::create<osg::Node>(), a = below(root), b = below(a), c = below(a), d = below(root);
    osg::addRef(root);
    Recorder recorder;
    osg::subRef(root);
    EXPECT_EQ(recorder.take({{"root", root}, {"a", a}, {"b", b}, {"c", c}, {"d", d}}), "xroot xa xb xc xd");
}

// Against a plain list, in which a user may stand several times, up to lengths that have an index.
TEST_F(ContainerTest, UsersLeaveTheirListFromAnyPlaceAndTheOthersKeepTheirOrder)
{
    std::vector<osg::NodePtr> nodes;
    for (int i = 0; i < 150; ++i)
        nodes.push_back(makeNode());
    for (std::size_t const users : {3u, 40u, 150u})
    {
        osg::UserList<osg::NodePtr> list;
        std::vector<osg::NodePtr> expected;
        std::mt19937 random(1);
        for (int step = 0; step < 6000; ++step)
        {
            EXPECT_FALSE(list.remove(nullptr));
            bool const grows = random() % 8 < (step / 1000 % 2 ? 2 : 6);
            osg::NodePtr const user = nodes[random() % users];
            auto const entry = std::find(expected.begin(), expected.end(), user);
            if (grows && (entry == expected.end() || random() % 16 == 0))
            {
                list.push_back(user);
                expected.push_back(user);
            }
            else if (!grows)
            {
                EXPECT_EQ(list.remove(user.get()), entry != expected.end());
                if (entry != expected.end())
                    expected.erase(entry);
            }
            ASSERT_EQ(list, expected) << users << " users, step " << step;
            ASSERT_EQ(list.size(), expected.size());
        }
    }
}

// For a type test, an object of the class that asks and one of a class derived from it differ.
TEST_F(ContainerTest, CastsFollowTheTypeWhateverMadeTheContainer)
{
    auto const host = hold(osg::create<HostOverlay>()), copy = hold(osg::dynamicCast<HostOverlay>(host->shallowCopy()));
    auto const plain = hold(osg::create<osg::Overlay>());
    auto const prototype = HostOverlay::getClassType().getPrototype();
    for (auto const& [name, container, isHost] : {std::tuple{"created", osg::FieldContainerPtr(host), true},
                                                  {"copied", copy, true},
                                                  {"prototype", prototype, true},
                                                  {"base", plain, false}})
    {
        EXPECT_EQ(osg::dynamicCast<HostOverlay>(container) != osg::NullFC, isHost) << name;
        EXPECT_EQ(osg::dynamicCast<osg::Overlay>(container), container) << name;
        EXPECT_EQ(osg::dynamicCast<osg::NodeCore>(container).getContainerSize(), container.getContainerSize()) << name;
        EXPECT_EQ(osg::dynamicCast<osg::Group>(container), osg::NullFC) << name;
    }
    EXPECT_EQ(HostOverlay::getClassType().getGroupId(), osg::Overlay::getClassType().getGroupId());
    EXPECT_EQ(osg::FieldContainer::getClassType().createContainer(), osg::NullFC);
    EXPECT_EQ(osg::FieldContainer::getClassType().getPrototype().getContainerSize(), 0);
    EXPECT_NE(osg::FieldContainer::getClassType().getGroupId(), osg::NodeCore::getClassType().getGroupId());
}

TEST_F(ContainerTest, ImageTakesASizeAndCopiesBytesOrUsesThemInPlace)
{
    osg::ImagePtr const image = makeImage(-5, -2);
    EXPECT_EQ((std::array{image->width, image->height, int(image->pixels.size())}), (std::array{-5, -2, 0}));
    for (int other = 0; other < 7; ++other) // format, depth, mipmaps, frames, delay, type, sides
    {
        EXPECT_FALSE(image->set(other == 0 ? 6407 : 6408, 5, 2, 1 + (other == 1), 1 + (other == 2), 1 + (other == 3),
                                other == 4, nullptr, other == 5 ? 5126 : 5121, true, 1 + (other == 6)));
        EXPECT_EQ(image->width, 0) << other;
    }
    for (auto const& [width, height] : {std::pair{5, 0}, {0, 5}})
        EXPECT_FALSE(image->set(6408, width, height, 1, 1, 1, 0.0, nullptr, 5121, true, 1) || image->isComplete());
    osg::UInt8 bytes[4] = {1, 2, 3, 4};
    for (bool const inPlace : {true, false})
    {
        EXPECT_TRUE(image->set(6408, 1, 1, 1, 1, 1, 0.0, bytes, osg::Image::TypeUInt8, !inPlace, 1));
        EXPECT_EQ(image->pixelBuffer() == bytes, inPlace);
        EXPECT_EQ(image->pixels.empty(), inPlace);
    }
    EXPECT_EQ(image->pixels, (std::vector<osg::UInt8>{1, 2, 3, 4}));
    image->pixels.clear();
    EXPECT_EQ(image->pixelBuffer(), nullptr);
    for (int size : {500, 16})
        image->set(6408, size, size, 1, 1, 1, 0.0, nullptr, osg::Image::TypeUInt8, true, 1);
    EXPECT_LE(image->pixels.capacity(), 4096u) << "the memory of what it held is free";
}

TEST_F(ContainerTest, ChunksWhoseLifeIsAskedForAreCountedWhenTheyEnd)
{
    auto const before = osg::StateChunk::getNumEnded();
    std::weak_ptr<void const> life;
    for (bool const isAsked : {false, true})
    {
        EXPECT_EQ(osg::StateChunk::getNumEnded(), before);
        osg::RefPtr<osg::BlendChunk> const chunk(osg::create<osg::BlendChunk>());
        if (isAsked)
            life = chunk->getLife();
        EXPECT_EQ(life.expired(), !isAsked);
    }
    EXPECT_TRUE(life.expired());
    EXPECT_EQ(osg::StateChunk::getNumEnded(), before + 1);
}

TEST_F(ContainerTest, TextureCountsChangesOfItsImage)
{
    auto const chunk = hold(osg::create<osg::TextureChunk>());
    osg::ImagePtr const a = makeImage(1, 1);
    chunk->setImage(a);
    Recorder recorder;
    auto const revision = chunk->getImageRevision();
    osg::FieldContainerPtr::_ignore_change = true;
    osg::markChanged(chunk, osg::TextureChunk::ImageFieldMask);
    osg::FieldContainerPtr::_ignore_change = false;
    osg::markChanged(chunk, osg::TextureChunk::MinFilterFieldMask);
    osg::markChanged(a, osg::Image::PixelsFieldMask);
    EXPECT_EQ(chunk->getImageRevision(), revision + 1) << "told by the image";
    EXPECT_EQ(recorder.take({{"A", a}, {"chunk", chunk}}), "!chunk.image !chunk.minFilter !A.pixels");
}

TEST_F(ContainerTest, TextureKeepsCountsAndParentsOfItsImage)
{
    auto const chunk = hold(osg::create<osg::TextureChunk>()), other = osg::create<osg::TextureChunk>();
    osg::ImagePtr const a = makeImage(1, 1), b = makeImage(1, 1);
    using Users = std::vector<osg::FieldContainerPtr>;
    chunk->setImage(a);
    other->setImage(a);
    Recorder recorder;
    chunk->setImage(a);
    EXPECT_EQ(a->parents, (Users{other, chunk})) << "the entry moves to the end";
    EXPECT_EQ(a->parents.front().getParentEPos(), osg::TextureChunk::ImageFieldId);
    chunk->setImage(b);
    EXPECT_EQ(a->parents, Users{other});
    auto const host = hold(osg::create<HostOverlay>());
    b->parents.push_back(osg::FieldContainerPtr(host));
    b->parents.push_back(osg::FieldContainerPtr(chunk));
    a->parents.push_back(osg::FieldContainerPtr(other)); // a second time
    chunk->setImage(osg::NullFC);
    EXPECT_EQ(b->parents, (Users{host, chunk})) << "the first entry goes";
    EXPECT_TRUE(b->parents.remove(chunk.get()));
    osg::markChanged(host, osg::Overlay::TextFieldMask);
    osg::markChanged(b, osg::Image::PixelsFieldMask);
    EXPECT_EQ(host->told, (std::vector<std::pair<osg::BitVector, osg::UInt32>>{{4, 1}, {osg::AllFieldsMask, 2}}));
    EXPECT_TRUE(b->parents.remove(host.get()));
    osg::subRef(other);
    EXPECT_EQ(a->parents.size() + b->parents.size(), 0u) << "a destroyed texture leaves";
    EXPECT_EQ(recorder.take({{"A", a}, {"B", b}, {"other", other}, {"host", host}}),
              "+A -A +B -A +host -B !host.text !B.pixels xother -A");
}
