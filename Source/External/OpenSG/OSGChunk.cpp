#include "OSGChunk.h"

#include <atomic>

namespace osg::v1
{

ZT_ABSTRACT_CONTAINER_TYPE(StateChunk, FieldContainer);
ZT_CONTAINER_TYPE(TextureChunk, StateChunk);
ZT_CONTAINER_TYPE(BlendChunk, StateChunk);
ZT_CONTAINER_TYPE(ShaderChunk, StateChunk);

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
    while (image->parents.remove(this))
        ;
    subRef(image);
}

void TextureChunk::setImage(ImagePtr const& newImage)
{
    if (newImage != NullFC)
        newImage->parents.makeRoom(); // what follows can't fail
    if (image != NullFC)
        image->parents.remove(this);
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

} // namespace osg::v1
