/// \file
/// The interface between foregrounds and a renderer.
#pragma once

namespace osg
{

class PolygonForeground2;
class Viewport;

/// A renderer. Derive from it to draw foregrounds with any graphics library.
class DrawActionBase
{
  public:
    virtual ~DrawActionBase() = default;

    /// Draws a textured polygon with its material into a viewport. Both outlive the call only as their owners
    /// keep them; neither is changed.
    virtual void drawPolygon(PolygonForeground2& polygon, Viewport& viewport) = 0;
};

} // namespace osg
