/// \file
/// The textures of texture chunks, and how they are sampled.
#pragma once

#include "GLContext.h"
#include "OSGChunk.h"

#include <array>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

namespace osg::v1
{

/// How a texture is read, in enumerants of OpenGL: the filters that make it smaller and larger, the wrap modes along s
/// and t.
using GLSampling = std::array<GLenum, 4>;

/// Sampler objects, one for each way of reading.
class GLSamplers
{
  public:
    /// Sets a failure for values that OpenGL doesn't know.
    GLuint of(GLSampling const& sampling, Failure& failure);
    void clear();

  private:
    std::map<GLSampling, GLuint> _samplers;
};

/// Textures for pictures at their own size and at others. They are uploaded to texture unit 0, which is active, and
/// only when they are asked for after a change of the chunk's image has been marked.
class GLTextures
{
  public:
    /// \param numUploads  grows with each upload
    explicit GLTextures(UInt64& numUploads) : _numUploads(numUploads) {}

    /// The picture of a chunk, complete and no larger than the context allows. Sets a failure if it can't be had.
    GLuint of(TextureChunk& chunk, bool needsMipmaps, Failure& failure);

    /// The same, resampled to a size as for a stamp. The last sizes are kept, so that as many viewports can show a
    /// picture at sizes of their own. 0 if it can't be had.
    GLuint of(TextureChunk& chunk, Int32 width, Int32 height);

    /// Lets go what belongs to chunks that have ended.
    void sweep();

    /// Ends the use of all textures that have been asked for: deletes what has gone meanwhile, and lets those that stay
    /// be uploaded anew in place.
    void endUse();
    void clear();

    std::size_t size() const;

  private:
    struct Texture
    {
        GLuint name = 0;
        UInt64 revision = 0;
        UInt64 lastUse = 0;
        Int32 width = 0;
        Int32 height = 0;
        bool hasMipmaps = false;
    };

    struct Picture
    {
        std::weak_ptr<void const> life;
        Texture own;
        /// The last one asked for first. Without a name if it couldn't be had.
        std::vector<Texture> resampled;
    };

    Picture& pictureOf(TextureChunk const& chunk);
    Texture& resampledOf(Picture& picture, Int32 width, Int32 height);
    Failure upload(Texture& texture, UInt8 const* pixels, Int32 width, Int32 height);
    void retire(Texture& texture);
    void retire(Picture& picture);

    UInt64& _numUploads;
    UInt64 _use = 1;
    std::unordered_map<StateChunk const*, Picture> _pictures;
    std::vector<GLuint> _retired;
};

} // namespace osg::v1
