#include "OSGOpenGLDrawAction.h"

#include "GLState.h"
#include "OSGViewport.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <unordered_map>
#include <utility>

namespace osg
{

namespace
{

/// Why something can't be drawn; empty if it can.
using Failure = std::string;

struct Vertex
{
    float x, y, s, t;
};

struct Texture
{
    std::weak_ptr<void const> life;
    GLuint name = 0;
    UInt64 revision = 0;
    Int32 width = 0;
    Int32 height = 0;
    bool hasMipmaps = false;
};

/// Of all chunks with the same sources.
struct Program
{
    /// 0 if the sources don't compile.
    GLuint name = 0;
    GLint pixelsToClip = -1;
    Failure failure;
    std::size_t users = 0;
};

/// Vertex and fragment programs to what they are compiled to.
using Programs = std::map<std::pair<std::string, std::string>, Program>;

struct ProgramUse
{
    std::weak_ptr<void const> life;
    Programs::iterator program;
};

/// The chunks of a material that drawing reads.
struct Chunks
{
    TextureChunkPtr texture;
    BlendChunkPtr blend;
    ShaderChunkPtr shader;
};

template <class T>
void keepFirst(FCPtr<T>& chunk, StateChunkPtr const& candidate)
{
    if (chunk == NullFC)
        chunk = dynamicCast<T>(candidate);
}

Chunks chunksOf(MaterialPtr const& material)
{
    Chunks chunks;
    auto const chunkMaterial = dynamicCast<ChunkMaterial>(material);
    if (chunkMaterial == NullFC)
        return chunks;
    for (StateChunkPtr const& chunk : chunkMaterial->chunks)
    {
        keepFirst(chunks.texture, chunk);
        keepFirst(chunks.blend, chunk);
        keepFirst(chunks.shader, chunk);
    }
    return chunks;
}

Failure takeGLError()
{
    GLenum const error = glGetError();
    // Each of several flags is an error of its own; a lost context reports for ever.
    for (int i = 0; i < 8 && glGetError() != GL_NO_ERROR; ++i)
        continue;
    return error == GL_NO_ERROR ? "" : "OpenGL error " + std::to_string(error);
}

GLuint compile(GLenum stage, std::string const& source, Failure& failure)
{
    char const* const version = epoxy_is_desktop_gl() ? "#version 330 core\n" : "#version 300 es\n";
    char const* const sources[] = {version, source.c_str()};
    GLuint const shader = glCreateShader(stage);
    glShaderSource(shader, 2, sources, nullptr);
    glCompileShader(shader);
    GLint compiled = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (!compiled)
    {
        char log[1024] = "";
        glGetShaderInfoLog(shader, sizeof(log), nullptr, log);
        failure = std::string("the shader doesn't compile: ") + log;
    }
    return shader;
}

GLuint link(GLuint vertexShader, GLuint fragmentShader, Failure& failure)
{
    GLuint const program = glCreateProgram();
    glAttachShader(program, vertexShader);
    glAttachShader(program, fragmentShader);
    glBindAttribLocation(program, 0, "position");
    glBindAttribLocation(program, 1, "texCoord");
    glLinkProgram(program);
    GLint linked = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (!linked)
        failure = "the shader doesn't link";
    return program;
}

Program build(std::string const& vertexProgram, std::string const& fragmentProgram)
{
    Program program;
    GLuint const vertexShader = compile(GL_VERTEX_SHADER, vertexProgram, program.failure);
    GLuint const fragmentShader = compile(GL_FRAGMENT_SHADER, fragmentProgram, program.failure);
    if (program.failure.empty())
    {
        program.name = link(vertexShader, fragmentShader, program.failure);
        program.pixelsToClip = glGetUniformLocation(program.name, "pixelsToClip");
    }
    glDeleteShader(vertexShader);
    glDeleteShader(fragmentShader);
    return program;
}

bool isMipmapping(UInt32 filter)
{
    return filter >= GL_NEAREST_MIPMAP_NEAREST && filter <= GL_LINEAR_MIPMAP_LINEAR;
}

void setFilters(TextureChunk const& chunk, bool isTexelForPixel)
{
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, isTexelForPixel ? GL_NEAREST : GLint(chunk.minFilter));
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, isTexelForPixel ? GL_NEAREST : GLint(chunk.magFilter));
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GLint(chunk.wrapS));
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GLint(chunk.wrapT));
}

