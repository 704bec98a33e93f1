#include "OSGMaterial.h"

namespace osg::v1
{

ZT_ABSTRACT_CONTAINER_TYPE(Material, FieldContainer);
ZT_CONTAINER_TYPE(ChunkMaterial, Material);

ChunkMaterial::~ChunkMaterial()
{
    for (StateChunkPtr const& chunk : chunks)
        subRef(chunk);
}

bool ChunkMaterial::addChunk(StateChunkPtr const& chunk, Int32 slot)
{
    if (chunk == NullFC || slot != AutoSlot)
        return false;
    StateChunkPtr const added = chunk; // it may be an entry
    makeRoom(chunks);                  // what follows can't fail
    addRef(added);
    chunks.push_back(added);
    return true;
}

namespace
{

template <class T>
void keepFirst(T*& chunk, StateChunkPtr const& candidate)
{
    if (!chunk)
        chunk = dynamicCast<T>(candidate).get();
}

} // namespace

DrawChunks drawChunksOf(MaterialPtr const& material)
{
    DrawChunks chunks;
    auto const chunkMaterial = dynamicCast<ChunkMaterial>(material);
    if (chunkMaterial == NullFC)
        return chunks;
    for (StateChunkPtr const& chunk : chunkMaterial->chunks)
    {
        keepFirst(chunks.texture, chunk);
        keepFirst(chunks.blend, chunk);
        keepFirst(chunks.shader, chunk);
    }
    return chunks;
}

} // namespace osg::v1
