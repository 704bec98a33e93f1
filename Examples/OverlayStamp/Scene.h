/// \file
/// A scene with nothing but overlays.
#pragma once

#include "OverlayFile.h"
#include "Placeholders.h"

namespace ztExamples
{

/// The current scene while it lives; there is one at a time.
class Scene
{
  public:
    explicit Scene(std::vector<OverlayEntry> const& entries);
    Scene(Scene const&) = delete;
    Scene& operator=(Scene const&) = delete;
    ~Scene();

    /// Stamps the visible overlays onto a frame, the first entry on top.
    /// \param pixels  in the layout of an osg::Image, see toPixels()
    void stamp(QImage& pixels, Placeholders const& values);

  private:
    struct Label
    {
        osg::OverlayPtr overlay;
        QString text;
    };

    std::vector<Label> _labels;
    std::vector<osg::OverlayPtr> _visible;
};

} // namespace ztExamples
