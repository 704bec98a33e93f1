/// \file
/// The window.
#pragma once

#include "MeshRenderer.h"
#include "OSGOpenGLDrawAction.h"
#include "Offscreen.h"
#include "ScreenOverlays.h"
#include "View.h"
#include "ViewerOptions.h"

#include <QElapsedTimer>
#include <QOpenGLWindow>

#include <functional>
#include <memory>
#include <optional>

namespace ztExamples
{

/// Shows a mesh and overlays, also those of files that are dropped onto it, until the options' last frame, or the user,
/// ends the application.
class ViewerWindow : public QOpenGLWindow
{
  public:
    /// The format of a context with OpenGL as the window needs it; none if there is none.
    static std::optional<QSurfaceFormat> findFormat();

    /// \param overlays  have to outlive the window
    ViewerWindow(Mesh mesh, ScreenOverlays& overlays, ViewerOptions const& options);
    ~ViewerWindow() override;

    int frameCount() const { return _frameCount; }

    /// "3 renderings  5 uploads", since the start.
    QString counts() const;

  protected:
    bool event(QEvent* event) override;
    void paintGL() override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    void open(QString const& path);
    void showMesh(QString const& path);
    void updateTitle();
    void requireGraphics();
    void releaseGraphics();
    bool isOver() const;
    void advance();
    void updateStatus();
    void drawMesh(QSize const& picture, QRect const& tile);
    void drawOverlays();
    void finishFrame();
    void saveStamped();
    void saveTiled();
    void save(QString const& kind, std::function<QImage(QSize const& size)> const& render);

    QSize pixelSize() const;
    QPointF pointerInLayout() const;

    Mesh _mesh;
    ScreenOverlays& _overlays;
    ViewerOptions _options;
    /// Made in each context anew.
    std::unique_ptr<MeshRenderer> _renderer;
    std::unique_ptr<SmoothFramebuffer> _framebuffer;
    osg::OpenGLDrawAction _action;
    std::string _reportedFailure;

    QElapsedTimer _clock;
    /// In seconds since the start: this frame, the last writing of the label, and the mesh, which pauses.
    double _now = 0.0;
    double _statusTime = 0.0;
    double _meshTime = 0.0;
    bool _isPaused = false;
    bool _hasFailed = false;
    int _frameCount = 0;
    int _statusFrame = 0;

    /// In DPI-independent pixels, y down.
    QPointF _pointer;
    /// What is dragged, or null, and where its offset would be with the pointer at the upper left corner.
    osg::OverlayPtr _dragged;
    QPointF _dragOrigin;
    Orbit _orbit;
};

} // namespace ztExamples
