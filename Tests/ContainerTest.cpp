// Typed pointers, counts, types, the edit protocol, attachments, nodes, images and chunks.
#include "TestSupport.h"

#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

namespace
{

/// Remembers the masks and origins of the changes that it was told of.
class Listener : public osg::FieldContainer
{
    OSG_CONTAINER(Listener)

  public:
    void changed(osg::BitVector mask, osg::UInt32 origin) override { heard.emplace_back(mask, origin); }

    std::vector<std::pair<osg::BitVector, osg::UInt32>> heard;
};

OSG_CONTAINER_TYPE(Listener, FieldContainer);

/// A kind of name.
class Alias : public osg::Name
{
    OSG_CONTAINER(Alias)
};

OSG_CONTAINER_TYPE(Alias, Name);

using ContainerTest = SceneTest;

TEST_F(ContainerTest, NullIsLeftAloneAndTypesFollowTheirParents)
{
    Recorder recorder;
    osg::addRef(osg::NullFC);
    osg::subRef(osg::NullFC);
    osg::markChanged(osg::NullFC, osg::AllFieldsMask);
    EXPECT_EQ(recorder.text(), "");
    EXPECT_EQ(osg::NullFC.getParentEPos(), osg::FieldContainerPtrBase::InvalidParentEPos);
    EXPECT_EQ(osg::dynamicCast<osg::Node>(osg::NullFC), osg::NullFC);
    EXPECT_EQ(osg::create<osg::NodeCore>(), osg::NullFC) << "an abstract type has no prototype";

    osg::NodeCorePtr const core = hold(osg::create<osg::Switch>());
    EXPECT_NE(osg::dynamicCast<osg::Group>(core), osg::NullFC);
    EXPECT_EQ(osg::dynamicCast<osg::Overlay>(core), osg::NullFC);
    EXPECT_EQ(osg::dynamicCast<osg::Switch>(hold(osg::create<osg::Group>())), osg::NullFC);
    EXPECT_STREQ(core->getType().getName(), "Switch");
    EXPECT_EQ(core.getContainerSize(), sizeof(osg::Switch));
}

TEST_F(ContainerTest, CountsAreReportedAndTheLastReferenceDestroys)
{
    std::size_t const before = osg::FieldContainerFactory::getNumContainers();
    osg::NodePtr const a = makeNode(), b = makeNode(), parent = osg::create<osg::Node>(),
                       child = osg::create<osg::Node>();
    EXPECT_EQ(osg::FieldContainerFactory::getNumContainers(), before + 4);
    parent->addChild(child);
    osg::NodePtr field;
    Recorder recorder;
    osg::addRef(a);
    osg::subRef(a);
    osg::subRef(osg::create<osg::Group>());
    for (osg::NodePtr const& value : {a, a, b, parent, child})
        osg::setRefdCP(field, value);
    EXPECT_EQ(child->parent, osg::NullFC) << "the old target is gone";
    osg::setRefdCP(field, osg::NullFC);
    EXPECT_EQ(recorder.text({{"A", a}, {"B", b}, {"parent", parent}, {"child", child}}),
              "+A -A x +A -A +B -B +parent xparent -child +child xchild");
    EXPECT_EQ(field, osg::NullFC);
}

TEST_F(ContainerTest, CountsSurviveThreads)
{
    osg::GroupPtr const group = hold(osg::create<osg::Group>());
    std::atomic<int> ready{0};
    auto const work = [&] {
        for (++ready; ready < 2;)
            std::this_thread::yield();
        for (int i = 0; i < 1000000; ++i)
        {
            osg::addRef(group);
            osg::subRef(group);
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(group->getRefCount(), 1);
}

TEST_F(ContainerTest, ChangesAreRecordedAndDelivered)
{
    auto const listener = hold(osg::create<Listener>());
    osg::ImagePtr const image = makeImage(1, 1);
    image->parents.push_back(osg::FieldContainerPtr(listener.get(), 7));
    image->parents.push_back(listener); // names no field
    Recorder recorder;
    osg::FieldContainerPtr::_ignore_change = true;
    osg::markChanged(listener, 3);
    osg::FieldContainerPtr::_ignore_change = false;
    osg::markChanged(listener, 5);
    osg::markChanged(image, osg::AllFieldsMask);
    constexpr auto external = osg::FieldContainer::OriginExternal, child = osg::FieldContainer::OriginChild;
    EXPECT_EQ(listener->heard,
              (decltype(Listener::heard){{5, external}, {1 << 7, child}, {osg::AllFieldsMask, child}}));
    EXPECT_EQ(recorder.text(), "!3 !5 !") << "the image's user isn't marked";
    EXPECT_TRUE(hold(osg::dynamicCast<osg::Image>(image->shallowCopy()))->parents.empty());
}

TEST_F(ContainerTest, OverlayBecomesDirtyByWhatDecidesThePicture)
{
    using O = osg::Overlay;
    osg::OverlayPtr const overlay = hold(osg::create<O>());
    // The picture's fields come first: all but anchor, offset and foreground.
    auto const dirtiedBy = [&overlay](osg::BitVector mask) {
        overlay->dirty = false;
        osg::markChanged(overlay, mask);
        return overlay->dirty;
    };
    for (osg::UInt16 field = O::ContentTypeFieldId; field < O::DirtyFieldId; ++field)
        EXPECT_EQ(dirtiedBy(osg::BitVector(1) << field), field <= O::SizeFieldId) << field;
    EXPECT_TRUE(dirtiedBy(O::SizeFieldMask | O::OffsetFieldMask));
    EXPECT_FALSE(dirtiedBy(O::TextFieldMask | O::DirtyFieldMask)) << "the writer says what it is to be";
    EXPECT_FALSE(dirtiedBy(osg::AllFieldsMask));
}

TEST_F(ContainerTest, AttachmentsAreCountedReplacedAndLeftBehindByACopy)
{
    osg::NodePtr const node = makeNode();
    osg::setName(node, "first");
    osg::setName(node, "second");
    osg::UInt32 const group = osg::Name::getClassType().getGroupId();
    auto const name = osg::dynamicCast<osg::Name>(node->findAttachment(group, 0));
    ASSERT_NE(name, osg::NullFC);
    EXPECT_EQ(name->name, "second");
    node->addAttachment(name);
    EXPECT_EQ(name->getRefCount(), 1) << "added anew";
    EXPECT_EQ(node->findAttachment(group, 1), osg::NullFC);
    EXPECT_EQ(node->findAttachment(group + 1, 0), osg::NullFC);
    EXPECT_EQ(hold(osg::dynamicCast<osg::Node>(node->shallowCopy()))->findAttachment(group), osg::NullFC);
    auto const alias = osg::create<Alias>();
    node->addAttachment(alias);
    EXPECT_EQ(node->findAttachment(group), alias) << "a derived type stands in its parent's place";
    node->subAttachment(group);
    EXPECT_EQ(node->findAttachment(group), osg::NullFC);
}

TEST_F(ContainerTest, ChildrenKnowTheirParentAndCoresTheirNodes)
{
    osg::NodePtr const a = makeNode(), b = makeNode(), child = osg::create<osg::Node>();
    Recorder recorder;
    a->addChild(child);
    b->addChild(child);
    EXPECT_EQ(recorder.text(), "+ + -") << "survives the move";
    EXPECT_TRUE(a->children.empty());
    EXPECT_EQ(child->parent, b);
    b->addChild(osg::NullFC);
    child->addChild(b);
    child->addChild(child);
    EXPECT_TRUE(child->children.empty()) << "a node is no descendant of its own";
    a->subChild(child);
    EXPECT_EQ(child->parent, b) << "taken from a node that hasn't it";
    hold(child);
    b->subChild(child);
    EXPECT_EQ(child->parent, osg::NullFC);

    osg::GroupPtr const core = hold(osg::create<osg::Group>());
    osg::NodePtr const other = osg::create<osg::Node>();
    a->setCore(core);
    other->setCore(core);
    EXPECT_EQ(core->getParents(), (std::vector{a, other}));
    osg::subRef(other);
    a->setCore(osg::NullFC);
    EXPECT_TRUE(core->getParents().empty());
}

TEST_F(ContainerTest, ImageTakesASizeAndCopiesBytesOrUsesThemInPlace)
{
    osg::ImagePtr const image = makeImage(3, 3);
    osg::UInt8 bytes[4] = {1, 2, 3, 4};
    auto const set = [&](osg::UInt32 format, int width, int height, int depth, osg::UInt8* data, bool allocate) {
        return image->set(format, width, height, depth, 1, 1, 0.0, data, osg::Image::TypeUInt8, allocate, 1);
    };
    // Format, width, height and depth make width, height, bytes and whether the image has any.
    for (auto const& [format, width, height, depth, expected] : {std::tuple{6408u, 5, 2, 1, std::array{5, 2, 40, 1}},
                                                                 {6408u, 0, 2, 1, {0, 2, 0, 0}},
                                                                 {6408u, 5, -2, 1, {5, -2, 0, 0}},
                                                                 {6408u, -5, -2, 1, {-5, -2, 0, 0}},
                                                                 {6407u, 5, 2, 1, {0, 0, 0, 0}},
                                                                 {6408u, 5, 2, 2, {0, 0, 0, 0}}})
    {
        int const filled = set(format, width, height, depth, nullptr, true);
        EXPECT_EQ((std::array{image->width, image->height, int(image->pixels.size()), filled}), expected);
        EXPECT_EQ(image->pixelBuffer() != nullptr, filled) << format << ' ' << height;
    }
    set(6408, 1, 1, 1, bytes, false);
    EXPECT_EQ(image->pixelBuffer(), bytes);
    set(6408, 1, 1, 1, bytes, true);
    bytes[0] = 9;
    EXPECT_EQ(pixelAt(image, 0, 0), (std::array{1, 2, 3, 4}));
}

TEST_F(ContainerTest, TextureKeepsCountsAndParentsOfItsImageAndAMaterialItsChunks)
{
    auto const chunk = hold(osg::create<osg::TextureChunk>()), other = osg::create<osg::TextureChunk>();
    osg::ImagePtr const a = makeImage(1, 1), b = makeImage(1, 1);
    using Users = std::vector<osg::FieldContainerPtr>;
    Users const& users = a->parents;
    chunk->setImage(a);
    other->setImage(a);
    auto const revision = chunk->getImageRevision();
    osg::markChanged(chunk, osg::TextureChunk::MinFilterFieldMask);
    EXPECT_EQ(chunk->getImageRevision(), revision) << "grows with the image alone";
    osg::markChanged(chunk, osg::TextureChunk::ImageFieldMask);
    osg::markChanged(a, osg::Image::PixelsFieldMask);
    EXPECT_EQ(chunk->getImageRevision(), revision + 2);
    Recorder recorder;
    chunk->setImage(a);
    EXPECT_EQ(users, (Users{other, chunk})) << "the entry moves to the end";
    a->parents.insert(a->parents.begin(), chunk);
    chunk->setImage(b);
    EXPECT_EQ(users, (Users{other, chunk})) << "only the first entry goes";
    chunk->setImage(osg::NullFC);
    EXPECT_TRUE(b->parents.empty());
    osg::subRef(other);
    EXPECT_EQ(users, Users{chunk}) << "a destroyed texture leaves";
    EXPECT_EQ(recorder.text({{"A", a}, {"B", b}, {"other", other}}), "+A -A +B -A -B xother -A");

    auto const material = hold(osg::create<osg::ChunkMaterial>());
    EXPECT_TRUE(material->addChunk(chunk, -2));
    EXPECT_FALSE(material->addChunk(osg::NullFC, -2));
    EXPECT_FALSE(material->addChunk(chunk, 0));
    EXPECT_EQ(material->chunks, std::vector<osg::StateChunkPtr>{chunk});
}

TEST_F(ContainerTest, DpiScaleRefusesWhatIsNoScale)
{
    ASSERT_TRUE(ztPlatform::setDpiScale(1.5, 2.5));
    double const infinity = std::numeric_limits<double>::infinity();
    for (double bad : {0.0, -1.0, infinity, -infinity, std::nan("")})
        EXPECT_FALSE(ztPlatform::setDpiScale(bad, 1.0) || ztPlatform::setDpiScale(1.0, bad)) << bad;
    EXPECT_EQ((std::pair{ztPlatform::getDpiScaleX(), ztPlatform::getDpiScaleY()}), (std::pair{1.5, 2.5}));
}

} // namespace
