// Typed pointers, counts, types, the edit protocol, attachments, nodes, images and chunks.
#include "TestSupport.h"

#include "OSGCamera.h"
#include "ztMaterials.h"
#include "ztNodeUtils.h"

#include <cmath>
#include <limits>
#include <thread>

namespace
{

/// Remembers the last change that it was told of.
class Listener : public osg::FieldContainer
{
    OSG_CONTAINER(Listener)

  public:
    void changed(osg::BitVector newMask, osg::UInt32 newOrigin) override
    {
        mask = newMask;
        origin = newOrigin;
    }

    osg::BitVector mask = 0;
    osg::UInt32 origin = 0;
};

OSG_CONTAINER_TYPE(Listener, FieldContainer);

using ContainerTest = SceneTest;

TEST_F(ContainerTest, NullPointsNowhereAndIsLeftAlone)
{
    Recorder recorder;
    osg::addRef(osg::NullFC);
    osg::subRef(osg::NullFC);
    osg::markChanged(osg::NullFC, osg::AllFieldsMask);
    EXPECT_EQ(recorder.text(), "");
    EXPECT_EQ(osg::NullFC.getParentEPos(), osg::FieldContainerPtrBase::InvalidParentEPos);
    EXPECT_EQ(osg::dynamicCast<osg::Node>(osg::NullFC), osg::NullFC);
    EXPECT_EQ(osg::create<osg::NodeCore>(), osg::NullFC) << "an abstract type has no prototype";
}

TEST_F(ContainerTest, TypeTestFollowsTheParentLinks)
{
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
    osg::GroupPtr const group = osg::create<osg::Group>();
    EXPECT_EQ(group->getRefCount(), 0);
    EXPECT_EQ(osg::FieldContainerFactory::getNumContainers(), before + 1);
    Recorder recorder;
    osg::addRef(group);
    osg::addRef(group);
    osg::subRef(group);
    EXPECT_EQ(group->getRefCount(), 1);
    osg::subRef(group);
    EXPECT_EQ(recorder.text({{"group", group}}), "+group +group -group xgroup");
    osg::subRef(osg::create<osg::Group>());
    EXPECT_EQ(osg::FieldContainerFactory::getNumContainers(), before);
}

TEST_F(ContainerTest, CountsSurviveThreads)
{
    osg::GroupPtr const group = hold(osg::create<osg::Group>());
    auto const work = [&group] {
        for (int i = 0; i < 20000; ++i)
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

TEST_F(ContainerTest, CountedAssignmentTakesTheOldThenStoresThenAddsTheNew)
{
    osg::NodePtr const a = makeNode(), b = makeNode();
    osg::NodePtr field;
    Recorder recorder;
    osg::setRefdCP(field, a);
    osg::setRefdCP(field, a);
    osg::setRefdCP(field, b);
    osg::setRefdCP(field, osg::NullFC);
    EXPECT_EQ(recorder.text({{"a", a}, {"b", b}}), "+a -a +b -b");
    EXPECT_EQ(field, osg::NullFC);
}

TEST_F(ContainerTest, CountedAssignmentKeepsWhatOnlyTheOldTargetHeld)
{
    osg::NodePtr const parent = osg::create<osg::Node>(), child = osg::create<osg::Node>();
    parent->addChild(child);
    osg::NodePtr field;
    osg::setRefdCP(field, parent);
    osg::setRefdCP(field, child);
    EXPECT_EQ(child->getRefCount(), 1);
    EXPECT_EQ(child->parent, osg::NullFC);
    osg::setRefdCP(field, osg::NullFC);
}

TEST_F(ContainerTest, IgnoredChangesAreRecordedButNotDelivered)
{
    auto const listener = hold(osg::create<Listener>());
    Recorder recorder;
    osg::FieldContainerPtr::_ignore_change = true;
    osg::markChanged(listener, 3);
    osg::FieldContainerPtr::_ignore_change = false;
    EXPECT_EQ(listener->mask, 0u);
    osg::markChanged(listener, 5);
    EXPECT_EQ(listener->mask, 5u);
    EXPECT_EQ(listener->origin, osg::FieldContainer::OriginExternal);
    EXPECT_EQ(recorder.text(), "!3 !5");
}

TEST_F(ContainerTest, OverlayBecomesDirtyByWhatDecidesThePicture)
{
    using O = osg::Overlay;
    struct Row
    {
        char const* name;
        osg::BitVector mask;
        bool dirty;
    };
    for (Row const& row : {
             Row{"content type", O::ContentTypeFieldMask, true},
             {"image", O::ImageFieldMask, true},
             {"text", O::TextFieldMask, true},
             {"font", O::FontFieldMask, true},
             {"text colour", O::TextColorFieldMask, true},
             {"background colour", O::BackgroundColorFieldMask, true},
             {"background transparency", O::BackgroundTransparencyFieldMask, true},
             {"size mode", O::SizeModeFieldMask, true},
             {"size", O::SizeFieldMask, true},
             {"size and offset", O::SizeFieldMask | O::OffsetFieldMask, true},
             {"anchor, offset and foreground", O::AnchorFieldMask | O::OffsetFieldMask | O::ForegroundFieldMask, false},
             {"text and dirty", O::TextFieldMask | O::DirtyFieldMask, false},
             {"all fields", osg::AllFieldsMask, false},
         })
    {
        osg::OverlayPtr const overlay = hold(osg::create<O>());
        overlay->dirty = false;
        osg::markChanged(overlay, row.mask);
        EXPECT_EQ(overlay->dirty, row.dirty) << row.name;
    }
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
    EXPECT_EQ(name->getRefCount(), 1);
    EXPECT_EQ(node->findAttachment(group, 1), osg::NullFC);
    auto const copy = hold(osg::dynamicCast<osg::Node>(node->shallowCopy()));
    EXPECT_EQ(copy->findAttachment(group), osg::NullFC);
    node->subAttachment(group);
    EXPECT_EQ(node->findAttachment(group), osg::NullFC);
}

TEST_F(ContainerTest, ChildrenKnowTheirParentAndHaveOne)
{
    osg::NodePtr const a = makeNode(), b = makeNode(), child = makeNode();
    a->addChild(child);
    b->addChild(child);
    EXPECT_TRUE(a->children.empty());
    EXPECT_EQ(child->parent, b);
    EXPECT_EQ(child->getRefCount(), 2);
    b->addChild(osg::NullFC);
    child->addChild(b);
    child->addChild(child);
    EXPECT_TRUE(child->children.empty()) << "a node is no descendant of its own";
    a->subChild(child);
    EXPECT_EQ(child->parent, b) << "taken from a node that hasn't it";
    b->subChild(child);
    EXPECT_EQ(child->parent, osg::NullFC);
    EXPECT_EQ(child->getRefCount(), 1);
}

TEST_F(ContainerTest, CoreKnowsItsNodes)
{
    osg::GroupPtr const core = hold(osg::create<osg::Group>());
    osg::NodePtr const node = makeNode(core);
    osg::NodePtr const other = osg::create<osg::Node>();
    other->setCore(core);
    EXPECT_EQ(core->getParents(), (std::vector<osg::NodePtr>{node, other}));
    osg::subRef(other);
    node->setCore(osg::NullFC);
    EXPECT_TRUE(core->getParents().empty());
    EXPECT_EQ(core->getRefCount(), 1);
}

TEST_F(ContainerTest, TraverseVisitsHiddenNodesAndStopsWhenToldTo)
{
    osg::NodePtr const root = makeNode(), a = makeNode(osg::NullFC, root), b = makeNode(osg::NullFC, a),
                       c = makeNode(osg::NullFC, root);
    a->travMask = 0;
    for (auto const& [last, expected] :
         {std::pair{osg::NodePtr(), std::vector{root, a, b, c}}, std::pair{b, std::vector{root, a, b}}})
    {
        std::vector<osg::NodePtr> seen;
        osg::traverse(root, [&seen, last = last](osg::NodePtr const& node) {
            seen.push_back(node);
            return node == last ? osg::Action::Quit : osg::Action::Continue;
        });
        EXPECT_EQ(seen, expected);
    }
    osg::traverse(osg::NullFC, [](osg::NodePtr const&) -> osg::Action::ResultE { throw "visited"; });
}

TEST_F(ContainerTest, InactiveParents)
{
    struct Row
    {
        char const* name;
        osg::UInt32 rootMask, nodeMask;
        osg::Int32 choice;
        bool inactive;
    };
    constexpr osg::UInt32 all = 0xFFFFFFFF;
    for (Row const& row : {
             Row{"all shown", all, all, osg::Switch::AllChildren, false},
             {"own mask plays no part", all, 0, osg::Switch::AllChildren, false},
             {"one bit above missing", all - 1, all, osg::Switch::AllChildren, true},
             {"chosen branch", all, all, 1, false},
             {"other branch", all, all, 0, true},
             {"no such branch", all, all, 7, true},
             {"no branch", all, all, osg::Switch::NoChild, true},
         })
    {
        auto const core = osg::create<osg::Switch>();
        osg::NodePtr const root = makeNode(core);
        makeNode(osg::NullFC, root);
        osg::NodePtr const branch = makeNode(osg::NullFC, root), node = makeNode(osg::NullFC, branch);
        core->choice = row.choice;
        root->travMask = row.rootMask;
        node->travMask = row.nodeMask;
        EXPECT_EQ(ztNodeUtils::hasInActiveParent(node), row.inactive) << row.name;
    }
    EXPECT_FALSE(ztNodeUtils::hasInActiveParent(osg::NullFC));
}

TEST_F(ContainerTest, FindMaterialPoolFollowsItsFlags)
{
    osg::NodePtr const root = makeNode(), branch = makeNode(osg::NullFC, root), leaf = makeNode(osg::NullFC, branch);
    osg::NodePtr const pool = makeNode(osg::create<osg::MaterialPool>(), root);
    EXPECT_EQ(ztMaterials::findMaterialPool(leaf, true, true), pool);
    EXPECT_EQ(ztMaterials::findMaterialPool(leaf, false, true), osg::NullFC);
    EXPECT_EQ(ztMaterials::findMaterialPool(root, true, false), osg::NullFC);
    EXPECT_EQ(ztMaterials::findMaterialPool(pool, false, false), pool);
    EXPECT_EQ(ztMaterials::findMaterialPool(osg::NullFC, true, true), osg::NullFC);
}

TEST_F(ContainerTest, ImageSetGivesSizeAndBytes)
{
    constexpr osg::UInt32 rgba = osg::Image::FormatRGBA;
    struct Row
    {
        char const* name;
        osg::UInt32 format;
        int width, height, depth, width1, height1;
        std::size_t bytes;
    };
    osg::ImagePtr const image = makeImage(3, 3);
    for (Row const& row : {
             Row{"plain", rgba, 5, 2, 1, 5, 2, 40},
             {"no width", rgba, 0, 2, 1, 0, 2, 0},
             {"negative height", rgba, 5, -2, 1, 5, -2, 0},
             {"unknown format", 6407, 5, 2, 1, 0, 0, 0},
             {"a volume", rgba, 5, 2, 2, 0, 0, 0},
         })
    {
        bool const filled = image->set(row.format, row.width, row.height, row.depth, 1, 1, 0.0, nullptr,
                                       osg::Image::TypeUInt8, true, 1);
        EXPECT_EQ(image->width, row.width1) << row.name;
        EXPECT_EQ(image->height, row.height1) << row.name;
        EXPECT_EQ(image->pixels.size(), row.bytes) << row.name;
        EXPECT_EQ(filled, image->pixelBuffer() != nullptr) << row.name;
    }
}

TEST_F(ContainerTest, ImageCopiesBytesOrUsesThemInPlace)
{
    osg::UInt8 bytes[4] = {1, 2, 3, 4};
    osg::ImagePtr const image = makeImage(2, 2);
    auto const set = [&](bool allocate) {
        image->set(osg::Image::FormatRGBA, 1, 1, 1, 1, 1, 0.0, bytes, osg::Image::TypeUInt8, allocate, 1);
    };
    set(false);
    EXPECT_EQ(image->pixelBuffer(), bytes);
    set(true);
    bytes[0] = 9;
    EXPECT_EQ(pixelAt(image, 0, 0), (std::array{1, 2, 3, 4}));
}

TEST_F(ContainerTest, ImageTellsItsUsersOfAChange)
{
    auto const listener = hold(osg::create<Listener>());
    osg::ImagePtr const image = makeImage(1, 1);
    image->parents.push_back(osg::FieldContainerPtr(listener.get(), 7));
    Recorder recorder;
    osg::markChanged(image, osg::AllFieldsMask);
    EXPECT_EQ(listener->mask, osg::BitVector(1) << 7);
    EXPECT_EQ(listener->origin, osg::FieldContainer::OriginChild);
    EXPECT_EQ(recorder.text(), "!") << "only the image itself is marked";
    auto const copy = hold(osg::dynamicCast<osg::Image>(image->shallowCopy()));
    EXPECT_TRUE(copy->parents.empty());
    image->parents.clear();
}

TEST_F(ContainerTest, TextureKeepsCountsAndParentsOfItsImage)
{
    osg::TextureChunkPtr const chunk = hold(osg::create<osg::TextureChunk>());
    osg::TextureChunkPtr const other = hold(osg::create<osg::TextureChunk>());
    osg::ImagePtr const a = makeImage(1, 1), b = makeImage(1, 1);
    using Users = std::vector<osg::FieldContainerPtr>;
    chunk->setImage(a);
    other->setImage(a);
    Recorder recorder;
    chunk->setImage(a);
    EXPECT_EQ(static_cast<Users&>(a->parents), (Users{other, chunk})) << "the entry moves to the end";
    a->parents.insert(a->parents.begin(), chunk);
    chunk->setImage(b);
    EXPECT_EQ(static_cast<Users&>(a->parents), (Users{other, chunk})) << "only the first entry goes";
    chunk->setImage(osg::NullFC);
    EXPECT_TRUE(b->parents.empty());
    EXPECT_EQ(recorder.text({{"a", a}, {"b", b}}), "+a -a +b -a -b");
    EXPECT_EQ(a->getRefCount(), 2);
}

TEST_F(ContainerTest, DestroyedTextureLeavesItsImage)
{
    osg::TextureChunkPtr const chunk = osg::create<osg::TextureChunk>();
    osg::ImagePtr const image = makeImage(1, 1);
    chunk->setImage(image);
    osg::subRef(chunk);
    EXPECT_TRUE(image->parents.empty());
    EXPECT_EQ(image->getRefCount(), 1);
}

TEST_F(ContainerTest, MaterialTakesChunksInOrder)
{
    auto const material = hold(osg::create<osg::ChunkMaterial>());
    osg::StateChunkPtr const a = osg::create<osg::BlendChunk>(), b = osg::create<osg::TextureChunk>();
    EXPECT_TRUE(material->addChunk(a, -2));
    EXPECT_TRUE(material->addChunk(b, -2));
    EXPECT_FALSE(material->addChunk(osg::NullFC, -2));
    EXPECT_FALSE(material->addChunk(a, 0));
    EXPECT_EQ(material->chunks, (std::vector<osg::StateChunkPtr>{a, b}));
    EXPECT_EQ(a->getRefCount(), 1);
}

TEST_F(ContainerTest, DpiScaleRefusesWhatIsNoScale)
{
    ASSERT_TRUE(ztPlatform::setDpiScale(1.5, 2.5));
    double const infinity = std::numeric_limits<double>::infinity();
    for (double bad : {0.0, -1.0, infinity, -infinity, std::nan("")})
    {
        EXPECT_FALSE(ztPlatform::setDpiScale(bad, 1.0)) << bad;
        EXPECT_FALSE(ztPlatform::setDpiScale(1.0, bad)) << bad;
    }
    EXPECT_EQ(ztPlatform::getDpiScaleX(), 1.5);
    EXPECT_EQ(ztPlatform::getDpiScaleY(), 2.5);
}

} // namespace
