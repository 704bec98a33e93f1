#include "ztOpenSGExt.h"

#include <array>

namespace ztOpenSGExt
{

namespace
{
char const vertexProgramText[] = R"(
in vec2 position;
in vec2 texCoord;
out vec2 imagePoint;
uniform mat4 pixelsToClip;

void main()
{
    imagePoint = texCoord;
    gl_Position = pixelsToClip * vec4(position, 0.0, 1.0);
}
)";

char const fragmentProgramBody[] = R"(
precision highp float;
in vec2 imagePoint;
out vec4 color;
uniform sampler2D image;

void main()
{
    color = texture(image, imagePoint);
#ifndef STRAIGHT_ALPHA
    color.rgb *= color.a > 0.0 ? 1.0 / color.a : 0.0;
#endif
#ifdef OPAQUE
    color.a = 1.0;
#endif
}
)";

/// By whether alpha is straight, then by whether the picture is opaque.
using FragmentPrograms = std::array<std::array<osg::SharedString, 2>, 2>;

FragmentPrograms makeFragmentPrograms()
{
    FragmentPrograms programs;
    for (bool const straightAlpha : {false, true})
        for (bool const opaque : {false, true})
            programs[straightAlpha][opaque] = std::string(straightAlpha ? "#define STRAIGHT_ALPHA\n" : "") +
                                              (opaque ? "#define OPAQUE\n" : "") + fragmentProgramBody;
    return programs;
}

} // namespace

osg::StateChunkPtr createBackplateShader(bool straightAlpha, bool opaque)
{
    static osg::SharedString const vertexProgram = vertexProgramText;
    static FragmentPrograms const fragmentPrograms = makeFragmentPrograms();

    osg::ShaderChunkPtr const chunk = osg::create<osg::ShaderChunk>();
    chunk->vertexProgram = vertexProgram;
    chunk->fragmentProgram += fragmentPrograms[straightAlpha][opaque];
    osg::markChanged(chunk, osg::AllFieldsMask);
    return chunk;
}

} // namespace ztOpenSGExt
