/// \file
/// What drawing asks of a context and leaves as it was.
#pragma once

#include <epoxy/gl.h>

#include <array>

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

/// The rectangle of the first viewport: left, bottom, width, height.
void setViewport(GLVersion const& version, std::array<GLfloat, 4> const& rectangle);

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
    GLVersion _version;
    std::array<bool, 12> _wasEnabled{};
    std::array<GLint, 4> _unpack;
    GLint _unpackBuffer, _arrayBuffer, _vertexArray, _program, _activeTexture, _texture, _sampler, _polygonMode[2];
    bool _wasBlending;
    std::array<GLfloat, 4> _viewport;
    Blending _blending;
};

} // namespace osg
