/// \file
/// A scene with nothing but overlays.
#pragma once

#include "MadePictures.h"
#include "OSGDrawAction.h"
#include "OSGViewport.h"
#include "Placeholders.h"

#include <QRect>

namespace ztExamples
{

/// The current scene while it lives; there is one at a time.
class Scene
{
  public:
    /// \param maxPixels  how many pixels a picture may have where it is stamped, and all texts and what the host draws
    ///     together; 0: as many as the library stamps
    explicit Scene(std::vector<OverlayEntry> const& entries, qint64 maxPixels = defaultMaxPixels);
    Scene(Scene const&) = delete;
    Scene& operator=(Scene const&) = delete;
    ~Scene();

    /// Replaces the placeholders in all entries: gives them their texts and pictures.
    /// \throw std::runtime_error if there is no value for a placeholder, a text gets too long or a picture can't be
    /// read;
    ///     what() names it
    void setValues(Placeholders const& values);

    /// Renders and places all overlays, hidden ones too, for a target of a size.
    /// \throw std::runtime_error if one is too large; what() names it
    void layOut(QSize const& target);

    /// Stamps the visible overlays onto a picture, the first entry on top.
    /// \param pixels  in the layout of an osg::Image, see toPixels()
    /// \param viewport  for which the overlays are laid out afterwards, or null
    /// \throw std::runtime_error if one is too large; what() names it
    void stamp(QImage& pixels, osg::ViewportPtr const& viewport);

    /// Lays the overlays out for a picture and draws a tile of it.
    /// \throw std::runtime_error if one is too large; what() names it
    void drawTile(osg::DrawActionBase& action, QSize const& picture, QRect const& tile);

  private:
    struct Item
    {
        osg::NodePtr node;
        OverlayEntry entry;
        ShadowState shadow;
    };

    void layOut(Item& item, QSize const& target, PixelLimit& limit);

    std::vector<Item> _items;
    qint64 _maxPixels;
};

} // namespace ztExamples
