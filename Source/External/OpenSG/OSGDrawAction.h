/// \file
/// The interface between foregrounds and a renderer.
#pragma once

#include "OSGMaterial.h"

namespace osg
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
class DrawActionBase
{
  public:
    virtual ~DrawActionBase() = default;

    /// Draws a polygon with its material into a viewport.
    virtual void drawPolygon(TexturedPolygon const& polygon, Viewport& viewport) = 0;
};

} // namespace osg