Blending blendingOf(BlendChunk const& chunk)
{
    GLenum const alphaFactor = chunk.srcFactor == GL_SRC_ALPHA ? GL_ONE : chunk.srcFactor;
    return {chunk.srcFactor, chunk.destFactor, alphaFactor, chunk.destFactor, GL_FUNC_ADD, GL_FUNC_ADD};
}

/// Whether a pixel of the layout is one of the viewport. A tile's edges are fractions, which round.
bool isUnscaled(LayoutArea const& area, Viewport& viewport)
{
    constexpr float rounding = 0.01f;
    return std::abs(area.right - area.left - float(viewport.getPixelWidth())) < rounding &&
           std::abs(area.top - area.bottom - float(viewport.getPixelHeight())) < rounding;
}

/// Whether a polygon is an upright rectangle, its lower left corner first and the opposite one third.
bool isRectangle(TexturedPolygon const& polygon)
{
    std::vector<Pnt2f> const& corners = polygon.positions;
    return corners.size() == 4 && corners[0].x == corners[3].x && corners[0].y == corners[1].y &&
           corners[2].x == corners[1].x && corners[2].y == corners[3].y;
}

bool showsWholeImage(TexturedPolygon const& polygon)
{
    Vec3f const low = polygon.texCoords[0], high = polygon.texCoords[2];
    return low.x == 0.0f && low.y == 0.0f && high.x == 1.0f && high.y == 1.0f;
}

/// From coordinates of a rectangle, along one axis, to those at which it is drawn.
struct Fit
{
    float from = 0.0f;
    float to = 0.0f;
    float scale = 1.0f;
    float extent = 0.0f;

    float operator()(float coordinate) const { return to + (coordinate - from) * scale; }
};

/// Cuts the first coordinate and the extent of a rectangle to whole pixels; leaves one that has no whole pixel. The
/// extent is a difference of rounded coordinates.
Fit fitToPixels(float low, float high)
{
    float const rounding = 2.0f * std::numeric_limits<float>::epsilon() * std::max(std::abs(low), std::abs(high));
    float const extent = std::floor(high - low + rounding);
    if (!(extent >= 1.0f))
        return {};
    return {low, std::trunc(low), extent / (high - low), extent};
}

} // namespace

/// What an action holds in one OpenGL context.
struct OpenGLDrawAction::Context
{
    Context(void* current, GLVersion const& currentVersion);

    /// Deletes everything; the context is current.
    void deleteAll();

    /// Deletes what belongs to chunks that have ended.
    void sweep();

    /// The texture of a chunk, bound and up to date.
    Failure bindTexture(TextureChunk& chunk, bool needsMipmaps, UInt64& numUploads);

    Program const& programOf(ShaderChunk const& chunk);
    void drop(ProgramUse const& use);

    void* handle;
    GLVersion version;
    GLint maxTextureSize = 0;
    GLuint vertexArray = 0;
    GLuint vertexBuffer = 0;
    std::vector<Vertex> vertices;
    std::unordered_map<StateChunk const*, Texture> textures;
    std::unordered_map<StateChunk const*, ProgramUse> programUses;
    Programs programs;
    UInt64 numEnded = StateChunk::getNumEnded();
};

OpenGLDrawAction::Context::Context(void* current, GLVersion const& currentVersion)
    : handle(current), version(currentVersion)
{
    GLStateGuard const guard(version);
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxTextureSize);
    glGenVertexArrays(1, &vertexArray);
    glGenBuffers(1, &vertexBuffer);
    glBindVertexArray(vertexArray);
    glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer);
    glEnableVertexAttribArray(0);
    glEnableVertexAttribArray(1);
    glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, sizeof(Vertex), nullptr);
    glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, sizeof(Vertex), reinterpret_cast<void*>(offsetof(Vertex, s)));
}

