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

} // namespace osg
