/// \file
/// Materials.
#pragma once

#include "OSGChunk.h"

namespace osg::v1
{

/// The base of all materials.
class ZTOPENSG_EXPORT Material : public FieldContainer
{
    ZT_ABSTRACT_CONTAINER(Material)
};

using MaterialPtr = FCPtr<Material>;

class ZTOPENSG_EXPORT ChunkMaterialBase : public Material
{
  public:
    /// Counted, written through ChunkMaterial::addChunk().
    ZT_FIELD(Material, 0, Chunks, chunks, std::vector<StateChunkPtr>);
    static constexpr UInt16 FieldEnd = Material::FieldEnd + 1;
};

/// A material made of chunks.
class ZTOPENSG_EXPORT ChunkMaterial : public ChunkMaterialBase
{
    ZT_CONTAINER(ChunkMaterial)

  public:
    /// The slot of a chunk that is to come behind the others.
    static constexpr Int32 AutoSlot = -2;

    /// Appends a chunk, counted. Nothing happens for a null chunk or a slot other than AutoSlot. Marks nothing.
    ///
    /// \return whether the chunk was added
    bool addChunk(StateChunkPtr const& chunk, Int32 slot);

  protected:
    ~ChunkMaterial() override;
};

using ChunkMaterialPtr = FCPtr<ChunkMaterial>;

/// The chunks of a material that a renderer reads, borrowed; null where there is none of a kind.
struct DrawChunks
{
    TextureChunk* texture = nullptr;
    BlendChunk* blend = nullptr;
    ShaderChunk* shader = nullptr;
};

/// The first chunk of each kind. All are null if the material is null or no osg::ChunkMaterial.
ZTOPENSG_EXPORT DrawChunks drawChunksOf(MaterialPtr const& material);

} // namespace osg::v1