void OpenGLDrawAction::Context::deleteAll()
{
    for (auto const& [chunk, texture] : textures)
        glDeleteTextures(1, &texture.name);
    for (auto const& [sources, program] : programs)
        glDeleteProgram(program.name);
    glDeleteBuffers(1, &vertexBuffer);
    glDeleteVertexArrays(1, &vertexArray);
}

void OpenGLDrawAction::Context::sweep()
{
    if (numEnded == StateChunk::getNumEnded())
        return;
    numEnded = StateChunk::getNumEnded();
    for (auto it = textures.begin(); it != textures.end();)
    {
        bool const ended = it->second.life.expired();
        if (ended)
            glDeleteTextures(1, &it->second.name);
        it = ended ? textures.erase(it) : std::next(it);
    }
    for (auto it = programUses.begin(); it != programUses.end();)
    {
        bool const ended = it->second.life.expired();
        if (ended)
            drop(it->second);
        it = ended ? programUses.erase(it) : std::next(it);
    }
}

void OpenGLDrawAction::Context::drop(ProgramUse const& use)
{
    if (--use.program->second.users > 0)
        return;
    glDeleteProgram(use.program->second.name);
    programs.erase(use.program);
}

Failure OpenGLDrawAction::Context::bindTexture(TextureChunk& chunk, bool needsMipmaps, UInt64& numUploads)
{
    Image& image = *chunk.image;
    auto const [entry, isNew] = textures.try_emplace(&chunk);
    Texture& texture = entry->second;
    if (isNew)
    {
        texture.life = chunk.getLife();
        glGenTextures(1, &texture.name);
    }
    glBindTexture(GL_TEXTURE_2D, texture.name);

    if (isNew || texture.revision != chunk.getImageRevision())
    {
        if (image.width == texture.width && image.height == texture.height)
            glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, image.width, image.height, GL_RGBA, GL_UNSIGNED_BYTE,
                            image.pixelBuffer());
        else
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, image.width, image.height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                         image.pixelBuffer());
        Failure const failure = takeGLError();
        if (!failure.empty())
        {
            glDeleteTextures(1, &texture.name);
            textures.erase(entry);
            return failure;
        }
        texture = {texture.life, texture.name, chunk.getImageRevision(), image.width, image.height, false};
        ++numUploads;
    }
    if (needsMipmaps && !texture.hasMipmaps)
    {
        glGenerateMipmap(GL_TEXTURE_2D);
        texture.hasMipmaps = true;
    }
    return {};
}

Program const& OpenGLDrawAction::Context::programOf(ShaderChunk const& chunk)
{
    auto const use = programUses.find(&chunk);
    bool const isKnown = use != programUses.end();
    if (isKnown && use->second.program->first.first == chunk.vertexProgram &&
        use->second.program->first.second == chunk.fragmentProgram)
        return use->second.program->second;

    auto const [program, isNew] = programs.try_emplace({chunk.vertexProgram, chunk.fragmentProgram});
    if (isNew)
        program->second = build(chunk.vertexProgram, chunk.fragmentProgram);
    ++program->second.users;
    if (isKnown)
        drop(use->second);
    programUses[&chunk] = {chunk.getLife(), program};
    return program->second;
}

OpenGLDrawAction::OpenGLDrawAction() = default;

OpenGLDrawAction::~OpenGLDrawAction()
{
    release();
}

void OpenGLDrawAction::release()
{
    if (_context && _context->handle == getCurrentGLContext())
        _context->deleteAll();
    _context.reset();
}

void OpenGLDrawAction::drawPolygon(TexturedPolygon const& polygon, Viewport& viewport)
{
    std::string const failure = draw(polygon, viewport);
    if (failure.empty())
        ++_numDraws;
    else if (_failure.empty())
        _failure = failure;
}

