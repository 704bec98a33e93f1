// What createOverlay and duplicateOverlay build, share and mark, and the place of the shown image.
#include "TestSupport.h"

namespace
{

using ConstructionTest = SceneTest;
using ImageSlotTest = SceneTest;

TEST_F(ConstructionTest, OverlaysAreCompleteAndMarkedInTheOrderOfBuilding)
{
    osg::NodePtr const parent = makeNode();
    // The nodes keep what the host wrote into the prototype, but for what an overlay needs.
    auto const prototype = osg::dynamicCast<osg::Node>(osg::Node::getClassType().getPrototype());
    prototype->nodeFlags = 1;
    prototype->travMask = 0xFFFFFFFE;
    Recorder recorder;
    osg::NodePtr const node = ztOverlays::createOverlay(parent);
    osg::OverlayPtr const overlay = overlayOf(node);
    std::string const marks = "!Node !4parent !Image !TextureChunk !BlendChunk !ShaderChunk !ChunkMaterial "
                              "!PolygonForeground2 !Overlay";
    EXPECT_EQ(recorder.typedMarks({{"parent", parent}}), marks);
    recorder.clear();
    osg::NodePtr const duplicate = ztOverlays::duplicateOverlay(parent, overlay);
    EXPECT_EQ(recorder.typedMarks({{"parent", parent}}), marks + " !1PolygonForeground2");
    prototype->nodeFlags = 0;
    prototype->travMask = 0xFFFFFFFF;

    EXPECT_EQ(parent->children, (std::vector{node, duplicate}));
    EXPECT_EQ(node->nodeFlags, 17u);
    EXPECT_EQ(duplicate->nodeFlags, 17u);
    EXPECT_EQ(node->travMask, 0xFFFFFFFF);
    EXPECT_TRUE(overlay->foreground->active);
    EXPECT_FALSE(overlayOf(duplicate)->foreground->active);
    EXPECT_TRUE(overlay->dirty);
    EXPECT_EQ(overlay->image, osg::NullFC) << "the shown image is the slot's alone";
    EXPECT_EQ(corners(overlay), "(0, 0) (100, 0) (100, 100) (0, 100)");
    std::string texCoords;
    for (osg::Vec3f const& corner : overlay->foreground->texCoords)
        texCoords += std::to_string(int(corner.x)) + std::to_string(int(corner.y)) + ' ';
    EXPECT_EQ(texCoords, "00 10 11 01 ");

    auto const material = osg::dynamicCast<osg::ChunkMaterial>(overlay->foreground->material);
    ASSERT_EQ(material->chunks.size(), 3u);
    osg::TextureChunkPtr const texture = textureOf(overlay);
    EXPECT_EQ((std::array{texture->minFilter, texture->magFilter, texture->wrapS, texture->wrapT}),
              (std::array{9987u, 9729u, 33071u, 33071u}));
    auto const blend = osg::dynamicCast<osg::BlendChunk>(material->chunks[1]);
    EXPECT_EQ((std::array{blend->srcFactor, blend->destFactor}), (std::array{770u, 771u}));
    auto const shader = osg::dynamicCast<osg::ShaderChunk>(material->chunks[2]);
    EXPECT_NE(shader->fragmentProgram.find("main()"), std::string::npos);
    EXPECT_EQ(shader->fragmentProgram.find("#define"), std::string::npos) << "premultiplied, not opaque";
    osg::ImagePtr const image = texture->image;
    EXPECT_EQ((std::array{image->width, image->height}), (std::array{16, 16}));
    EXPECT_EQ(image->pixels, std::vector<osg::UInt8>(1024, 0));
    for (osg::FieldContainerPtr const& container : std::vector<osg::FieldContainerPtr>{
             node, overlay, overlay->foreground, material, texture, blend, shader, image})
        EXPECT_EQ(container->getRefCount(), 1) << container->getType().getName();
}

TEST_F(ConstructionTest, OnlyASwitchAboveHidesANewOverlay)
{
    for (auto const& [name, parent, travMask] : {std::tuple{"no parent", osg::NodePtr(), 0xFFFFFFFFu},
                                                 {"no core", makeNode(), 0xFFFFFFFFu},
                                                 {"group", makeNode(osg::create<osg::Group>()), 0xFFFFFFFFu},
                                                 {"switch", makeNode(osg::create<osg::Switch>()), 0u}})
    {
        osg::NodePtr const node = hold(ztOverlays::createOverlay(parent));
        EXPECT_EQ(node->travMask, travMask) << name;
        EXPECT_TRUE(overlayOf(node)->foreground->active) << name;
        EXPECT_EQ(hold(ztOverlays::duplicateOverlay(parent, overlayOf(node)))->travMask, 0xFFFFFFFFu) << name;
    }
}

TEST_F(ConstructionTest, DuplicateSharesAPictureButNoRendering)
{
    for (int contentType : {0, 1, 2})
    {
        osg::ImagePtr const image = makeImage(4, 4);
        osg::OverlayPtr const source = makePicture(image);
        source->contentType = contentType;
        source->text = "shared";
        osg::setName(source, "source");
        ztOverlays::updateOverlayImage(source, 100, 100);
        osg::ImagePtr const shown = shownImage(source);
        osg::OverlayPtr const copy = overlayOf(hold(ztOverlays::duplicateOverlay(osg::NullFC, source)));
        EXPECT_EQ(copy->text, "shared");
        EXPECT_FALSE(copy->dirty);
        EXPECT_EQ(copy->image, image);
        EXPECT_EQ(shownImage(source), shown);
        EXPECT_EQ(shownImage(copy)->width, contentType == 0 ? 16 : 4);
        EXPECT_EQ(shownImage(copy) == image, contentType != 0) << contentType;
        EXPECT_EQ(image->getRefCount(), contentType == 0 ? 3 : 5) << "the test, two cores and their chunks";
        EXPECT_NE(copy->foreground, source->foreground);
        EXPECT_EQ(source->foreground->getRefCount(), 1);
    }
    osg::OverlayPtr const bare = hold(osg::create<osg::Overlay>());
    bare->contentType = osg::Overlay::ContentImage;
    osg::OverlayPtr const copy = overlayOf(hold(ztOverlays::duplicateOverlay(osg::NullFC, bare)));
    EXPECT_EQ(shownImage(copy), osg::NullFC) << "complete, also from a bare core";
    EXPECT_EQ(bare->foreground, osg::NullFC);
    EXPECT_EQ(ztOverlays::duplicateOverlay(osg::NullFC, osg::NullFC), osg::NullFC);
}

// Placement brings the slot in line before it does anything else.
TEST_F(ImageSlotTest, FollowsContentTypeAndMarksOnlyAChange)
{
    osg::ImagePtr const picture = makeImage(4, 4), other = makeImage(4, 4);
    osg::OverlayPtr const overlay = makeOverlay();
    osg::ImagePtr const rendering = hold(shownImage(overlay));
    for (auto const& [contentType, image, isMarked] : {std::tuple{0, picture, false},
                                                       {1, picture, true},
                                                       {2, picture, false},
                                                       {2, other, true},
                                                       {0, other, true},
                                                       {1, other, true}})
    {
        overlay->contentType = contentType;
        osg::setRefdCP(overlay->image, image);
        Recorder recorder;
        ztOverlays::updateOverlayPosition(overlay, 0, 0);
        EXPECT_EQ(recorder.typedMarks().find("!1TextureChunk") != std::string::npos, isMarked) << contentType;
        EXPECT_EQ(shownImage(overlay) == image, contentType != 0) << contentType;
        EXPECT_EQ(rendering->getRefCount(), contentType == 0 && image == picture ? 2 : 1) << "given up by the slot";
    }
    overlay->contentType = osg::Overlay::ContentText;
    ztOverlays::updateOverlay(overlay, 100, 100);
    EXPECT_EQ(other->width, 4) << "a text without letters doesn't blank the picture";
    EXPECT_EQ(shownImage(overlay)->width, 16);
}

TEST_F(ImageSlotTest, NullPictureEmptiesItAndATextFillsItIfThereIsOne)
{
    osg::OverlayPtr const overlay = makeText("A");
    overlay->contentType = osg::Overlay::ContentImage;
    ztOverlays::updateOverlay(overlay, 100, 100);
    EXPECT_EQ(shownImage(overlay), osg::NullFC);
    EXPECT_EQ(corners(overlay), "(0, 0) (0, 0) (0, 0) (0, 0)");
    overlay->sizeMode = osg::Overlay::SizeRelative;
    Recorder recorder;
    ztOverlays::updateOverlay(overlay, 100, 100);
    EXPECT_EQ(recorder.marks(), "") << "there is no height to compare";

    overlay->contentType = osg::Overlay::ContentText;
    osg::setRefdCP(overlay->image, makeImage(1, 1));
    ztOverlays::updateOverlayPosition(overlay, 100, 100);
    EXPECT_EQ(shownImage(overlay), osg::NullFC) << "an empty slot beside a picture is left";
    ztOverlays::updateOverlayImage(overlay, 100, 100);
    EXPECT_GT(shownImage(overlay)->height, 0);

    // A material without chunks is left alone; a text has nothing to draw into then.
    osg::setRefdCP(overlay->foreground->material, osg::create<osg::ChunkMaterial>());
    for (auto const& [contentType, marks] : {std::pair{1, "!1000 !8"}, {0, ""}})
    {
        overlay->contentType = contentType;
        overlay->dirty = true;
        recorder.clear();
        ztOverlays::updateOverlay(overlay, 100, 100);
        EXPECT_EQ(recorder.marks(), marks) << contentType;
    }
}

} // namespace
