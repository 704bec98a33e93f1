/// \file
/// What drawing asks of a context and leaves as it was.
#pragma once

#include <epoxy/gl.h>

namespace osg
{

/// The context that is current on this thread, whatever made it; null for none.
void* getCurrentGLContext();

/// Puts the state that drawing touches back at the end of its life. The texture and sampler are those of unit 0.
class GLStateGuard
{
  public:
    GLStateGuard();
    GLStateGuard(GLStateGuard const&) = delete;
    GLStateGuard& operator=(GLStateGuard const&) = delete;
    ~GLStateGuard();

  private:
    static constexpr GLenum capabilities[] = {
        GL_BLEND, GL_CULL_FACE, GL_DEPTH_TEST, GL_SAMPLE_ALPHA_TO_COVERAGE, GL_SCISSOR_TEST, GL_STENCIL_TEST};
    static constexpr GLenum unpackParameters[] = {GL_UNPACK_ALIGNMENT, GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS,
                                                  GL_UNPACK_SKIP_PIXELS};

    GLboolean _enabled[6];
    GLint _unpack[4];
    GLint _unpackBuffer, _arrayBuffer, _vertexArray, _program, _activeTexture, _texture, _sampler;
    GLint _viewport[4], _blendFactors[4], _blendEquations[2], _polygonMode[2];
    /// ES has no polygon mode.
    bool _isDesktop;
};

} // namespace osg
