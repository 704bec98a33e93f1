// Typed pointers, counts, types, the edit protocol, attachments, nodes, images and chunks.
#include "TestSupport.h"

using ContainerTest = SceneTest;

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
    node->addAttachment(name);
    node->addAttachment(name);
    EXPECT_EQ(name->getRefCount(), 1) << "added anew";
    EXPECT_EQ(node->findAttachment(group, 1), osg::NullFC);
    EXPECT_EQ(node->findAttachment(group + 1), osg::NullFC);
    EXPECT_EQ(hold(osg::dynamicCast<osg::Node>(node->shallowCopy()))->findAttachment(group), osg::NullFC);
    node->subAttachment(group);
    EXPECT_EQ(node->findAttachment(group), osg::NullFC);
}

TEST_F(ContainerTest, ChildrenKnowTheirParentAndCoresTheirNodes)
{
    osg::NodePtr const a = makeNode(), b = makeNode(), child = osg::create<osg::Node>();
    Recorder recorder;
    a->addChild(child);
    b->addChild(child);
    EXPECT_EQ(recorder.take(), "+ + -") << "survives the move";
    b->addChild(osg::NullFC);
    child->addChild(b);
    child->addChild(child);
    a->subChild(child);
    EXPECT_EQ(a->children.size() + child->children.size(), 0u) << "a node is no descendant of its own";
    EXPECT_EQ(child->parent, b) << "taken from a node that hasn't it";
    hold(child);
    b->subChild(child);
    EXPECT_EQ(child->parent, osg::NullFC);

    osg::GroupPtr const core = osg::create<osg::Group>();
    osg::NodePtr const other = osg::create<osg::Node>();
    for (osg::NodePtr const& node : {a, other, b})
        node->setCore(core);
    osg::subRef(other);
    a->setCore(osg::NullFC);
    EXPECT_EQ(core->getParents(), std::vector{b});
}

TEST_F(ContainerTest, ImageTakesASizeAndCopiesBytesOrUsesThemInPlace)
{
    osg::ImagePtr const image = makeImage(-5, -2);
    EXPECT_EQ((std::array{image->width, image->height, int(image->pixels.size())}), (std::array{-5, -2, 0}));
    EXPECT_FALSE(image->set(6407, 5, 2, 1, 1, 1, 0.0, nullptr, osg::Image::TypeUInt8, true, 1)) << "another format";
    EXPECT_EQ(image->width, 0);
    osg::UInt8 bytes[4] = {1, 2, 3, 4};
    for (bool const inPlace : {true, false})
    {
        EXPECT_TRUE(image->set(6408, 1, 1, 1, 1, 1, 0.0, bytes, osg::Image::TypeUInt8, !inPlace, 1));
        EXPECT_EQ(image->pixelBuffer() == bytes, inPlace);
    }
    EXPECT_EQ(image->pixels, (std::vector<osg::UInt8>{1, 2, 3, 4}));
}

TEST_F(ContainerTest, TextureKeepsCountsAndParentsOfItsImage)
{
    auto const chunk = hold(osg::create<osg::TextureChunk>()), other = osg::create<osg::TextureChunk>();
    osg::ImagePtr const a = makeImage(1, 1), b = makeImage(1, 1);
    using Users = std::vector<osg::FieldContainerPtr>;
    chunk->setImage(a);
    other->setImage(a);
    Recorder recorder;
    auto const revision = chunk->getImageRevision();
    osg::FieldContainerPtr::_ignore_change = true;
    osg::markChanged(chunk, osg::TextureChunk::ImageFieldMask);
    osg::FieldContainerPtr::_ignore_change = false;
    osg::markChanged(chunk, osg::TextureChunk::MinFilterFieldMask);
    osg::markChanged(a, osg::Image::PixelsFieldMask);
    EXPECT_EQ(chunk->getImageRevision(), revision + 1) << "told by the image";
    EXPECT_EQ(recorder.take({{"A", a}, {"chunk", chunk}}), "!1chunk !2chunk !8A");
    chunk->setImage(a);
    EXPECT_EQ(a->parents, (Users{other, chunk})) << "the entry moves to the end";
    chunk->setImage(b);
    EXPECT_EQ(a->parents, Users{other});
    chunk->setImage(osg::NullFC);
    osg::subRef(other);
    EXPECT_EQ(a->parents.size() + b->parents.size(), 0u) << "a destroyed texture leaves";
    EXPECT_EQ(recorder.take({{"A", a}, {"B", b}, {"other", other}}), "+A -A +B -A -B xother -A");
}
