#include "ztOpenSGExt.h"

namespace ztOpenSGExt
{

namespace
{
char const vertexProgram[] = R"(
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

char const fragmentProgram[] = R"(
precision highp float;
in vec2 imagePoint;
out vec4 color;
uniform sampler2D image;

void main()
{
    color = texture(image, imagePoint);
#ifndef STRAIGHT_ALPHA
    color.rgb = color.a > 0.0 ? color.rgb / color.a : vec3(0.0);
#endif
#ifdef OPAQUE
    color.a = 1.0;
#endif
}
)";
} // namespace

osg::StateChunkPtr createBackplateShader(bool straightAlpha, bool opaque)
{
    osg::ShaderChunkPtr const chunk = osg::create<osg::ShaderChunk>();
    chunk->vertexProgram = vertexProgram;
    if (straightAlpha)
        chunk->fragmentProgram += "#define STRAIGHT_ALPHA\n";
    if (opaque)
        chunk->fragmentProgram += "#define OPAQUE\n";
    chunk->fragmentProgram += fragmentProgram;
    osg::markChanged(chunk, osg::AllFieldsMask);
    return chunk;
}

} // namespace ztOpenSGExt
