/// \file
/// Drawing of the mesh.
#pragma once

#include "Mesh.h"

#include <QMatrix4x4>
#include <QOpenGLBuffer>
#include <QOpenGLShaderProgram>
#include <QOpenGLVertexArrayObject>
#include <QRect>

namespace ztExamples
{

/// Belongs to the context that is current when it is made, which is current in all calls and at the end.
class MeshRenderer
{
  public:
    explicit MeshRenderer(Mesh const& mesh);

    /// Fills the framebuffer that is bound with a part of a picture: the lit mesh in front of a backdrop.
    /// \param tile  that part, in pixels of the picture, y up
    void draw(QMatrix4x4 const& model, float zoom, QSize const& picture, QRect const& tile);

  private:
    QOpenGLShaderProgram _backdrop;
    QOpenGLShaderProgram _surface;
    QOpenGLBuffer _vertices;
    QOpenGLVertexArrayObject _layout;
    int _vertexCount;
};

} // namespace ztExamples
