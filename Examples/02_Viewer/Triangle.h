/// \file
/// What the viewer shows behind its overlays: a scene is the host's own matter.
#pragma once

#include <epoxy/gl.h>

/// Makes ready what glDrawArrays(GL_TRIANGLES, 0, 3) shows in the current context.
inline void prepareTriangle()
{
    char const* const sources[] = {
        "#version 330 core\nout vec3 tint; void main() { int i = gl_VertexID; tint = vec3(i == 0, i == 1, i == 2);"
        "gl_Position = vec4(0.8 * (i - 1), 1.6 * (i % 2) - 0.8, 0, 1); }",
        "#version 330 core\nin vec3 tint; out vec4 color; void main() { color = vec4(tint, 1); }"};
    GLuint const program = glCreateProgram();
    for (int i = 0; i < 2; ++i)
    {
        GLuint const shader = glCreateShader(i == 0 ? GL_VERTEX_SHADER : GL_FRAGMENT_SHADER);
        glShaderSource(shader, 1, &sources[i], nullptr);
        glCompileShader(shader);
        glAttachShader(program, shader);
    }
    glLinkProgram(program);
    glUseProgram(program);
    GLuint corners; // none are read, but the core profile asks for an array
    glGenVertexArrays(1, &corners);
    glBindVertexArray(corners);
}
