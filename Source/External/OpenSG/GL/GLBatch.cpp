#include "GLBatch.h"

#include <cstddef>

namespace osg::v1
{

namespace
{

void setPixelsToClip(GLDraw const& draw)
{
    float const x = draw.view.scaleX, y = draw.view.scaleY;
    float const matrix[16] = {x, 0, 0, 0, 0, y, 0, 0, 0, 0, 1, 0, -1, -1, 0, 1};
    glUniformMatrix4fv(draw.pixelsToClip, 1, GL_FALSE, matrix);
}

/// Sets what differs from the draw before, all if that is null.
void setState(GLVersion const& version, GLDraw const& draw, GLDraw const* last)
{
    bool const isNewView = !last || !(draw.view == last->view);
    bool const isNewProgram = !last || draw.program != last->program;
    if (isNewView)
        setViewport(version, draw.view.left, draw.view.bottom, draw.view.width, draw.view.height);
    if (isNewProgram)
        glUseProgram(draw.program);
    if (isNewView || isNewProgram)
        setPixelsToClip(draw);
    if (!last || draw.blending != last->blending)
        setBlending(version, draw.blending);
    if (!last || draw.sampler != last->sampler)
        glBindSampler(0, draw.sampler);
    if (!last || draw.texture != last->texture)
        glBindTexture(GL_TEXTURE_2D, draw.texture);
}

} // namespace

void GLBatch::bind()
{
    bool const isNew = !_vertexArray;
    if (isNew)
    {
        glGenVertexArrays(1, &_vertexArray);
        glGenBuffers(1, &_vertexBuffer);
    }
    glBindVertexArray(_vertexArray);
    glBindBuffer(GL_ARRAY_BUFFER, _vertexBuffer);
    if (!isNew)
        return;
    glEnableVertexAttribArray(0);
    glEnableVertexAttribArray(1);
    glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, sizeof(Vertex), nullptr);
    glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, sizeof(Vertex), reinterpret_cast<void*>(offsetof(Vertex, s)));
}

void GLBatch::add(GLDraw const& draw, TexturedPolygon const& polygon, PixelFit const& fit, LayoutArea const& area)
{
    std::size_t const first = _vertices.size(), count = polygon.positions.size();
    for (std::size_t i = 0; i < count; ++i)
    {
        Pnt2f const corner = polygon.positions[i];
        Vec3f const texCoord = polygon.texCoords[i];
        _vertices.push_back({fit.x(corner.x) - area.left, fit.y(corner.y) - area.bottom, texCoord.x, texCoord.y});
    }
    _entries.push_back({draw, GLint(first), GLsizei(count)});
}

std::size_t GLBatch::flush(GLVersion const& version, Failure& failure)
{
    if (_entries.empty())
        return 0;
    glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(_vertices.size() * sizeof(Vertex)), _vertices.data(), GL_STREAM_DRAW);
    failure = takeGLError();
    if (failure.empty())
    {
        GLDraw const* last = nullptr;
        for (Entry const& entry : _entries)
        {
            setState(version, entry.draw, last);
            glDrawArrays(GL_TRIANGLE_FAN, entry.first, entry.count);
            last = &entry.draw;
        }
        failure = takeGLError();
    }
    std::size_t const count = failure.empty() ? _entries.size() : 0;
    _entries.clear();
    _vertices.clear();
    return count;
}

void GLBatch::clear()
{
    glDeleteBuffers(1, &_vertexBuffer);
    glDeleteVertexArrays(1, &_vertexArray);
    _vertexBuffer = _vertexArray = 0;
}

} // namespace osg::v1
