/// \file
/// What drawing asks of a context and leaves as it was.
#pragma once

#include <epoxy/gl.h>

#include <array>
#include <iterator>

namespace osg
{

/// The context of EGL or GLX that is current on this thread; null for none.
void* getCurrentGLContext();

/// What a context offers.
struct GLVersion
{
    static GLVersion ofCurrentContext();

    /// OpenGL 3.3 or OpenGL ES 3.0.
    bool isEnough() const { return number >= (isDesktop ? 33 : 30); }

    /// Ten times the version: 33 for 3.3.
    int number;
    bool isDesktop;
};

/// How colours are blended in the first draw buffer.
struct Blending
{
    GLenum sourceColor, destColor, sourceAlpha, destAlpha, colorEquation, alphaEquation;
};

void setBlending(GLVersion const& version, Blending const& blending);

/// Sets the first viewport.
void setViewport(GLVersion const& version, GLint left, GLint bottom, GLsizei width, GLsizei height);

/// Keeps drawing and the context's state apart. From its start on nothing alters plain polygons and the upload of plain
/// bytes, texture unit 0 is active and has no sampler, and blending is on. At its end all that, and what else drawing
/// touches, is as it was. Where state is kept for each draw buffer or viewport, it touches only the first.
class GLStateGuard
{
  public:
    explicit GLStateGuard(GLVersion const& version);
    GLStateGuard(GLStateGuard const&) = delete;
    GLStateGuard& operator=(GLStateGuard const&) = delete;
    ~GLStateGuard();

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

} // namespace osg
