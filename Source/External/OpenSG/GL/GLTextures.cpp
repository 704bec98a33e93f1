#include "GLTextures.h"

#include "ztPixels.h"

#include <algorithm>
#include <new>

namespace osg::v1
{

GLuint GLSamplers::of(GLSampling const& sampling, Failure& failure)
{
    auto const known = _samplers.find(sampling);
    if (known != _samplers.end())
        return known->second;
    constexpr GLenum parameters[] = {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER, GL_TEXTURE_WRAP_S,
                                     GL_TEXTURE_WRAP_T};
    GLuint sampler = 0;
    glGenSamplers(1, &sampler);
    for (std::size_t i = 0; i < sampling.size(); ++i)
        glSamplerParameteri(sampler, parameters[i], GLint(sampling[i]));
    failure = takeGLError();
    if (failure.empty())
        return _samplers[sampling] = sampler;
    glDeleteSamplers(1, &sampler);
    return 0;
}

void GLSamplers::clear()
{
    for (auto const& [sampling, sampler] : _samplers)
        glDeleteSamplers(1, &sampler);
    _samplers.clear();
}

namespace
{

/// A picture's pixels at another size; none if there is no memory for them.
std::vector<UInt8> resample(Image& image, Int32 width, Int32 height)
try
{
    std::vector<UInt8> pixels(std::size_t(width) * std::size_t(height) * ztPixels::channels);
    ztPixels::resample(image.pixelBuffer(), image.width, image.height, pixels.data(), width, height,
                       ztPixels::triangle());
    return pixels;
}
catch (std::bad_alloc const&)
{
    return {};
}

} // namespace

GLuint GLTextures::of(TextureChunk& chunk, bool needsMipmaps, Failure& failure)
{
    Texture& texture = pictureOf(chunk).own;
    if (!texture.name || texture.revision != chunk.getImageRevision())
    {
        failure = upload(texture, chunk.image->pixelBuffer(), chunk.image->width, chunk.image->height);
        texture.revision = chunk.getImageRevision();
    }
    if (needsMipmaps && !texture.hasMipmaps && failure.empty())
    {
        glBindTexture(GL_TEXTURE_2D, texture.name);
        glGenerateMipmap(GL_TEXTURE_2D);
        failure = takeGLError();
        texture.hasMipmaps = failure.empty();
    }
    texture.lastUse = _use;
    return texture.name;
}

GLuint GLTextures::of(TextureChunk& chunk, Int32 width, Int32 height)
{
    Texture& texture = resampledOf(pictureOf(chunk), width, height);
    if (texture.width != width || texture.height != height || texture.revision != chunk.getImageRevision())
    {
        std::vector<UInt8> const pixels = resample(*chunk.image, width, height);
        if (pixels.empty() || !upload(texture, pixels.data(), width, height).empty())
            retire(texture);
        texture.width = width;
        texture.height = height;
        texture.revision = chunk.getImageRevision();
    }
    texture.lastUse = _use;
    return texture.name;
}

GLTextures::Picture& GLTextures::pictureOf(TextureChunk const& chunk)
{
    auto const [entry, isNew] = _pictures.try_emplace(&chunk);
    if (isNew)
        entry->second.life = chunk.getLife();
    return entry->second;
}

/// That of a size, else one to be made so: a new one, or that which hasn't been asked for for the longest time.
GLTextures::Texture& GLTextures::resampledOf(Picture& picture, Int32 width, Int32 height)
{
    constexpr std::size_t most = 4;
    auto& textures = picture.resampled;
    auto found = std::find_if(textures.begin(), textures.end(), [&](Texture const& texture) {
        return texture.width == width && texture.height == height;
    });
    if (found == textures.end())
        found = textures.size() < most ? textures.emplace(textures.end()) : std::prev(textures.end());
    std::rotate(textures.begin(), found, std::next(found));
    return textures.front();
}

Failure GLTextures::upload(Texture& texture, UInt8 const* pixels, Int32 width, Int32 height)
{
    // Draws that are still to be made show what was in the picture when they were asked for.
    if (texture.lastUse == _use)
        retire(texture);
    bool const isNew = !texture.name;
    if (isNew)
        glGenTextures(1, &texture.name);
    glBindTexture(GL_TEXTURE_2D, texture.name);
    if (isNew) // so that a driver makes no room for mipmaps
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    if (!isNew && width == texture.width && height == texture.height)
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    else
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    texture.width = width;
    texture.height = height;
    texture.hasMipmaps = false;
    Failure const failure = takeGLError();
    if (!failure.empty())
        retire(texture);
    else
        ++_numUploads;
    return failure;
}

void GLTextures::retire(Texture& texture)
{
    if (!texture.name)
        return;
    _retired.push_back(texture.name);
    texture.name = 0;
}

void GLTextures::retire(Picture& picture)
{
    retire(picture.own);
    for (Texture& texture : picture.resampled)
        retire(texture);
}

void GLTextures::sweep()
{
    for (auto it = _pictures.begin(); it != _pictures.end();)
    {
        bool const ended = it->second.life.expired();
        if (ended)
            retire(it->second);
        it = ended ? _pictures.erase(it) : std::next(it);
    }
}

void GLTextures::endUse()
{
    ++_use;
    glDeleteTextures(GLsizei(_retired.size()), _retired.data());
    _retired.clear();
}

void GLTextures::clear()
{
    for (auto& [chunk, picture] : _pictures)
        retire(picture);
    _pictures.clear();
    endUse();
}

std::size_t GLTextures::size() const
{
    std::size_t count = 0;
    for (auto const& [chunk, picture] : _pictures)
        count += std::size_t(std::count_if(picture.resampled.begin(), picture.resampled.end(),
                                           [](Texture const& texture) { return texture.name != 0; })) +
                 (picture.own.name != 0);
    return count;
}

} // namespace osg::v1