std::string OpenGLDrawAction::draw(TexturedPolygon const& polygon, Viewport& viewport)
{
    void* const current = getCurrentGLContext();
    if (!current)
        return "no OpenGL context is current";
    if (_context && _context->handle != current)
        return "the current OpenGL context isn't the action's";
    takeGLError(); // the host's, which isn't this draw's failure
    if (!_context)
    {
        GLVersion const version = GLVersion::ofCurrentContext();
        if (!version.isEnough())
            return "OpenGL 3.3 or OpenGL ES 3.0 is needed";
        _context = std::make_unique<Context>(current, version);
    }
    _context->sweep();
    Failure failure;
    {
        GLStateGuard const guard(_context->version);
        failure = drawInContext(polygon, viewport);
    }
    Failure const error = takeGLError();
    return failure.empty() ? error : failure;
}

std::string OpenGLDrawAction::drawInContext(TexturedPolygon const& polygon, Viewport& viewport)
{
    Chunks const chunks = chunksOf(polygon.material);
    if (chunks.texture == NullFC || chunks.blend == NullFC || chunks.shader == NullFC)
        return "the material has no texture, blend or shader chunk";
    if (chunks.texture->image == NullFC || !chunks.texture->image->isComplete())
        return "there is no image";
    Image const& image = *chunks.texture->image;
    if (image.width > _context->maxTextureSize || image.height > _context->maxTextureSize)
        return "the image is larger than the context's limit of " + std::to_string(_context->maxTextureSize);
    LayoutArea const area = viewport.getLayoutArea();
    if (!(area.right > area.left && area.top > area.bottom))
        return "the viewport shows nothing";
    if (polygon.positions.size() < 3 || polygon.texCoords.size() < polygon.positions.size())
        return "the polygon has no three corners with texture coordinates";
    Program const& program = _context->programOf(*chunks.shader);
    if (!program.failure.empty())
        return program.failure;

    Fit fitX, fitY;
    if (isUnscaled(area, viewport) && isRectangle(polygon))
    {
        fitX = fitToPixels(polygon.positions[0].x, polygon.positions[2].x);
        fitY = fitToPixels(polygon.positions[0].y, polygon.positions[2].y);
    }
    bool const isTexelForPixel =
        fitX.extent == float(image.width) && fitY.extent == float(image.height) && showsWholeImage(polygon);
    bool const needsMipmaps = !isTexelForPixel && isMipmapping(chunks.texture->minFilter);
    Failure const failure = _context->bindTexture(*chunks.texture, needsMipmaps, _numUploads);
    if (!failure.empty())
        return failure;
    setFilters(*chunks.texture, isTexelForPixel);
    setBlending(_context->version, blendingOf(*chunks.blend));
    setViewport(_context->version, viewport.pixelLeft, viewport.pixelBottom, viewport.getPixelWidth(),
                viewport.getPixelHeight());

    float const scaleX = 2.0f / (area.right - area.left), scaleY = 2.0f / (area.top - area.bottom);
    float const pixelsToClip[16] = {scaleX, 0, 0, 0, 0, scaleY, 0, 0, 0, 0, 1, 0, -1, -1, 0, 1};
    glUseProgram(program.name);
    glUniformMatrix4fv(program.pixelsToClip, 1, GL_FALSE, pixelsToClip);

    auto& vertices = _context->vertices;
    vertices.clear();
    for (std::size_t i = 0; i < polygon.positions.size(); ++i)
    {
        Pnt2f const corner = polygon.positions[i];
        Vec3f const texCoord = polygon.texCoords[i];
        vertices.push_back({fitX(corner.x) - area.left, fitY(corner.y) - area.bottom, texCoord.x, texCoord.y});
    }
    glBindVertexArray(_context->vertexArray);
    glBindBuffer(GL_ARRAY_BUFFER, _context->vertexBuffer);
    glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(vertices.size() * sizeof(Vertex)), vertices.data(), GL_STREAM_DRAW);
    std::string const stateFailure = takeGLError();
    if (stateFailure.empty())
        glDrawArrays(GL_TRIANGLE_FAN, 0, GLsizei(vertices.size()));
    return stateFailure;
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

} // namespace osg
