// What createOverlay and duplicateOverlay build, share and mark, and the place of the shown image.
#include "TestSupport.h"

#include "ztOpenSGExt.h"

namespace
{

class ConstructionTest : public SceneTest
{
  public:
    static osg::ShaderChunkPtr shaderOf(osg::NodePtr const& node)
    {
        auto const material = osg::dynamicCast<osg::ChunkMaterial>(overlayOf(node)->foreground->material);
        return osg::dynamicCast<osg::ShaderChunk>(material->chunks.at(2));
    }

    static void writePrototypes(osg::UInt32 nodeFlags, osg::UInt32 travMask, bool flags, osg::UInt16 aspect)
    {
        auto const node = osg::dynamicCast<osg::Node>(osg::Node::getClassType().getPrototype());
        node->nodeFlags = nodeFlags;
        node->travMask = travMask;
        auto const polygon =
            osg::dynamicCast<osg::PolygonForeground2>(osg::PolygonForeground2::getClassType().getPrototype());
        polygon->tile = polygon->normalizedX = polygon->normalizedY = flags;
        polygon->aspectWidth = polygon->aspectHeight = aspect;
    }
};

} // namespace

TEST_F(ConstructionTest, OverlaysAreCompleteAndMarkedInTheOrderOfBuilding)
{
    osg::NodePtr const parent = makeNode(osg::create<osg::Group>());
    for (bool const isDuplicate : {false, true})
    {
        Recorder recorder;
        osg::NodePtr const node = isDuplicate ? ztOverlays::duplicateOverlay(parent, overlayOf(parent->children[0]))
                                              : ztOverlays::createOverlay(parent);
        auto const foreground = overlayOf(node)->foreground;
        auto const material = osg::dynamicCast<osg::ChunkMaterial>(foreground->material);
        auto const texture = textureOf(overlayOf(node));
        auto const blend = osg::dynamicCast<osg::BlendChunk>(material->chunks.at(1));
        auto const shader = shaderOf(node);
        Recorder::Names names{{"N", node},    {"O", node->core}, {"F", foreground}, {"M", material},
                              {"T", texture}, {"B", blend},      {"S", shader},     {"I", texture->image}};
        for (auto const& [name, part] : names)
            EXPECT_EQ(part->getRefCount(), 1) << name;
        names.emplace_back("P", parent);
        EXPECT_EQ(recorder.take(names),
                  isDuplicate ? "+O !N + +N !P.children !I +I !T !B !S +T +B +S !M +M !F - +F !O !F.active"
                              : "+O !N +N !P.children !I +I !T !B !S +T +B +S !M +M !F +F !O");
        EXPECT_EQ(corners(overlayOf(node)), (std::vector<float>{0, 0, 100, 0, 100, 100, 0, 100}));
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_EQ((std::tuple{100 * foreground->texCoords[i].x, 100 * foreground->texCoords[i].y,
                                  foreground->texCoords[i].z}),
                      (std::tuple{foreground->positions[i].x, foreground->positions[i].y, 0.0f}));
        EXPECT_EQ((std::array{texture->minFilter, texture->magFilter, texture->wrapS, texture->wrapT, blend->srcFactor,
                              blend->destFactor}),
                  (std::array{9987u, 9729u, 33071u, 33071u, 770u, 771u}));
        EXPECT_EQ(texture->image->pixels, makeImage(16, 16)->pixels);
    }
}

TEST_F(ConstructionTest, WhatTheHostWroteIntoThePrototypesIsKeptButForWhatAnOverlayNeeds)
{
    writePrototypes(1, 0xFFFFFFFE, true, 1);
    for (bool const isDuplicate : {false, true})
    {
        osg::NodePtr const node = hold(isDuplicate ? ztOverlays::duplicateOverlay(osg::NullFC, makeText("a"))
                                                   : ztOverlays::createOverlay(osg::NullFC));
        auto const foreground = overlayOf(node)->foreground;
        EXPECT_EQ((std::pair{node->nodeFlags, node->travMask}),
                  (std::pair{17u, isDuplicate ? 0xFFFFFFFE : 0xFFFFFFFF}));
        EXPECT_EQ(foreground->active, !isDuplicate);
        EXPECT_FALSE(foreground->tile || foreground->normalizedX || foreground->normalizedY ||
                     foreground->aspectWidth || foreground->aspectHeight);
    }
    writePrototypes(0, 0xFFFFFFFF, false, 0);
}

