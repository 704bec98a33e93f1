#include "Construction.h"

#include "ImageSlot.h"
#include "OSGRefPtr.h"
#include "OverlayAccess.h"
#include "VisibleWalk.h"
#include "ztNodeUtils.h"
#include "ztOpenSGExt.h"
#include "ztOverlayUtils.h"

namespace ztOverlays
{

namespace
{

constexpr osg::UInt32 overlayNodeFlag = 16;

// OpenGL's numbers for filters, the wrap mode and blend factors.
constexpr osg::UInt32 linear = 9729, linearMipmapLinear = 9987, clampToEdge = 33071;
constexpr osg::UInt32 srcAlpha = 770, oneMinusSrcAlpha = 771;

void fill(osg::TextureChunkPtr const& chunk, osg::ImagePtr const& image)
{
    chunk->setImage(image);
    chunk->minFilter = linearMipmapLinear;
    chunk->magFilter = linear;
    chunk->wrapS = clampToEdge;
    chunk->wrapT = clampToEdge;
    osg::markChanged(chunk, osg::AllFieldsMask);
}

osg::BlendChunkPtr createBlendChunk()
{
    auto const chunk = osg::create<osg::BlendChunk>();
    chunk->srcFactor = srcAlpha;
    chunk->destFactor = oneMinusSrcAlpha;
    osg::markChanged(chunk, osg::AllFieldsMask);
    return chunk;
}

void fill(osg::ChunkMaterialPtr const& material, osg::TextureChunkPtr const& texture)
{
    osg::NewPtr<osg::BlendChunk> const blend(createBlendChunk());
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

osg::PolygonForeground2Ptr createForeground(osg::Overlay const& overlay)
{
    // What each update reads is allocated at once, to lie close together in memory.
    osg::NewPtr<osg::PolygonForeground2> foreground(osg::create<osg::PolygonForeground2>());
    foreground->positions.reserve(4);
    osg::NewPtr<osg::ChunkMaterial> const material(osg::create<osg::ChunkMaterial>());
    material->chunks.reserve(3);
    osg::NewPtr<osg::TextureChunk> const texture(osg::create<osg::TextureChunk>());

    if (isText(overlay))
        fill(texture, osg::NewPtr<osg::Image>(createBlankImage()));
    else
        fill(texture, overlay.image);
    fill(material, texture);
    fill(foreground, material);
    return foreground.release();
}

/// The settings of an overlay. The copy's fields hold no references of their own yet: they are null.
osg::OverlayPtr copyWithoutReferences(osg::Overlay const& source)
{
    auto const copy = osg::dynamicCast<osg::Overlay>(source.shallowCopy());
    copy->image = osg::NullFC;
    copy->foreground = osg::NullFC;
    return copy;
}

/// Appends a new node to a parent, which may be null, and completes it there. If that fails, the node goes.
template <class Complete>
osg::NodePtr append(osg::NodePtr const& parent, osg::NewPtr<osg::Node>& node, Complete const& complete)
{
    if (parent == osg::NullFC)
    {
        complete();
        return node.release();
    }
    parent->addChild(node);
    osg::NodePtr const child = node.release();
    try
    {
        osg::markChanged(parent, osg::Node::ChildrenFieldMask);
        complete();
    }
    catch (...)
    {
        parent->subChild(child);
        osg::markChanged(parent, osg::Node::ChildrenFieldMask);
        throw;
    }
    return child;
}

bool isSwitch(osg::NodePtr const& node)
{
    return node != osg::NullFC && osg::dynamicCast<osg::Switch>(node->core) != osg::NullFC;
}

} // namespace

void initOverlay(osg::OverlayPtr overlay)
{
    osg::setRefdCP(overlay->foreground, createForeground(*overlay));
    osg::markChanged(overlay, osg::AllFieldsMask);
}

osg::NodePtr createOverlay(osg::NodePtr const& parent)
{
    osg::NewPtr<osg::Node> node(osg::create<osg::Node>());
    bool const hidden = isSwitch(parent);
    node->setCore(osg::create<osg::Overlay>());
    node->nodeFlags |= overlayNodeFlag;
    node->travMask = hidden ? 0 : shownMask;
    osg::markChanged(node, osg::AllFieldsMask);
    osg::OverlayPtr const overlay = overlayOf(node);
    return append(parent, node, [&] { initOverlay(overlay); });
}

osg::NodePtr duplicateOverlay(osg::NodePtr const& parent, OverlayPtr const& source)
{
    if (source == osg::NullFC)
        return osg::NullFC;
    osg::NewPtr<osg::Node> node(osg::create<osg::Node>());
    node->setCore(copyWithoutReferences(*source));
    node->nodeFlags |= overlayNodeFlag;
    osg::markChanged(node, osg::AllFieldsMask);
    osg::OverlayPtr const overlay = overlayOf(node);
    osg::setRefdCP(overlay->image, source->image);
    osg::setRefdCP(overlay->foreground, source->foreground);
    return append(parent, node, [&, added = osg::NodePtr(node)] {
        initOverlay(overlay);
        overlay->foreground->active = isShown(*added) && !ztNodeUtils::hasInActiveParent(added);
        osg::markChanged(overlay->foreground, osg::PolygonForeground2::ActiveFieldMask);
    });
}

} // namespace ztOverlays
