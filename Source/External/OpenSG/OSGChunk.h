/// \file
/// Chunks: the pieces of drawing state that a material is made of.
#pragma once

#include "OSGImage.h"

#include <memory>
#include <string>

namespace osg::v1
{

/// The base of all chunks.
class ZTOPENSG_EXPORT StateChunk : public FieldContainer
{
    ZT_ABSTRACT_CONTAINER(StateChunk)

  public:
    /// Expires when the chunk is destroyed: for renderers, which keep objects of their own for it. One thread at a time
    /// may ask a chunk.
    std::weak_ptr<void const> getLife() const;

    /// Grows when a chunk is destroyed whose life a renderer has asked for.
    static UInt64 getNumEnded();

  protected:
    ~StateChunk() override;

  private:
    mutable NotCopied<std::shared_ptr<void const>> _life;
};

using StateChunkPtr = FCPtr<StateChunk>;

class ZTOPENSG_EXPORT TextureChunkBase : public StateChunk
{
  public:
    /// Counted, and entered in the image's `parents`: written only through TextureChunk::setImage().
    ZT_FIELD(StateChunk, 0, Image, image, ImagePtr);
    /// OpenGL's numbers for GL_LINEAR and GL_REPEAT.
    static constexpr UInt32 Linear = 9729, Repeat = 10497;

    /// OpenGL's numbers of the filters and wrap modes.
    ZT_FIELD(StateChunk, 1, MinFilter, minFilter, UInt32) = Linear;
    ZT_FIELD(StateChunk, 2, MagFilter, magFilter, UInt32) = Linear;
    ZT_FIELD(StateChunk, 3, WrapS, wrapS, UInt32) = Repeat;
    ZT_FIELD(StateChunk, 4, WrapT, wrapT, UInt32) = Repeat;
    static constexpr UInt16 FieldEnd = StateChunk::FieldEnd + 5;
};

/// A texture made from an image.
class ZTOPENSG_EXPORT TextureChunk : public TextureChunkBase
{
    ZT_CONTAINER(TextureChunk)

  public:
    /// Shows another image, or none: leaves the old image's `parents` (the first entry for this chunk), counts the new
    /// image, gives back the old, and goes to the end of the new image's `parents`. With the image that it has, the
    /// count stays and the chunk's entry moves to the end. Marks nothing.
    void setImage(ImagePtr const& newImage);

    /// Grows with each change of the image that is announced: another one, or other pixels.
    UInt64 getImageRevision() const { return _imageRevision; }

    void changed(BitVector mask, UInt32 origin) override;

  protected:
    ~TextureChunk() override;

  private:
    UInt64 _imageRevision = 0;
};

using TextureChunkPtr = FCPtr<TextureChunk>;

class ZTOPENSG_EXPORT BlendChunkBase : public StateChunk
{
  public:
    /// OpenGL's numbers for GL_ONE and GL_ZERO.
    static constexpr UInt32 One = 1, Zero = 0;

    /// OpenGL's numbers of the blend factors, for straight alpha.
    ZT_FIELD(StateChunk, 0, SrcFactor, srcFactor, UInt32) = One;
    ZT_FIELD(StateChunk, 1, DestFactor, destFactor, UInt32) = Zero;
    static constexpr UInt16 FieldEnd = StateChunk::FieldEnd + 2;
};

/// How drawn pixels mix with those that are there.
class ZTOPENSG_EXPORT BlendChunk : public BlendChunkBase
{
    ZT_CONTAINER(BlendChunk)
};

using BlendChunkPtr = FCPtr<BlendChunk>;

class ZTOPENSG_EXPORT ShaderChunkBase : public StateChunk
{
  public:
    /// GLSL without a `#version` line, which the renderer puts before it. It feeds the inputs `position` and `texCoord`
    /// (vec2) and the uniform `pixelsToClip` (mat4); samplers read texture unit 0.
    ZT_FIELD(StateChunk, 0, VertexProgram, vertexProgram, SharedString);
    ZT_FIELD(StateChunk, 1, FragmentProgram, fragmentProgram, SharedString);
    static constexpr UInt16 FieldEnd = StateChunk::FieldEnd + 2;
};

/// The program that draws a polygon.
class ZTOPENSG_EXPORT ShaderChunk : public ShaderChunkBase
{
    ZT_CONTAINER(ShaderChunk)
};

using ShaderChunkPtr = FCPtr<ShaderChunk>;

} // namespace osg::v1
