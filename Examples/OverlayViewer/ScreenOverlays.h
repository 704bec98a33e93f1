/// \file
/// The overlays in front of the mesh, those of the file and the viewer's own.
#pragma once

#include "OSGChangeList.h"
#include "OSGRefPtr.h"
#include "Scene.h"

#include <QPointF>

#include <optional>

namespace ztExamples
{

/// The current scene and the viewport that shows it. The overlays stand in the viewport's `foregrounds`, so that a
/// frame draws a list and walks no tree; what changes the list takes them out before and puts them in after.
class ScreenOverlays
{
  public:
    ScreenOverlays(std::vector<OverlayEntry> const& entries, Placeholders const& values);
    ScreenOverlays(ScreenOverlays const&) = delete;
    ScreenOverlays& operator=(ScreenOverlays const&) = delete;
    ~ScreenOverlays();

    /// Shows other overlays in the place of those of the file, which stay if the others can't be laid out as they are.
    /// \throw std::runtime_error if so; what() names the overlay
    void load(std::vector<OverlayEntry> const& entries, Placeholders const& values);

    /// Replaces the placeholders in the file's texts anew.
    void setTexts(Placeholders const& values);

    /// To be asked for anew after load().
    Scene& scene() { return *_scene; }
    osg::ViewportPtr const& viewport() const { return _viewport; }

    /// Renders and places what has changed, for a window of a size.
    /// \param scale  pixels for each DPI-independent pixel
    /// \throw std::runtime_error if an overlay is too large; what() names it
    void layOut(QSize const& pixels, double scale);

    /// How many texts have been rendered since the start, as far as layOut() has come.
    std::size_t renderingCount() const { return _renderingCount; }

    void setStatus(QString const& text);

    /// Shows the keys, or what ztOverlayCheck::inspect() finds, in the middle; hides what is shown there already.
    void toggleHelp();
    void toggleFindings();

    /// Hides or shows the topmost overlay at a point of the layout, hidden ones counted in.
    void toggleAt(QPointF const& point);

    void reverse();

    /// The topmost overlay at a point of the layout that is shown, or null.
    osg::OverlayPtr visibleAt(QPointF const& point) const;

  private:
    /// Makes the scene of the entries.
    void show(Placeholders const& values);
    void togglePanel(std::string const& text);
    void setPanel(std::string const& text);
    void toggle(osg::NodePtr const& node);
    /// Has all overlays rendered anew.
    void makeDirty();
    void countRenderings();

    std::vector<OverlayEntry> _entries;
    /// The current scene, of which there is one at a time.
    std::optional<Scene> _scene;
    osg::NodePtr _poolRoot;
    osg::NodePtr _panel;
    osg::OverlayPtr _status;
    osg::RefPtr<osg::Viewport> _viewport;
    osg::ChangeList _changes;
    std::size_t _renderingCount = 0;
};

/// Gives an overlay another `offset`, which only places it.
void moveTo(osg::OverlayPtr const& overlay, osg::Vec2f const& offset);

} // namespace ztExamples
