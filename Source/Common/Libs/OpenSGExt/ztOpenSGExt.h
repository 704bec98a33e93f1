/// \file
/// Makers of ready chunks.
#pragma once

#include "OSGChunk.h"
#include "ztOpenSGExt_export.h"

namespace ztOpenSGExt
{

/// The shader that draws a textured polygon with blend factors for straight alpha. GLSL for the 3.30 core and the 3.00
/// ES profiles.
///
/// The vertex stage reads `position` (vec2) and `texCoord` (vec2) and transforms by the uniform `pixelsToClip` (mat4);
/// the fragment stage samples `image` (sampler2D) and writes `color`.
///
/// \param straightAlpha  the image holds colour not multiplied by alpha; otherwise the shader divides colour by alpha,
///     and alpha 0 gives 0
/// \param opaque  alpha is drawn as 1
/// \return a new chunk, owned by whoever counts it first
ZTOPENSGEXT_EXPORT osg::StateChunkPtr createBackplateShader(bool straightAlpha, bool opaque);

} // namespace ztOpenSGExt