TEST_F(ConstructionTest, ShaderTextIsSharedUntilItIsWritten)
{
    auto const create = [this](bool straight, bool opaque) {
        return hold(osg::dynamicCast<osg::ShaderChunk>(ztOpenSGExt::createBackplateShader(straight, opaque)));
    };
    osg::ShaderChunkPtr const shaders[] = {shaderOf(hold(ztOverlays::createOverlay(osg::NullFC))),
                                           shaderOf(hold(ztOverlays::duplicateOverlay(osg::NullFC, makeText("")))),
                                           create(false, false)};
    for (osg::ShaderChunkPtr const& shader : shaders)
    {
        EXPECT_EQ(shader->fragmentProgram.str().data(), shaders[0]->fragmentProgram.str().data());
        EXPECT_EQ(shader->vertexProgram.str().data(), shaders[0]->vertexProgram.str().data());
    }
    std::string const plain = shaders[0]->fragmentProgram, straight = "#define STRAIGHT_ALPHA\n",
                      opaque = "#define OPAQUE\n";
    EXPECT_EQ(plain.find("#define"), std::string::npos) << "premultiplied, not opaque";
    EXPECT_EQ(create(true, false)->fragmentProgram, straight + plain);
    EXPECT_EQ(create(false, true)->fragmentProgram, opaque + plain);
    osg::ShaderChunkPtr const chunk = create(true, true), other = create(true, true);
    chunk->fragmentProgram += "// more";
    EXPECT_EQ(chunk->fragmentProgram, straight + opaque + plain + "// more");
    EXPECT_EQ(other->fragmentProgram, straight + opaque + plain);
    EXPECT_FALSE(chunk->fragmentProgram == other->fragmentProgram);
    chunk->fragmentProgram = std::string(other->fragmentProgram);
    EXPECT_TRUE(chunk->fragmentProgram == other->fragmentProgram);
}

TEST_F(ConstructionTest, DuplicateSharesAPictureButNoRendering)
{
    for (int contentType : {0, 1, 2})
    {
        osg::ImagePtr const image = makeImage(4, 4);
        osg::OverlayPtr const source = makePicture(image);
        source->contentType = contentType;
        source->text = "text";
        ztOverlays::updateOverlayImage(source, 100, 100);
        osg::OverlayPtr const copy = overlayOf(hold(ztOverlays::duplicateOverlay(osg::NullFC, source)));
        EXPECT_FALSE(copy->dirty);
        EXPECT_EQ(shownImage(copy)->width, contentType == 0 ? 16 : 4);
        EXPECT_EQ(image->getRefCount(), contentType == 0 ? 3 : 5) << "the test, two cores and their chunks";
        EXPECT_EQ(source->foreground->getRefCount(), 1);
    }
    EXPECT_EQ(ztOverlays::duplicateOverlay(osg::NullFC, osg::NullFC), osg::NullFC);
}

// Placement brings the slot in line before it does anything else.
TEST_F(ConstructionTest, SlotFollowsContentTypeAndMarksOnlyAChange)
{
    osg::ImagePtr const picture = makeImage(4, 4), other = makeImage(4, 4), none;
    osg::OverlayPtr const overlay = makeText("text", 0.5f, osg::Overlay::SizeRelative);
    std::tuple<int, osg::ImagePtr, bool> const rows[] = {{0, picture, false}, {1, picture, true},  {2, picture, false},
                                                         {2, other, true},    {0, picture, false}, {0, other, true},
                                                         {1, none, true}};
    for (auto const& [contentType, image, isMarked] : rows)
    {
        overlay->contentType = contentType;
        osg::setRefdCP(overlay->image, image);
        Recorder recorder;
        ztOverlays::updateOverlayPosition(overlay, 0, 0);
        EXPECT_EQ(recorder.take({{"S", textureOf(overlay)}}).find("!S.image") != std::string::npos, isMarked)
            << contentType;
        EXPECT_EQ(shownImage(overlay) == image, contentType != 0) << contentType;
    }
    EXPECT_EQ(corners(overlay), std::vector<float>(8, 0.0f)) << "without a picture";
    Recorder recorder;
    overlay->dirty = false;
    ztOverlays::updateOverlay(overlay, 100, 100);
    EXPECT_EQ(recorder.take(), "") << "an empty slot has no height to compare";

    overlay->contentType = osg::Overlay::ContentText;
    osg::setRefdCP(overlay->image, picture);
    ztOverlays::updateOverlayPosition(overlay, 100, 100);
    EXPECT_EQ(shownImage(overlay), none) << "an empty slot beside a picture is left";
    ztOverlays::updateOverlayImage(overlay, 100, 100);
    EXPECT_EQ(shownImage(overlay)->height, 50);
}

TEST_F(ConstructionTest, MaterialThatDoesNotBeginWithATextureIsLeftAloneAndATextHasNothingToDrawInto)
{
    osg::OverlayPtr const overlay = makePicture(makeImage(4, 4));
    auto const chunkMaterial = hold(osg::create<osg::ChunkMaterial>());
    overlay->text = "text";
    osg::MaterialPtr const materials[] = {chunkMaterial, chunkMaterial, osg::NullFC};
    for (std::size_t i = 0; i < 6; ++i)
    {
        osg::setRefdCP(overlay->foreground->material, materials[i / 2]);
        osg::StateChunkPtr const chunk = i == 2 ? osg::create<osg::BlendChunk>() : osg::FCPtr<osg::BlendChunk>();
        EXPECT_EQ(chunkMaterial->addChunk(chunk, osg::ChunkMaterial::AutoSlot), i == 2);
        EXPECT_FALSE(chunkMaterial->addChunk(textureOf(makeText("")), 0));
        overlay->contentType = int(i % 2);
        overlay->dirty = true;
        ztOverlays::blendOverlaysOntoImage({overlay}, overlay->image, osg::NullFC);
        EXPECT_EQ(overlay->dirty, i % 2 == 0);
    }
}
