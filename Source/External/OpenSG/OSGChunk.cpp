#include "OSGChunk.h"

#include <algorithm>

namespace osg
{

OSG_ABSTRACT_CONTAINER_TYPE(StateChunk, FieldContainer);
OSG_CONTAINER_TYPE(TextureChunk, StateChunk);
OSG_CONTAINER_TYPE(BlendChunk, StateChunk);
OSG_CONTAINER_TYPE(ShaderChunk, StateChunk);

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
    ImagePtr const next = newImage;
    if (image != NullFC)
    {
        auto& parents = image->parents;
        auto const self = std::find(parents.begin(), parents.end(), FieldContainerPtr(this));
        if (self != parents.end())
            parents.erase(self);
    }
    addRef(next);
    subRef(image);
    image = next;
    if (image != NullFC)
        image->parents.push_back(FieldContainerPtr(this, ImageFieldId));
}

} // namespace osg
