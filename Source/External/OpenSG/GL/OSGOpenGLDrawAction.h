/// \file
/// Drawing with OpenGL.
#pragma once

#include "OSGDrawAction.h"
#include "ztOpenSGGL_export.h"

#include <memory>
#include <string>

namespace osg::v1
{

/// Draws polygons with OpenGL 3.3 core or OpenGL ES 3.0, in contexts of EGL or GLX, into the framebuffer that is bound.
///
/// An action belongs to the context in which it draws first, until release(). What is drawn within a frame (see
/// osg::DrawFrame; Viewport::render() has one of its own) comes to the framebuffer at the frame's end, in the order of
/// the calls; a polygon outside a frame is one of its own. The frame makes no difference to what is seen, but much to
/// the time: it asks for the context's state, sets it, checks for errors and uploads corners once, not once a polygon.
/// Between a frame's beginning and its end the host makes no OpenGL calls of its own and leaves the context current.
/// Polygons and viewports are read and images uploaded in the call of drawPolygon(): they may go or change afterwards.
///
/// It uploads a texture when a change of the chunk's image has been marked since the last upload, or when a resampled
/// picture changes its size, and at no other time. It deletes what it made for a chunk at the end of the first frame
/// after the chunk's end.
///
/// All state that a frame touches is afterwards as it was before; where there is one for each draw buffer or viewport,
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
class ZTOPENSGGL_EXPORT OpenGLDrawAction : public DrawActionBase
{
  public:
    OpenGLDrawAction();
    OpenGLDrawAction(OpenGLDrawAction const&) = delete;
    OpenGLDrawAction& operator=(OpenGLDrawAction const&) = delete;

    /// Releases what is left, see release().
    ~OpenGLDrawAction() override;

    void beginFrame() override;
    void endFrame() override;

    /// Draws a polygon with the texture, blend and shader chunks of its osg::ChunkMaterial.
    ///
    /// Positions are pixels of Viewport::getLayoutArea(), which fills the viewport. fitToPixels() cuts rectangles to
    /// whole pixels. One that shows a whole image is then drawn texel for pixel: if its size isn't the image's, with
    /// the image resampled to it, as a stamp shows it. (A size so little below a whole number of pixels that its
    /// corners don't tell counts as that number, which a stamp cuts.) Resampling is done once for a size and a change
    /// of the image; the last four sizes of each image are kept, so that as many viewports can show it at sizes of
    /// their own. For sizes of more than 2^26 pixels or than the context or the memory allows, and for all other
    /// polygons, the chunk's filters hold.
    ///
    /// Colour is blended by the blend chunk's factors; in the alpha channel a source factor of GL_SRC_ALPHA counts as
    /// GL_ONE, so that the alpha of what is drawn over stays that of a picture laid over another.
    ///
    /// Nothing is drawn and takeFailure() tells why if there is no context, or another than the action's, at a frame's
    /// first polygon or at its end, or one below the versions above, or a framebuffer that isn't complete; if the
    /// material or one of its chunks is missing, the image is null, has no bytes or is larger than the context allows,
    /// the shader doesn't compile, or OpenGL refuses a value of the chunks; if the viewport shows nothing; if the
    /// polygon has fewer than three corners or texture coordinates for them. The other polygons of a frame are drawn
    /// all the same; only an error that shows no earlier than at the frame's end, as a lack of memory for its corners,
    /// is one of all. No GL error is left, not even one that the host left before.
    void drawPolygon(TexturedPolygon const& polygon, Viewport& viewport) override;

    /// Deletes all textures, programs and buffers. They are only forgotten if the action's context isn't the current
    /// one: then they go with it. The next draw begins anew, in any context. Call it before the context ends, since a
    /// later context can't be told from an ended one.
    void release();

    /// Why a polygon wasn't drawn since the last call: of several reasons the first; empty if all were drawn. Complete
    /// at the end of a frame.
    std::string takeFailure();

    /// How many polygons of ended frames have been drawn, how many images uploaded since the action was made.
    UInt64 getNumDraws() const;
    UInt64 getNumUploads() const;

    /// How many textures and programs the action holds now.
    std::size_t getNumTextures() const;
    std::size_t getNumPrograms() const;

  private:
    struct Context;

    std::string openFrame();
    void closeFrame();
    std::string findContext();
    void keepFirst(std::string failure);

    std::unique_ptr<Context> _context;
    std::string _failure;
    int _frameDepth = 0;
    UInt64 _numDraws = 0;
    UInt64 _numUploads = 0;
};

} // namespace osg::v1
