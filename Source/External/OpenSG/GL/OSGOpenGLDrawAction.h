/// \file
/// Drawing with OpenGL.
#pragma once

#include "OSGDrawAction.h"
#include "OpenSGGL_export.h"

#include <memory>
#include <string>

namespace osg
{

/// Draws polygons with OpenGL 3.3 core or OpenGL ES 3.0, in contexts of EGL or GLX, into the framebuffer that is bound.
///
/// An action belongs to the context in which it draws first, until release(). It uploads a texture when a change of the
/// chunk's image has been marked since the last upload and at no other time, and deletes what it made for a chunk at
/// its first draw after the chunk's end.
///
/// All state that a draw touches is afterwards as it was before; where there is one for each draw buffer or viewport,
/// it touches only the first. Tests and the like (depth, stencil, scissor, culling, logic operations, conversion to
/// sRGB) are off meanwhile; the colour mask, the draw buffers and conditional rendering are the host's and hold for
/// overlays, too.
///
/// \code
/// osg::OpenGLDrawAction action;
/// // in each frame, the context being current:
/// viewport->render(&action);
/// // before the context goes:
/// action.release();
/// \endcode
class OPENSGGL_EXPORT OpenGLDrawAction : public DrawActionBase
{
  public:
    OpenGLDrawAction();
    OpenGLDrawAction(OpenGLDrawAction const&) = delete;
    OpenGLDrawAction& operator=(OpenGLDrawAction const&) = delete;

    /// Releases what is left, see release().
    ~OpenGLDrawAction() override;

    /// Draws a polygon with the texture, blend and shader chunks of its osg::ChunkMaterial.
    ///
    /// Positions are pixels of Viewport::getLayoutArea(), which fills the viewport. Where a pixel of the layout is one
    /// of the viewport, a rectangle whose lower left corner comes first has that corner and its extent truncated to
    /// whole pixels, unless that leaves nothing; one that is then as large as its image and shows all of it is drawn
    /// texel for pixel. Colour is blended by the blend chunk's factors; in the alpha channel a source factor of
    /// GL_SRC_ALPHA counts as GL_ONE, so that the alpha of what is drawn over stays that of a picture laid over
    /// another.
    ///
    /// Nothing is drawn and takeFailure() tells why if there is no context, or another than the action's, or one below
    /// the versions above; if the material or one of its chunks is missing, the image is null, has no bytes or is
    /// larger than the context allows, or the shader doesn't compile; if the viewport shows nothing; if the polygon has
    /// fewer than three corners or texture coordinates for them; and after any GL error. None is left, not even one
    /// that the host left before.
    void drawPolygon(TexturedPolygon const& polygon, Viewport& viewport) override;

    /// Deletes all textures, programs and buffers. They are only forgotten if the action's context isn't the current
    /// one: then they go with it. The next draw begins anew, in any context. Call it before the context ends, since a
    /// later context can't be told from an ended one.
    void release();

    /// Why a polygon wasn't drawn since the last call: of several reasons the first; empty if all were drawn.
    std::string takeFailure();

    /// How many polygons have been drawn and how many images uploaded since the action was made.
    UInt64 getNumDraws() const;
    UInt64 getNumUploads() const;

    /// How many textures and programs the action holds now.
    std::size_t getNumTextures() const;
    std::size_t getNumPrograms() const;

  private:
    struct Context;

    /// The reason why nothing was drawn, empty if it was.
    std::string draw(TexturedPolygon const& polygon, Viewport& viewport);
    std::string drawInContext(TexturedPolygon const& polygon, Viewport& viewport);

    std::unique_ptr<Context> _context;
    std::string _failure;
    UInt64 _numDraws = 0;
    UInt64 _numUploads = 0;
};

} // namespace osg
