#include "OSGOpenGLDrawAction.h"

#include "GLBatch.h"
#include "GLPrograms.h"
#include "GLTextures.h"

#include <optional>
#include <set>
#include <utility>

namespace osg::v1
{

namespace
{

Blending blendingOf(BlendChunk const& chunk)
{
    GLenum const alphaFactor = chunk.srcFactor == GL_SRC_ALPHA ? GL_ONE : chunk.srcFactor;
    return {chunk.srcFactor, chunk.destFactor, alphaFactor, chunk.destFactor, GL_FUNC_ADD, GL_FUNC_ADD};
}

GLView viewOf(Viewport& viewport, LayoutArea const& area)
{
    return {viewport.pixelLeft,
            viewport.pixelBottom,
            viewport.getPixelWidth(),
            viewport.getPixelHeight(),
            2.0f / (area.right - area.left),
            2.0f / (area.top - area.bottom)};
}

/// About a second's work.
constexpr std::size_t maxResampledPixels = std::size_t(1) << 26;

bool isMipmapping(GLenum filter)
{
    return filter >= GL_NEAREST_MIPMAP_NEAREST && filter <= GL_LINEAR_MIPMAP_LINEAR;
}

} // namespace

/// What an action holds in one OpenGL context.
struct OpenGLDrawAction::Context
{
    Context(void* current, GLVersion const& currentVersion, UInt64& numUploads)
        : handle(current), version(currentVersion), textures(numUploads)
    {
    }

    /// Takes the context over from its host, until close().
    Failure open();

    /// Enters a polygon into the batch.
    Failure collect(TexturedPolygon const& polygon, Viewport& viewport);

    /// Draws the batch, sets a failure if that failed, and gives the context back.
    /// \return how many polygons have been drawn
    std::size_t close(Failure& failure);

    /// Deletes everything.
    void clear();

    void sweep();
    Failure check(TexturedPolygon const& polygon, DrawChunks const& chunks) const;
    Failure check(Blending const& blending);
    Failure chooseTexture(TextureChunk& chunk, PixelFit const& fit, GLDraw& draw);

