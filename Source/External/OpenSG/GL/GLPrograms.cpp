#include "GLPrograms.h"

namespace osg::v1
{

namespace
{

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
    if (linked)
        return program;
    failure = "the shader doesn't link";
    glDeleteProgram(program);
    return 0;
}

/// Drawing no corners tells already whether a program can be drawn with.
Failure tryOut(GLProgram const& program)
{
    constexpr float matrix[16] = {};
    glUseProgram(program.name);
    glUniformMatrix4fv(program.pixelsToClip, 1, GL_FALSE, matrix);
    glDrawArrays(GL_TRIANGLE_FAN, 0, 0);
    return takeGLError();
}

GLProgram build(std::string const& vertexProgram, std::string const& fragmentProgram)
{
    GLProgram program;
    GLuint const vertexShader = compile(GL_VERTEX_SHADER, vertexProgram, program.failure);
    GLuint const fragmentShader = compile(GL_FRAGMENT_SHADER, fragmentProgram, program.failure);
    if (program.failure.empty())
        program.name = link(vertexShader, fragmentShader, program.failure);
    if (program.name)
        program.pixelsToClip = glGetUniformLocation(program.name, "pixelsToClip");
    glDeleteShader(vertexShader);
    glDeleteShader(fragmentShader);
    return program;
}

} // namespace

GLProgram const& GLPrograms::of(ShaderChunk const& chunk)
{
    GLProgram& program = find(chunk);
    if (program.name && !program.isTried)
    {
        program.failure = tryOut(program);
        program.isTried = program.failure.empty();
    }
    return program;
}

GLProgram& GLPrograms::find(ShaderChunk const& chunk)
{
    auto const use = _uses.find(&chunk);
    bool const isKnown = use != _uses.end();
    if (isKnown && use->second.vertexProgram == chunk.vertexProgram &&
        use->second.fragmentProgram == chunk.fragmentProgram)
        return use->second.program->second;

    auto const [program, isNew] = _programs.try_emplace({chunk.vertexProgram, chunk.fragmentProgram});
    if (isNew)
        program->second = build(chunk.vertexProgram, chunk.fragmentProgram);
    ++program->second.users;
    if (isKnown)
        drop(use->second);
    _uses[&chunk] = {chunk.getLife(), program, chunk.vertexProgram, chunk.fragmentProgram};
    return program->second;
}

void GLPrograms::drop(Use const& use)
{
    if (--use.program->second.users > 0)
        return;
    _retired.push_back(use.program->second.name);
    _programs.erase(use.program);
}

void GLPrograms::sweep()
{
    for (auto it = _uses.begin(); it != _uses.end();)
    {
        bool const ended = it->second.life.expired();
        if (ended)
            drop(it->second);
        it = ended ? _uses.erase(it) : std::next(it);
    }
}

void GLPrograms::endUse()
{
    for (GLuint const program : _retired)
        glDeleteProgram(program);
    _retired.clear();
}

void GLPrograms::clear()
{
    endUse();
    for (auto const& [sources, program] : _programs)
        glDeleteProgram(program.name);
    _uses.clear();
    _programs.clear();
}

} // namespace osg::v1
