// What createOverlay and duplicateOverlay build, share and mark, and the place of the shown image.
#include "TestSupport.h"

#include "OSGDrawAction.h"

namespace
{

using ConstructionTest = SceneTest;
using ImageSlotTest = SceneTest;

TEST_F(ConstructionTest, NewOverlayIsComplete)
{
    osg::NodePtr const parent = makeNode();
    osg::NodePtr const node = ztOverlays::createOverlay(parent);
    osg::OverlayPtr const overlay = overlayOf(node);
    EXPECT_EQ(parent->children, std::vector{node});
    EXPECT_EQ(node->nodeFlags & 16, 16u);
    EXPECT_TRUE(overlay->dirty);
    EXPECT_TRUE(overlay->foreground->active);
    EXPECT_EQ(corners(overlay), "(0, 0) (100, 0) (100, 100) (0, 100)");
    EXPECT_EQ(overlay->image, osg::NullFC) << "the shown image is the slot's alone";

    auto const material = osg::dynamicCast<osg::ChunkMaterial>(overlay->foreground->material);
    ASSERT_EQ(material->chunks.size(), 3u);
    osg::TextureChunkPtr const texture = textureOf(overlay);
    EXPECT_EQ(texture->minFilter, 9987u);
    EXPECT_EQ(texture->magFilter, 9729u);
    EXPECT_EQ(texture->wrapS, 33071u);
    EXPECT_EQ(texture->wrapT, 33071u);
    auto const blend = osg::dynamicCast<osg::BlendChunk>(material->chunks[1]);
    EXPECT_EQ(blend->srcFactor, 770u);
    EXPECT_EQ(blend->destFactor, 771u);
    auto const shader = osg::dynamicCast<osg::ShaderChunk>(material->chunks[2]);
    EXPECT_NE(shader->fragmentProgram.find("main()"), std::string::npos);

    osg::ImagePtr const image = texture->image;
    EXPECT_EQ(image->width, 16);
    EXPECT_EQ(image->height, 16);
    EXPECT_EQ(image->pixels, std::vector<osg::UInt8>(1024, 0));
    for (osg::FieldContainerPtr const& container : std::vector<osg::FieldContainerPtr>{
             node, overlay, overlay->foreground, material, texture, blend, shader, image})
        EXPECT_EQ(container->getRefCount(), 1) << container->getType().getName();
    float s = 0, t = 0;
    for (osg::Vec3f const& corner : overlay->foreground->texCoords)
    {
        s = s * 2 + corner.x;
        t = t * 2 + corner.y;
    }
    EXPECT_EQ(s, 6) << "0 1 1 0";
    EXPECT_EQ(t, 3) << "0 0 1 1";
}

TEST_F(ConstructionTest, MarksComeInTheOrderOfBuilding)
{
    osg::NodePtr const parent = makeNode();
    Recorder recorder;
    osg::NodePtr const node = ztOverlays::createOverlay(parent);
    osg::OverlayPtr const overlay = overlayOf(node);
    auto const material = osg::dynamicCast<osg::ChunkMaterial>(overlay->foreground->material);
    EXPECT_EQ(recorder.marks({{"node", node},
                              {"parent", parent},
                              {"image", shownImage(overlay)},
                              {"texture", material->chunks[0]},
                              {"blend", material->chunks[1]},
                              {"shader", material->chunks[2]},
                              {"material", material},
                              {"foreground", overlay->foreground},
                              {"core", overlay}}),
              "!node !4parent !image !texture !blend !shader !material !foreground !core");
}

TEST_F(ConstructionTest, OnlyASwitchAboveHidesANewOverlay)
{
    for (auto const& [name, parent, travMask] :
         {std::tuple{"no parent", osg::NodePtr(), 0xFFFFFFFFu}, std::tuple{"no core", makeNode(), 0xFFFFFFFFu},
          std::tuple{"group", makeNode(osg::create<osg::Group>()), 0xFFFFFFFFu},
          std::tuple{"switch", makeNode(osg::create<osg::Switch>()), 0u}})
    {
        osg::NodePtr const node = hold(ztOverlays::createOverlay(parent));
        EXPECT_EQ(node->travMask, travMask) << name;
        EXPECT_TRUE(overlayOf(node)->foreground->active) << name;
        osg::NodePtr const duplicate = hold(ztOverlays::duplicateOverlay(parent, overlayOf(node)));
        EXPECT_EQ(duplicate->travMask, 0xFFFFFFFFu) << name;
        EXPECT_TRUE(overlayOf(duplicate)->foreground->active) << name;
    }
    osg::SwitchPtr const none = osg::create<osg::Switch>();
    none->choice = osg::Switch::NoChild;
    osg::NodePtr const hidden = ztOverlays::duplicateOverlay(makeNode(none), makeOverlay());
    EXPECT_FALSE(overlayOf(hidden)->foreground->active);
}

TEST_F(ConstructionTest, DuplicateOfATextSharesNoRendering)
{
    osg::OverlayPtr const source = makeText("shared");
    osg::setRefdCP(source->image, makeImage(1, 1));
    osg::setName(source, "source");
    ztOverlays::updateOverlayImage(source, 100, 100);
    osg::ImagePtr const rendering = shownImage(source);
    osg::OverlayPtr const copy = overlayOf(hold(ztOverlays::duplicateOverlay(osg::NullFC, source)));
    EXPECT_EQ(copy->text, "shared");
    EXPECT_FALSE(copy->dirty);
    EXPECT_EQ(copy->image, source->image);
    EXPECT_EQ(shownImage(copy)->width, 16);
    EXPECT_EQ(shownImage(source), rendering);
    EXPECT_NE(copy->foreground, source->foreground);
    EXPECT_EQ(source->foreground->getRefCount(), 1);
    EXPECT_EQ(source->image->getRefCount(), 3) << "the test, two cores";
}

TEST_F(ConstructionTest, DuplicateOfAPictureSharesThePicture)
{
    osg::ImagePtr const image = makeImage(4, 4);
    osg::OverlayPtr const source = makePicture(image);
    ztOverlays::updateOverlayImage(source, 100, 100);
    EXPECT_EQ(image->getRefCount(), 3) << "the test, a core and its chunk";
    osg::OverlayPtr const copy = overlayOf(hold(ztOverlays::duplicateOverlay(osg::NullFC, source)));
    EXPECT_EQ(shownImage(copy), image);
    EXPECT_EQ(image->getRefCount(), 5);
    EXPECT_EQ(image->parents.size(), 2u);
    EXPECT_EQ(image->parents.back(), textureOf(copy));
}

TEST_F(ConstructionTest, DuplicateOfABareCoreIsComplete)
{
    osg::OverlayPtr const source = hold(osg::create<osg::Overlay>());
    source->contentType = osg::Overlay::ContentImage;
    osg::OverlayPtr const copy = overlayOf(hold(ztOverlays::duplicateOverlay(osg::NullFC, source)));
    ASSERT_NE(copy->foreground, osg::NullFC);
    EXPECT_EQ(shownImage(copy), osg::NullFC);
    EXPECT_EQ(source->foreground, osg::NullFC);
    EXPECT_EQ(ztOverlays::duplicateOverlay(osg::NullFC, osg::NullFC), osg::NullFC);
}

TEST_F(ConstructionTest, ForegroundHandsItsPolygonToTheRenderer)
{
    struct Renderer : osg::DrawActionBase
    {
        void drawPolygon(osg::TexturedPolygon const& polygon, osg::Viewport& viewport) override
        {
            corner = polygon.positions.at(2);
            texCoord = polygon.texCoords.at(2);
            material = polygon.material;
            shownOn = &viewport;
        }
        osg::Pnt2f corner;
        osg::Vec3f texCoord;
        osg::MaterialPtr material;
        osg::Viewport* shownOn = nullptr;
    } renderer;
    osg::ForegroundPtr const foreground = makeOverlay()->foreground;
    osg::ViewportPtr const viewport = makeViewport(10, 10);
    foreground->draw(&renderer, viewport.get());
    EXPECT_EQ(renderer.corner.y, 100);
    EXPECT_EQ(renderer.texCoord.y, 1);
    EXPECT_NE(osg::dynamicCast<osg::ChunkMaterial>(renderer.material), osg::NullFC);
    EXPECT_EQ(renderer.shownOn, viewport.get());
}

// Placement brings the slot in line before it does anything else.
TEST_F(ImageSlotTest, FollowsContentTypeAndMarksOnlyAChange)
{
    osg::ImagePtr const picture = makeImage(4, 4), other = makeImage(4, 4);
    osg::OverlayPtr const overlay = makeOverlay();
    osg::ImagePtr const text = hold(shownImage(overlay));
    osg::setRefdCP(overlay->image, picture);
    auto const sync = [&](int contentType) {
        overlay->contentType = contentType;
        Recorder recorder;
        ztOverlays::updateOverlayPosition(overlay, 0, 0);
        return recorder.marks({{"texture", textureOf(overlay)}}).find("!1texture") != std::string::npos;
    };
    EXPECT_FALSE(sync(osg::Overlay::ContentText));
    EXPECT_EQ(shownImage(overlay), text);
    EXPECT_TRUE(sync(osg::Overlay::ContentImage));
    EXPECT_EQ(shownImage(overlay), picture);
    EXPECT_EQ(text->getRefCount(), 1) << "the slot gave the rendering up";
    EXPECT_FALSE(sync(2)) << "any content type but text is a picture";
    osg::setRefdCP(overlay->image, other);
    EXPECT_TRUE(sync(2));
    EXPECT_TRUE(sync(osg::Overlay::ContentText));
    EXPECT_NE(shownImage(overlay), other) << "a text never renders into the picture";
    EXPECT_EQ(shownImage(overlay)->width, 16);
    EXPECT_EQ(other->getRefCount(), 2);
}

TEST_F(ImageSlotTest, NullPictureEmptiesItAndATextFillsItAgain)
{
    osg::OverlayPtr const overlay = makeText("A");
    overlay->contentType = osg::Overlay::ContentImage;
    ztOverlays::updateOverlay(overlay, 100, 100);
    EXPECT_EQ(shownImage(overlay), osg::NullFC);
    EXPECT_EQ(corners(overlay), "(0, 0) (0, 0) (0, 0) (0, 0)");

    overlay->contentType = osg::Overlay::ContentText;
    osg::setRefdCP(overlay->image, makeImage(1, 1));
    ztOverlays::updateOverlayPosition(overlay, 100, 100);
    EXPECT_EQ(shownImage(overlay), osg::NullFC) << "an empty slot beside a picture is left";
    ztOverlays::updateOverlayImage(overlay, 100, 100);
    EXPECT_GT(shownImage(overlay)->height, 0);
}

TEST_F(ImageSlotTest, MaterialWithoutChunksIsLeftAlone)
{
    osg::OverlayPtr const overlay = makePicture(makeImage(1, 1));
    osg::setRefdCP(overlay->foreground->material, osg::create<osg::ChunkMaterial>());
    Recorder recorder;
    ztOverlays::updateOverlay(overlay, 100, 100);
    EXPECT_EQ(recorder.marks({{"core", overlay}, {"foreground", overlay->foreground}}), "!1000core !8foreground");
}

} // namespace