    void* handle;
    GLVersion version;
    GLint maxTextureSize = 0;
    GLBatch batch;
    GLPrograms programs;
    GLTextures textures;
    GLSamplers samplers;
    /// Those that the context has taken without an error.
    std::set<Blending> blendings;
    UInt64 numEnded = StateChunk::getNumEnded();
    /// Only while the context is taken over.
    std::optional<GLHostState> hostState;
};

Failure OpenGLDrawAction::Context::open()
{
    takeGLError(); // the host's, which isn't of these polygons
    if (glCheckFramebufferStatus(GL_DRAW_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
        return describeGLError(GL_INVALID_FRAMEBUFFER_OPERATION);
    hostState.emplace(version);
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxTextureSize);
    batch.bind();
    return {};
}

std::size_t OpenGLDrawAction::Context::close(Failure& failure)
{
    std::size_t const numDrawn = batch.flush(version, failure);
    programs.endUse();
    textures.endUse();
    hostState->restore();
    hostState.reset();
    return numDrawn;
}

void OpenGLDrawAction::Context::clear()
{
    batch.clear();
    programs.clear();
    textures.clear();
    samplers.clear();
}

void OpenGLDrawAction::Context::sweep()
{
    if (numEnded == StateChunk::getNumEnded())
        return;
    numEnded = StateChunk::getNumEnded();
    programs.sweep();
    textures.sweep();
}

Failure OpenGLDrawAction::Context::collect(TexturedPolygon const& polygon, Viewport& viewport)
{
    sweep();
    DrawChunks const chunks = drawChunksOf(polygon.material);
    Failure failure = check(polygon, chunks);
    if (!failure.empty())
        return failure;
    LayoutArea const area = viewport.getLayoutArea();
    GLView const view = viewOf(viewport, area);
    if (!(area.right > area.left && area.top > area.bottom && view.width > 0 && view.height > 0))
        return "the viewport shows nothing";
    GLProgram const& program = programs.of(*chunks.shader);
    if (!program.failure.empty())
        return program.failure;

    GLDraw draw{program.name, program.pixelsToClip, 0, 0, blendingOf(*chunks.blend), view};
    PixelFit const fit = fitToPixels(polygon, area, view.width, view.height);
    failure = check(draw.blending);
    if (failure.empty())
        failure = chooseTexture(*chunks.texture, fit, draw);
    if (failure.empty())
        batch.add(draw, polygon, fit, area);
    return failure;
}

/// What is wrong with a polygon whatever is done to draw it.
Failure OpenGLDrawAction::Context::check(TexturedPolygon const& polygon, DrawChunks const& chunks) const
{
    if (!chunks.texture || !chunks.blend || !chunks.shader)
        return "the material has no texture, blend or shader chunk";
    if (chunks.texture->image == NullFC || !chunks.texture->image->isComplete())
        return "there is no image";
    Image const& image = *chunks.texture->image;
    if (image.width > maxTextureSize || image.height > maxTextureSize)
        return "the image is larger than the context's limit of " + std::to_string(maxTextureSize);
    if (polygon.positions.size() < 3 || polygon.texCoords.size() < polygon.positions.size())
        return "the polygon has no three corners with texture coordinates";
    return {};
}

Failure OpenGLDrawAction::Context::check(Blending const& blending)
{
    if (blendings.count(blending))
        return {};
    setBlending(version, blending);
    Failure const failure = takeGLError();
    if (failure.empty())
        blendings.insert(blending);
    return failure;
}

/// On whole pixels a picture is drawn texel for pixel, resampled if it has another size and can be; all else is sampled
/// as its chunk says.
Failure OpenGLDrawAction::Context::chooseTexture(TextureChunk& chunk, PixelFit const& fit, GLDraw& draw)
{
    Failure failure;
    GLSampling sampling = {chunk.minFilter, chunk.magFilter, chunk.wrapS, chunk.wrapT};
    bool const hasItsSize = fit.width == chunk.image->width && fit.height == chunk.image->height;
    if (!hasItsSize && fit.width > 0 && fit.width <= maxTextureSize && fit.height <= maxTextureSize &&
        std::size_t(fit.width) * std::size_t(fit.height) <= maxResampledPixels)
        draw.texture = textures.of(chunk, fit.width, fit.height);
    if (hasItsSize || draw.texture)
        sampling[0] = sampling[1] = GL_NEAREST;
    if (!draw.texture)
        draw.texture = textures.of(chunk, isMipmapping(sampling[0]), failure);
    if (failure.empty())
        draw.sampler = samplers.of(sampling, failure);
    return failure;
}

OpenGLDrawAction::OpenGLDrawAction() = default;

OpenGLDrawAction::~OpenGLDrawAction()
{
    release();
}

void OpenGLDrawAction::release()
{
    closeFrame();
    if (_context && _context->handle == getCurrentGLContext())
        _context->clear();
    _context.reset();
}

void OpenGLDrawAction::beginFrame()
{
    ++_frameDepth;
}

void OpenGLDrawAction::endFrame()
{
    if (_frameDepth > 0 && --_frameDepth == 0)
        closeFrame();
}

/// With the first polygon: a frame without any leaves the context alone. Asking for the context takes long.
std::string OpenGLDrawAction::openFrame()
{
    if (_context && _context->hostState)
        return {};
    Failure const failure = findContext();
    return failure.empty() ? _context->open() : failure;
}

void OpenGLDrawAction::closeFrame()
{
    if (!_context || !_context->hostState)
        return;
    Failure failure = findContext();
    if (failure.empty())
        _numDraws += _context->close(failure);
    else
        _context.reset(); // some of what it holds may be another context's
    keepFirst(std::move(failure));
}

void OpenGLDrawAction::drawPolygon(TexturedPolygon const& polygon, Viewport& viewport)
{
    DrawFrame const frame(*this);
    Failure failure = openFrame();
    if (failure.empty())
        failure = _context->collect(polygon, viewport);
    keepFirst(std::move(failure));
}

/// Has to find the action's context the current one, or makes the current one the action's.
std::string OpenGLDrawAction::findContext()
{
    void* const current = getCurrentGLContext();
    if (!current)
        return "no OpenGL context is current";
    if (_context)
        return _context->handle == current ? "" : "the current OpenGL context isn't the action's";
    GLVersion const version = GLVersion::ofCurrentContext();
    if (!version.isEnough())
        return "OpenGL 3.3 or OpenGL ES 3.0 is needed";
    _context = std::make_unique<Context>(current, version, _numUploads);
    return {};
}

void OpenGLDrawAction::keepFirst(std::string failure)
{
    if (_failure.empty())
        _failure = std::move(failure);
}

std::string OpenGLDrawAction::takeFailure()
{
    return std::exchange(_failure, {});
}

UInt64 OpenGLDrawAction::getNumDraws() const
{
    return _numDraws;
}

UInt64 OpenGLDrawAction::getNumUploads() const
{
    return _numUploads;
}

std::size_t OpenGLDrawAction::getNumTextures() const
{
    return _context ? _context->textures.size() : 0;
}

std::size_t OpenGLDrawAction::getNumPrograms() const
{
    return _context ? _context->programs.size() : 0;
}

} // namespace osg::v1
