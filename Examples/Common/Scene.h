/// \file
/// A scene with nothing but overlays.
#pragma once

#include "OSGViewport.h"
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

    /// Replaces the placeholders in the texts of all entries.
    void setTexts(Placeholders const& values);

  private:
    struct Label
    {
        osg::OverlayPtr overlay;
        QString text;
    };

    std::vector<Label> _labels;
};

/// Stamps the current scene's visible overlays onto a picture, the first entry on top.
/// \param pixels  in the layout of an osg::Image, see toPixels()
/// \param viewport  for which the overlays are laid out afterwards, or null
void stamp(QImage& pixels, osg::ViewportPtr const& viewport);

} // namespace ztExamples
