#include "MeshRenderer.h"

#include "View.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <cstddef>
#include <stdexcept>

namespace ztExamples
{

namespace
{

constexpr char backdropVertexShader[] = R"(
    out vec2 place;

    void main() // one triangle around everything
    {
        place = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
        gl_Position = vec4(place, 0.0, 1.0);
    })";

constexpr char backdropFragmentShader[] = R"(
    in vec2 place;
    out vec4 color;

    void main()
    {
        color = vec4(mix(vec3(0.20, 0.27, 0.33), vec3(0.035, 0.05, 0.075), min(length(place) / 1.3, 1.0)), 1.0);
    })";

constexpr char surfaceVertexShader[] = R"(
    uniform mat4 model;
    uniform mat4 projection;
    in vec3 position;
    in vec3 normal;
    in vec4 color;
    out vec4 meshColor;
    out vec3 worldNormal;
    out vec3 worldPosition;

    void main()
    {
        vec4 world = model * vec4(position, 1.0);
        meshColor = color;
        worldPosition = world.xyz;
        worldNormal = mat3(model) * normal;
        gl_Position = projection * world;
    })";

// A key light, a cool one from behind and a highlight, on whichever side of the surface is seen.
constexpr char surfaceFragmentShader[] = R"(
    uniform vec3 eye;
    in vec4 meshColor; // alpha 0: none
    in vec3 worldNormal;
    in vec3 worldPosition;
    out vec4 color;

    void main()
    {
        const vec3 key = vec3(0.48, 0.72, 0.50);
        const vec3 rim = vec3(-0.70, 0.10, -0.70);
        vec3 toEye = normalize(eye - worldPosition);
        vec3 n = normalize(worldNormal + vec3(0.0, 0.0, 1e-6));
        n = gl_FrontFacing ? n : -n;
        vec3 base = mix(vec3(0.42, 0.07, 0.04), vec3(0.80, 0.33, 0.06), 0.5 + 0.5 * worldPosition.y);
        base = mix(base, pow(meshColor.rgb, vec3(2.2)), meshColor.a);
        vec3 sky = mix(vec3(0.10, 0.07, 0.07), vec3(0.24, 0.28, 0.33), 0.5 + 0.5 * n.y);
        vec3 light = base * (sky + 0.95 * max(dot(n, key), 0.0));
        light += vec3(0.25, 0.45, 0.65) * max(dot(n, rim), 0.0) * pow(1.0 - clamp(dot(n, toEye), 0.0, 1.0), 1.5);
        light += vec3(0.55) * pow(max(dot(n, normalize(key + toEye)), 0.0), 60.0);
        color = vec4(pow(light, vec3(1.0 / 2.2)), 1.0);
    })";

void build(QOpenGLShaderProgram& program, char const* vertexShader, char const* fragmentShader)
{
    QByteArray const header = QOpenGLContext::currentContext()->isOpenGLES()
                                  ? "#version 300 es\nprecision highp float;\n"
                                  : "#version 330 core\n";
    program.addShaderFromSourceCode(QOpenGLShader::Vertex, header + vertexShader);
    program.addShaderFromSourceCode(QOpenGLShader::Fragment, header + fragmentShader);
    program.bindAttributeLocation("position", 0);
    program.bindAttributeLocation("normal", 1);
    program.bindAttributeLocation("color", 2);
    if (!program.link())
        throw std::runtime_error("can't build a shader: " + program.log().toStdString());
}

} // namespace

MeshRenderer::MeshRenderer(Mesh const& mesh) : _vertexCount(int(mesh.size()))
{
    build(_backdrop, backdropVertexShader, backdropFragmentShader);
    build(_surface, surfaceVertexShader, surfaceFragmentShader);
    _layout.create();
    QOpenGLVertexArrayObject::Binder const binder(&_layout);
    _vertices.create();
    _vertices.bind();
    _vertices.allocate(mesh.data(), int(mesh.size() * sizeof(Vertex)));
    _surface.bind();
    _surface.enableAttributeArray(0);
    _surface.enableAttributeArray(1);
    _surface.enableAttributeArray(2);
    _surface.setAttributeBuffer(0, GL_FLOAT, offsetof(Vertex, position), 3, sizeof(Vertex));
    _surface.setAttributeBuffer(1, GL_FLOAT, offsetof(Vertex, normal), 3, sizeof(Vertex));
    _surface.setAttributeBuffer(2, GL_UNSIGNED_BYTE, offsetof(Vertex, color), 4, sizeof(Vertex)); // normalized
    _surface.release();
    _vertices.release();
}

void MeshRenderer::draw(QMatrix4x4 const& model, float zoom, QSize const& picture, QRect const& tile)
{
    QOpenGLFunctions& gl = *QOpenGLContext::currentContext()->functions();
    QOpenGLVertexArrayObject::Binder const binder(&_layout);
    // The picture around the tile, so that every pixel is computed as if the picture were drawn at once.
    gl.glViewport(-tile.x(), -tile.y(), picture.width(), picture.height());
    gl.glClear(GL_DEPTH_BUFFER_BIT);
    _backdrop.bind();
    gl.glDrawArrays(GL_TRIANGLES, 0, 3);

    gl.glEnable(GL_DEPTH_TEST);
    _surface.bind();
    _surface.setUniformValue("model", model);
    _surface.setUniformValue("projection", projectionFor(picture, zoom));
    _surface.setUniformValue("eye", QVector3D(0.0f, 0.0f, eyeDistance(picture)));
    gl.glDrawArrays(GL_TRIANGLES, 0, _vertexCount);
    _surface.release();
    gl.glDisable(GL_DEPTH_TEST);
}

} // namespace ztExamples
