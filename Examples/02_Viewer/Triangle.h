/// \file
/// What the viewer shows behind its overlays: a scene is the host's own matter.
#pragma once

#include <epoxy/gl.h>

/// Makes ready what glDrawArrays(GL_TRIANGLES, 0, 3) shows in the current context.
inline void prepareTriangle()
{
    GLuint const program = glCreateProgram();
    auto const attach = [program](GLenum kind, char const* source) {
        GLuint const shader = glCreateShader(kind);
        char const* const parts[] = {"#version 330 core\n", source};
        glShaderSource(shader, 2, parts, nullptr);
        glCompileShader(shader);
        glAttachShader(program, shader);
    };
    attach(GL_VERTEX_SHADER, "void main() { gl_Position = vec4(gl_VertexID - 1, gl_VertexID % 2 * 2 - 1, 0, 1.25); }");
    attach(GL_FRAGMENT_SHADER, "out vec4 color; void main() { color = vec4(gl_FragCoord.xy / 640, 0.5, 1); }");
    glLinkProgram(program);
    glUseProgram(program);
    GLuint corners; // none are read, but the core profile asks for an array
    glGenVertexArrays(1, &corners);
    glBindVertexArray(corners);
}
