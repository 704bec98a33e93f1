/// \file
/// What drawing asks of a context and leaves as it was.
#pragma once

#include "GLContext.h"

#include <array>
#include <iterator>

namespace osg::v1
{

/// How colours are blended in the first draw buffer: the factors of source and destination for colour, then those for
/// alpha, then the equations for colour and alpha.
using Blending = std::array<GLenum, 6>;

void setBlending(GLVersion const& version, Blending const& blending);

/// Sets the first viewport.
void setViewport(GLVersion const& version, GLint left, GLint bottom, GLsizei width, GLsizei height);

/// The state that a context has for its host while overlays are drawn. From the start on nothing alters plain polygons
/// and the upload of plain bytes, texture unit 0 is active and has no sampler, and blending is on. restore() makes all
/// that, and what else drawing touches, what it was. Where state is kept for each draw buffer or viewport, only the
/// first is touched.
class GLHostState
{
  public:
    explicit GLHostState(GLVersion const& version);
    void restore() const;

  private:
    /// What would alter plain polygons or where they are drawn. Those from `firstOfDesktop` on aren't in OpenGL ES 3.0.
    static constexpr GLenum alterations[] = {
        GL_CULL_FACE,        GL_DEPTH_TEST,     GL_RASTERIZER_DISCARD,  GL_SAMPLE_ALPHA_TO_COVERAGE,
        GL_SAMPLE_COVERAGE,  GL_SCISSOR_TEST,   GL_STENCIL_TEST,        GL_COLOR_LOGIC_OP,
        GL_FRAMEBUFFER_SRGB, GL_POLYGON_SMOOTH, GL_SAMPLE_ALPHA_TO_ONE, GL_SAMPLE_MASK};
    static constexpr std::size_t firstOfDesktop = 7;
    static constexpr GLenum unpackParameters[] = {GL_UNPACK_ALIGNMENT, GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS,
                                                  GL_UNPACK_SKIP_PIXELS};

    std::size_t numAlterations() const;

    GLVersion _version;
    std::array<bool, std::size(alterations)> _wasEnabled{};
    std::array<GLint, std::size(unpackParameters)> _unpack;
    GLint _unpackBuffer, _arrayBuffer, _vertexArray, _program, _activeTexture, _texture, _sampler, _polygonMode[2];
    bool _wasBlending;
    /// Fractions only where there are several viewports.
    GLfloat _fractionalViewport[4];
    GLint _viewport[4], _clipControl[2];
    Blending _blending;
};

} // namespace osg::v1
