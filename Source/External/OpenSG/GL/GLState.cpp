#include "GLState.h"

namespace osg::v1
{

namespace
{

GLint get(GLenum parameter)
{
    GLint value = 0;
    glGetIntegerv(parameter, &value);
    return value;
}

constexpr GLint plainUnpack[] = {4, 0, 0, 0};

bool hasViewports(GLVersion const& version)
{
    return version.isDesktop && version.number >= 41;
}

/// Whether clip space can be upside down.
bool hasClipControl(GLVersion const& version)
{
    return version.isDesktop && version.number >= 45;
}

/// Whether the context keeps a capability for each draw buffer or viewport.
bool isIndexed(GLVersion const& version, GLenum capability)
{
    if (capability == GL_BLEND)
        return version.isDesktop || version.number >= 32;
    return capability == GL_SCISSOR_TEST && hasViewports(version);
}

void setEnabled(GLVersion const& version, GLenum capability, bool enabled)
{
    if (isIndexed(version, capability))
        enabled ? glEnablei(capability, 0) : glDisablei(capability, 0);
    else
        enabled ? glEnable(capability) : glDisable(capability);
}

} // namespace

void setBlending(GLVersion const& version, Blending const& blending)
{
    auto const& [sourceColor, destColor, sourceAlpha, destAlpha, colorEquation, alphaEquation] = blending;
    if (version.number >= (version.isDesktop ? 40 : 32))
    {
        glBlendFuncSeparatei(0, sourceColor, destColor, sourceAlpha, destAlpha);
        glBlendEquationSeparatei(0, colorEquation, alphaEquation);
    }
    else
    {
        glBlendFuncSeparate(sourceColor, destColor, sourceAlpha, destAlpha);
        glBlendEquationSeparate(colorEquation, alphaEquation);
    }
}

void setViewport(GLVersion const& version, GLint left, GLint bottom, GLsizei width, GLsizei height)
{
    if (hasViewports(version))
        glViewportIndexedf(0, GLfloat(left), GLfloat(bottom), GLfloat(width), GLfloat(height));
    else
        glViewport(left, bottom, width, height);
}

std::size_t GLHostState::numAlterations() const
{
    return _version.isDesktop ? std::size(alterations) : firstOfDesktop;
}

GLHostState::GLHostState(GLVersion const& version) : _version(version)
{
    for (std::size_t i = 0; i < numAlterations(); ++i)
        if ((_wasEnabled[i] = glIsEnabled(alterations[i])))
            setEnabled(version, alterations[i], false);
    if (version.isDesktop)
    {
        glGetIntegerv(GL_POLYGON_MODE, _polygonMode);
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    }
    for (std::size_t i = 0; i < std::size(unpackParameters); ++i)
    {
        _unpack[i] = get(unpackParameters[i]);
        glPixelStorei(unpackParameters[i], plainUnpack[i]);
    }
    _unpackBuffer = get(GL_PIXEL_UNPACK_BUFFER_BINDING);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    _activeTexture = get(GL_ACTIVE_TEXTURE);
    glActiveTexture(GL_TEXTURE0);
    _texture = get(GL_TEXTURE_BINDING_2D);
    _sampler = get(GL_SAMPLER_BINDING);
    glBindSampler(0, 0);
    _arrayBuffer = get(GL_ARRAY_BUFFER_BINDING);
    _vertexArray = get(GL_VERTEX_ARRAY_BINDING);
    _program = get(GL_CURRENT_PROGRAM);
    glGetIntegerv(GL_VIEWPORT, _viewport);
    glGetFloatv(GL_VIEWPORT, _fractionalViewport);
    if (hasClipControl(version))
    {
        _clipControl[0] = get(GL_CLIP_ORIGIN);
        _clipControl[1] = get(GL_CLIP_DEPTH_MODE);
        glClipControl(GL_LOWER_LEFT, GL_NEGATIVE_ONE_TO_ONE);
    }
    _blending = {GLenum(get(GL_BLEND_SRC_RGB)),      GLenum(get(GL_BLEND_DST_RGB)),
                 GLenum(get(GL_BLEND_SRC_ALPHA)),    GLenum(get(GL_BLEND_DST_ALPHA)),
                 GLenum(get(GL_BLEND_EQUATION_RGB)), GLenum(get(GL_BLEND_EQUATION_ALPHA))};
    _wasBlending = glIsEnabled(GL_BLEND);
    setEnabled(version, GL_BLEND, true);
}

void GLHostState::restore() const
{
    setEnabled(_version, GL_BLEND, _wasBlending);
    setBlending(_version, _blending);
    if (hasClipControl(_version))
        glClipControl(GLenum(_clipControl[0]), GLenum(_clipControl[1]));
    if (hasViewports(_version))
        glViewportIndexedfv(0, _fractionalViewport);
    else
        glViewport(_viewport[0], _viewport[1], _viewport[2], _viewport[3]);
    // A program that was deleted while current is gone by now: then none is.
    glUseProgram(0);
    glUseProgram(GLuint(_program));
    glBindVertexArray(GLuint(_vertexArray));
    glBindBuffer(GL_ARRAY_BUFFER, GLuint(_arrayBuffer));
    glBindSampler(0, GLuint(_sampler));
    glBindTexture(GL_TEXTURE_2D, GLuint(_texture));
    glActiveTexture(GLenum(_activeTexture));
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, GLuint(_unpackBuffer));
    for (std::size_t i = 0; i < std::size(unpackParameters); ++i)
        glPixelStorei(unpackParameters[i], _unpack[i]);
    if (_version.isDesktop)
        glPolygonMode(GL_FRONT_AND_BACK, GLenum(_polygonMode[0]));
    for (std::size_t i = 0; i < numAlterations(); ++i)
        if (_wasEnabled[i])
            setEnabled(_version, alterations[i], true);
}

} // namespace osg::v1
