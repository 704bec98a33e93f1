/// \file
/// The polygons of a frame, drawn together.
#pragma once

#include "GLState.h"
#include "OSGPolygonFit.h"

#include <vector>

namespace osg::v1
{

/// The part of a framebuffer that a viewport fills, and the size in clip coordinates of a pixel of its layout.
struct GLView
{
    bool operator==(GLView const& other) const
    {
        return left == other.left && bottom == other.bottom && width == other.width && height == other.height &&
               scaleX == other.scaleX && scaleY == other.scaleY;
    }

    GLint left, bottom;
    GLsizei width, height;
    float scaleX, scaleY;
};

/// What a polygon is drawn with.
struct GLDraw
{
    GLuint program;
    GLint pixelsToClip;
    GLuint texture, sampler;
    Blending blending;
    GLView view;
};

class GLBatch
{
  public:
    /// Binds its vertex array, which flush() takes.
    void bind();

    void add(GLDraw const& draw, TexturedPolygon const& polygon, PixelFit const& fit, LayoutArea const& area);

    /// Draws the polygons and forgets them. Sets a failure if that failed.
    /// \return how many have been drawn
    std::size_t flush(GLVersion const& version, Failure& failure);

    /// Deletes the vertex array.
    void clear();

  private:
    struct Vertex
    {
        float x, y, s, t;
    };

    struct Entry
    {
        GLDraw draw;
        GLint first;
        GLsizei count;
    };

    std::vector<Entry> _entries;
    std::vector<Vertex> _vertices;
    GLuint _vertexArray = 0;
    GLuint _vertexBuffer = 0;
};

} // namespace osg::v1
