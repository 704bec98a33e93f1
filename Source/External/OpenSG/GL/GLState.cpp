#include "GLState.h"

#include <dlfcn.h>
#include <iterator>

namespace osg
{

namespace
{

GLint get(GLenum parameter)
{
    GLint value = 0;
    glGetIntegerv(parameter, &value);
    return value;
}

/// What a function without arguments returns, null if its library isn't in the process.
void* ask(char const* library, char const* function)
{
    void* const handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    if (!handle)
        return nullptr;
    auto const getContext = reinterpret_cast<void* (*)()>(dlsym(handle, function));
    void* const context = getContext ? getContext() : nullptr;
    dlclose(handle);
    return context;
}

void enable(GLenum capability, GLboolean enabled)
{
    enabled ? glEnable(capability) : glDisable(capability);
}

} // namespace

// libepoxy ends the process where a function is called without a context, so it can't be asked.
void* getCurrentGLContext()
{
    if (void* const context = ask("libEGL.so.1", "eglGetCurrentContext"))
        return context;
    void* const context = ask("libGLX.so.0", "glXGetCurrentContext");
    return context ? context : ask("libGL.so.1", "glXGetCurrentContext");
}

GLStateGuard::GLStateGuard() : _isDesktop(epoxy_is_desktop_gl())
{
    for (std::size_t i = 0; i < std::size(capabilities); ++i)
        _enabled[i] = glIsEnabled(capabilities[i]);
    for (std::size_t i = 0; i < std::size(unpackParameters); ++i)
        _unpack[i] = get(unpackParameters[i]);
    _unpackBuffer = get(GL_PIXEL_UNPACK_BUFFER_BINDING);
    _arrayBuffer = get(GL_ARRAY_BUFFER_BINDING);
    _vertexArray = get(GL_VERTEX_ARRAY_BINDING);
    _program = get(GL_CURRENT_PROGRAM);
    _activeTexture = get(GL_ACTIVE_TEXTURE);
    glActiveTexture(GL_TEXTURE0);
    _texture = get(GL_TEXTURE_BINDING_2D);
    _sampler = get(GL_SAMPLER_BINDING);
    glGetIntegerv(GL_VIEWPORT, _viewport);
    _blendFactors[0] = get(GL_BLEND_SRC_RGB);
    _blendFactors[1] = get(GL_BLEND_DST_RGB);
    _blendFactors[2] = get(GL_BLEND_SRC_ALPHA);
    _blendFactors[3] = get(GL_BLEND_DST_ALPHA);
    _blendEquations[0] = get(GL_BLEND_EQUATION_RGB);
    _blendEquations[1] = get(GL_BLEND_EQUATION_ALPHA);
    if (_isDesktop)
        glGetIntegerv(GL_POLYGON_MODE, _polygonMode);
}

GLStateGuard::~GLStateGuard()
{
    if (_isDesktop)
        glPolygonMode(GL_FRONT_AND_BACK, GLenum(_polygonMode[0]));
    glBlendEquationSeparate(GLenum(_blendEquations[0]), GLenum(_blendEquations[1]));
    glBlendFuncSeparate(GLenum(_blendFactors[0]), GLenum(_blendFactors[1]), GLenum(_blendFactors[2]),
                        GLenum(_blendFactors[3]));
    glViewport(_viewport[0], _viewport[1], _viewport[2], _viewport[3]);
    glBindSampler(0, GLuint(_sampler));
    glBindTexture(GL_TEXTURE_2D, GLuint(_texture));
    glActiveTexture(GLenum(_activeTexture));
    glUseProgram(GLuint(_program));
    glBindVertexArray(GLuint(_vertexArray));
    glBindBuffer(GL_ARRAY_BUFFER, GLuint(_arrayBuffer));
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, GLuint(_unpackBuffer));
    for (std::size_t i = 0; i < std::size(unpackParameters); ++i)
        glPixelStorei(unpackParameters[i], _unpack[i]);
    for (std::size_t i = 0; i < std::size(capabilities); ++i)
        enable(capabilities[i], _enabled[i]);
}

} // namespace osg
