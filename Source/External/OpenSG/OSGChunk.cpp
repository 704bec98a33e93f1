#include "OSGChunk.h"

#include <algorithm>
#include <atomic>

namespace osg
{

OSG_ABSTRACT_CONTAINER_TYPE(StateChunk, FieldContainer);
OSG_CONTAINER_TYPE(TextureChunk, StateChunk);
OSG_CONTAINER_TYPE(BlendChunk, StateChunk);
OSG_CONTAINER_TYPE(ShaderChunk, StateChunk);

namespace
{
std::atomic<UInt64> numEnded{0};
}

StateChunk::~StateChunk()
{
    if (!_life)
        return;
    _life.reset(); // before renderers look
    ++numEnded;
}

std::weak_ptr<void const> StateChunk::getLife() const
{
    if (!_life)
        _life = std::make_shared<char>();
    return _life;
}

UInt64 StateChunk::getNumEnded()
{
    return numEnded;
}

TextureChunk::~TextureChunk()
{
    if (image == NullFC)
        return;
    auto& parents = image->parents;
    parents.erase(std::remove(parents.begin(), parents.end(), FieldContainerPtr(this)), parents.end());
    subRef(image);
}

void TextureChunk::setImage(ImagePtr const& newImage)
{
    if (image != NullFC)
    {
        auto& parents = image->parents;
        auto const self = std::find(parents.begin(), parents.end(), FieldContainerPtr(this));
        if (self != parents.end())
            parents.erase(self);
    }
    addRef(newImage);
    subRef(image);
    image = newImage;
    if (image != NullFC)
        image->parents.push_back(FieldContainerPtr(this, ImageFieldId));
}

void TextureChunk::changed(BitVector mask, UInt32 origin)
{
    TextureChunkBase::changed(mask, origin);
    if (mask & ImageFieldMask)
        ++_imageRevision;
}

} // namespace osg
