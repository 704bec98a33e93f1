/// \file
/// The interface between foregrounds and a renderer.
#pragma once

#include "OSGMaterial.h"

namespace osg::v1
{

class Viewport;

/// A convex polygon as a foreground hands it to a renderer, which borrows it for the call.
struct TexturedPolygon
{
    /// The corners, in pixels of the size that the viewport's overlays are laid out for, y up.
    std::vector<Pnt2f> const& positions;
    /// A texture coordinate for each corner; (0, 0) is the first pixel of the image's bytes.
    std::vector<Vec3f> const& texCoords;
    /// May be null.
    MaterialPtr const& material;
};

/// A renderer. Derive from it to draw foregrounds with any graphics library.
class ZTOPENSG_EXPORT DrawActionBase
{
  public:
    virtual ~DrawActionBase() = default;

    /// Begins and ends a frame: polygons of any number of viewports that are drawn together. Each beginning has its
    /// end, also if something is thrown in between; see DrawFrame. Frames lie within each other where a host's frame
    /// holds Viewport::render(), which has one of its own: the outermost counts. Frames of several actions may lie
    /// within each other, but don't overlap. An end doesn't throw. The defaults do nothing.
    virtual void beginFrame() {}
    virtual void endFrame() {}

    /// Draws a polygon with its material into a viewport: at the latest at the end of the frame, at once outside one.
    virtual void drawPolygon(TexturedPolygon const& polygon, Viewport& viewport) = 0;
};

/// A frame as a scope. What the action throws at its end, against the terms, is caught and lost.
///
/// \code
/// osg::DrawFrame const frame(action);
/// ztOverlays::drawOverlays(&action, viewport);
/// \endcode
class DrawFrame
{
  public:
    /// \param action  borrowed until the end of the scope
    explicit DrawFrame(DrawActionBase& action) : _action(action) { _action.beginFrame(); }
    DrawFrame(DrawFrame const&) = delete;
    DrawFrame& operator=(DrawFrame const&) = delete;
    ~DrawFrame()
    {
        try
        {
            _action.endFrame();
        }
        catch (...)
        {
            // Maybe another exception ends the scope, and it is the one to tell.
        }
    }

  private:
    DrawActionBase& _action;
};

} // namespace osg::v1
