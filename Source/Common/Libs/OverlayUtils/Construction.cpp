#include "Construction.h"

#include "ImageSlot.h"
#include "ztNodeUtils.h"
#include "ztOpenSGExt.h"
#include "ztOverlayUtils.h"

namespace ztOverlays
{

namespace
{

constexpr osg::UInt32 overlayNodeFlag = 16;

void fill(osg::TextureChunkPtr const& chunk, osg::ImagePtr const& image)
{
    chunk->setImage(image);
    chunk->minFilter = 9987; // GL_LINEAR_MIPMAP_LINEAR
    chunk->magFilter = 9729; // GL_LINEAR
    chunk->wrapS = 33071;    // GL_CLAMP_TO_EDGE
    chunk->wrapT = 33071;
    osg::markChanged(chunk, osg::AllFieldsMask);
}

osg::BlendChunkPtr createBlendChunk()
{
    auto const chunk = osg::create<osg::BlendChunk>();
    chunk->srcFactor = 770;  // GL_SRC_ALPHA
    chunk->destFactor = 771; // GL_ONE_MINUS_SRC_ALPHA
    osg::markChanged(chunk, osg::AllFieldsMask);
    return chunk;
}

void fill(osg::ChunkMaterialPtr const& material, osg::TextureChunkPtr const& texture)
{
    osg::BlendChunkPtr const blend = createBlendChunk();
    osg::StateChunkPtr const shader = ztOpenSGExt::createBackplateShader(false, false);
    material->addChunk(texture, osg::ChunkMaterial::AutoSlot);
    material->addChunk(blend, osg::ChunkMaterial::AutoSlot);
    material->addChunk(shader, osg::ChunkMaterial::AutoSlot);
    osg::markChanged(material, osg::AllFieldsMask);
}

void fill(osg::PolygonForeground2Ptr const& foreground, osg::ChunkMaterialPtr const& material)
{
    osg::setRefdCP(foreground->material, material);
    foreground->texCoords.reserve(4);
    for (osg::Vec3f const& corner : {osg::Vec3f{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}})
        foreground->texCoords.push_back(corner);
    foreground->normalizedX = false;
    foreground->normalizedY = false;
    foreground->aspectWidth = 0;
    foreground->aspectHeight = 0;
    foreground->tile = false;
    for (osg::Pnt2f const& corner : {osg::Pnt2f{0, 0}, {100, 0}, {100, 100}, {0, 100}})
        foreground->positions.push_back(corner);
    osg::markChanged(foreground, osg::AllFieldsMask);
}

void append(osg::NodePtr const& parent, osg::NodePtr const& child)
{
    if (parent == osg::NullFC)
        return;
    parent->addChild(child);
    osg::markChanged(parent, osg::Node::ChildrenFieldMask);
}

bool isSwitch(osg::NodePtr const& node)
{
    return node != osg::NullFC && osg::dynamicCast<osg::Switch>(node->core) != osg::NullFC;
}

} // namespace

void initOverlay(osg::OverlayPtr overlay)
{
    // What each update reads is allocated at once, to lie close together in memory.
    auto const foreground = osg::create<osg::PolygonForeground2>();
    foreground->positions.reserve(4);
    auto const material = osg::create<osg::ChunkMaterial>();
    material->chunks.reserve(3);
    auto const texture = osg::create<osg::TextureChunk>();

    bool const isText = overlay->contentType == osg::Overlay::ContentText;
    fill(texture, isText ? createBlankImage() : overlay->image);
    fill(material, texture);
    fill(foreground, material);
    osg::setRefdCP(overlay->foreground, foreground);
    osg::markChanged(overlay, osg::AllFieldsMask);
}

osg::NodePtr createOverlay(osg::NodePtr const& parent)
{
    auto const node = osg::create<osg::Node>();
    bool const hidden = isSwitch(parent);
    node->setCore(osg::create<osg::Overlay>());
    node->nodeFlags |= overlayNodeFlag;
    node->travMask = hidden ? 0 : 0xFFFFFFFF;
    osg::markChanged(node, osg::AllFieldsMask);
    append(parent, node);
    initOverlay(osg::dynamicCast<osg::Overlay>(node->core));
    return node;
}

osg::NodePtr duplicateOverlay(osg::NodePtr const& parent, OverlayPtr const& source)
{
    if (source == osg::NullFC)
        return osg::NullFC;
    auto const node = osg::create<osg::Node>();
    auto const overlay = osg::dynamicCast<osg::Overlay>(source->shallowCopy());
    node->setCore(overlay);
    node->nodeFlags |= overlayNodeFlag;
    osg::markChanged(node, osg::AllFieldsMask);
    // The copy's fields hold no references of their own yet.
    osg::addRef(overlay->image);
    osg::addRef(overlay->foreground);
    append(parent, node);
    initOverlay(overlay);

    bool const shown = node->travMask == 0xFFFFFFFF;
    overlay->foreground->active = shown && !ztNodeUtils::hasInActiveParent(node);
    osg::markChanged(overlay->foreground, osg::PolygonForeground2::ActiveFieldMask);
    return node;
}

} // namespace ztOverlays
