#include "OSGMaterial.h"

namespace osg
{

OSG_ABSTRACT_CONTAINER_TYPE(Material, FieldContainer);
OSG_CONTAINER_TYPE(ChunkMaterial, Material);

ChunkMaterial::~ChunkMaterial()
{
    for (StateChunkPtr const& chunk : chunks)
        subRef(chunk);
}

bool ChunkMaterial::addChunk(StateChunkPtr const& chunk, Int32 slot)
{
    if (chunk == NullFC || slot != AutoSlot)
        return false;
    addRef(chunk);
    chunks.push_back(chunk);
    return true;
}

namespace
{

template <class T>
void keepFirst(T*& chunk, FieldContainerType const& type, StateChunkPtr const& candidate)
{
    if (!chunk && type.isDerivedFrom(T::getClassType()))
        chunk = static_cast<T*>(candidate.get());
}

} // namespace

DrawChunks drawChunksOf(MaterialPtr const& material)
{
    DrawChunks chunks;
    if (material == NullFC || !material->getType().isDerivedFrom(ChunkMaterial::getClassType()))
        return chunks;
    for (StateChunkPtr const& chunk : static_cast<ChunkMaterial*>(material.get())->chunks)
    {
        FieldContainerType const& type = chunk->getType();
        keepFirst(chunks.texture, type, chunk);
        keepFirst(chunks.blend, type, chunk);
        keepFirst(chunks.shader, type, chunk);
    }
    return chunks;
}

} // namespace osg
