#include "ViewerWindow.h"

#include "Console.h"
#include "Frame.h"
#include "MeshFile.h"
#include "Picture.h"
#include "View.h"

#include <QDateTime>
#include <QDropEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QOpenGLContext>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace ztExamples
{

namespace
{

constexpr double fixedFrameTime = 1.0 / 60.0;
constexpr double statusInterval = 0.5;

QSurfaceFormat neededFormat(bool isES)
{
    QSurfaceFormat format;
    format.setRenderableType(isES ? QSurfaceFormat::OpenGLES : QSurfaceFormat::OpenGL);
    format.setVersion(3, isES ? 0 : 3);
    format.setProfile(isES ? QSurfaceFormat::NoProfile : QSurfaceFormat::CoreProfile);
    return format;
}

/// In DPI-independent pixels of the window, by Qt 6.
template <class PointerEvent>
auto positionOf(PointerEvent const* event) -> decltype(event->position())
{
    return event->position();
}

/// By Qt 5, since the one above is taken where it can be.
template <class PointerEvent, class... None>
QPointF positionOf(PointerEvent const* event, None...)
{
    return event->localPos();
}

bool canHave(QSurfaceFormat const& format)
{
    QOpenGLContext context;
    context.setFormat(format);
    return context.create() && context.format().version() >= format.version();
}

} // namespace

std::optional<QSurfaceFormat> ViewerWindow::findFormat()
{
    for (QSurfaceFormat const& format : {neededFormat(false), neededFormat(true)})
        if (canHave(format))
            return format;
    return std::nullopt;
}

ViewerWindow::ViewerWindow(Mesh mesh, ScreenOverlays& overlays, ViewerOptions const& options)
    : _mesh(std::move(mesh)), _overlays(overlays), _options(options)
{
    setFormat(findFormat().value_or(neededFormat(false)));
    updateTitle();
    resize(options.size);
    _clock.start();
}

ViewerWindow::~ViewerWindow()
{
    releaseGraphics();
    if (context())
        disconnect(context(), nullptr, this, nullptr);
}

void ViewerWindow::requireGraphics()
{
    if (_renderer)
        return;
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &ViewerWindow::releaseGraphics, Qt::UniqueConnection);
    _renderer = std::make_unique<MeshRenderer>(_mesh);
}

void ViewerWindow::releaseGraphics()
{
    if (!_renderer)
        return;
    makeCurrent();
    _renderer.reset();
    _framebuffer.reset();
    _action.release();
    doneCurrent();
}

QSize ViewerWindow::pixelSize() const
{
    return size() * devicePixelRatio();
}

QPointF ViewerWindow::pointerInLayout() const
{
    return toLayout(_pointer, pixelSize(), devicePixelRatio());
}

void ViewerWindow::paintGL()
try
{
    if (isOver())
        return;
    requireGraphics();
    advance();
    updateStatus();
    // Asking for size and scale in each frame covers resizing and screens of another scale.
    _overlays.layOut(pixelSize(), devicePixelRatio());
    if (!_framebuffer || _framebuffer->size() != pixelSize())
        _framebuffer = std::make_unique<SmoothFramebuffer>(pixelSize());
    _framebuffer->bind();
    drawMesh(pixelSize(), QRect(QPoint(0, 0), pixelSize()));
    drawOverlays();
    _framebuffer->present();
    finishFrame();
}
catch (std::exception const& error)
{
    printError(reasonOf(error));
    _hasFailed = true;
    QCoreApplication::exit(1);
}

/// Quitting takes a moment, in which frames may still be asked for.
bool ViewerWindow::isOver() const
{
    return _hasFailed || (_options.frameCount > 0 && _frameCount == _options.frameCount);
}

/// To the time of the frame.
void ViewerWindow::advance()
{
    constexpr double longestStep = 0.1; // after saving, for example
    double const before = _now;
    _now = _options.frameCount > 0 ? _frameCount * fixedFrameTime : double(_clock.nsecsElapsed()) * 1e-9;
    if (!_isPaused)
        _meshTime += std::min(_now - before, longestStep);
}

void ViewerWindow::updateStatus()
{
    if (_frameCount > 0 && _now < _statusTime + statusInterval)
        return;
    bool const isMeasured = _options.frameCount == 0 && _frameCount > 0;
    double const seconds = (_now - _statusTime) / std::max(_frameCount - _statusFrame, 1);
    QString const time = isMeasured ? QString::number(1000.0 * seconds, 'f', 1) : "–";
    _overlays.setStatus(" " + time + " ms  " + counts() + " ");
    _statusTime = _now;
    _statusFrame = _frameCount;
}

QString ViewerWindow::counts() const
{
    return QString("%1 renderings  %2 uploads").arg(_overlays.renderingCount()).arg(_action.getNumUploads());
}

void ViewerWindow::drawMesh(QSize const& picture, QRect const& tile)
{
    _renderer->draw(modelAt(_meshTime, _orbit), _orbit.zoom, picture, tile);
}

void ViewerWindow::drawOverlays()
{
    _overlays.viewport()->render(&_action);
    std::string const failure = _action.takeFailure();
    if (failure == _reportedFailure)
        return;
    _reportedFailure = failure;
    if (!_reportedFailure.empty())
        printError("can't draw an overlay: " + QString::fromStdString(_reportedFailure));
}

void ViewerWindow::finishFrame()
{
    ++_frameCount;
    update();
    if (!isOver())
        return;
    if (!_options.screenshot.isEmpty())
    {
        QImage pixels = allocated(QImage(pixelSize(), QImage::Format_RGBA8888_Premultiplied));
        readPixels(pixels, pixels.rect());
        writeFrame({QImage(), pixels}, _options.screenshot);
    }
    QCoreApplication::exit(); // quit() closes the window at once in Qt 6, with this frame still to be shown
}

void ViewerWindow::saveStamped()
{
    save("stamped", [this](QSize const& size) {
        QImage picture = renderPicture(size, [&](QRect const& tile) { drawMesh(size, tile); });
        _overlays.scene().stamp(picture, _overlays.viewport());
        return picture;
    });
}

void ViewerWindow::saveTiled()
{
    save("tiled", [this](QSize const& size) {
        return renderPicture(size, [&](QRect const& tile) {
            drawMesh(size, tile);
            _overlays.scene().drawTile(_action, size, tile);
        });
    });
}

/// Once for each size. The next frame lays the overlays out for the window again.
void ViewerWindow::save(QString const& kind, std::function<QImage(QSize const& size)> const& render)
try
{
    QString const time = QDateTime::currentDateTime().toString("yyyyMMdd-HHmmss-zzz");
    makeCurrent();
    requireGraphics();
    for (int const factor : {1, 2, 4})
    {
        QString const path = QString("overlay-viewer-%1-%2-%3x.png").arg(time, kind).arg(factor);
        QImage const picture = render(pixelSize() * factor);
        if (std::string const failure = _action.takeFailure(); !failure.empty())
            throw std::runtime_error("can't save " + path.toStdString() + ": " + failure);
        writeFrame({QImage(), picture}, path);
        printLine(path);
    }
    doneCurrent();
}
catch (std::exception const& error)
{
    printError(reasonOf(error));
}

bool ViewerWindow::event(QEvent* event)
{
    switch (event->type())
    {
    case QEvent::Enter:
        _pointer = positionOf(static_cast<QEnterEvent*>(event));
        break;
    case QEvent::DragEnter:
    case QEvent::DragMove:
        static_cast<QDropEvent*>(event)->acceptProposedAction();
        return true;
    case QEvent::Drop:
        for (QUrl const& url : static_cast<QDropEvent*>(event)->mimeData()->urls())
            if (url.isLocalFile())
                open(url.toLocalFile());
        static_cast<QDropEvent*>(event)->acceptProposedAction();
        return true;
    default:
        break;
    }
    return QOpenGLWindow::event(event);
}

void ViewerWindow::open(QString const& path)
try
{
    if (kindOf(path) != FileKind::Overlays)
        return showMesh(path);
    std::vector<OverlayEntry> const entries = readOverlays(path);
    _dragged = osg::NullFC;
    _overlays.load(entries, placeholdersOf(_options));
    _options.overlayFile = path;
    updateTitle();
}
catch (std::exception const& error)
{
    printError(reasonOf(error));
}

void ViewerWindow::showMesh(QString const& path)
{
    _mesh = readMeshFile(path);
    _options.meshFile = path;
    _overlays.setTexts(placeholdersOf(_options));
    updateTitle();
    makeCurrent();
    _renderer.reset(); // is made anew
    doneCurrent();
}

void ViewerWindow::updateTitle()
{
    QString const overlays = QFileInfo(_options.overlayFile).fileName();
    setTitle(meshName(_options) + (overlays.isEmpty() ? "" : ", " + overlays));
}

void ViewerWindow::keyPressEvent(QKeyEvent* event)
{
    switch (event->isAutoRepeat() ? 0 : event->key())
    {
    case Qt::Key_H:
        return _overlays.toggleHelp();
    case Qt::Key_C:
        return _overlays.toggleFindings();
    case Qt::Key_V:
        return _overlays.toggleAt(pointerInLayout());
    case Qt::Key_R:
        return _overlays.reverse();
    case Qt::Key_S:
        return saveStamped();
    case Qt::Key_T:
        return saveTiled();
    case Qt::Key_Space:
        _isPaused = !_isPaused;
        return;
    case Qt::Key_Q:
    case Qt::Key_Escape:
        return QCoreApplication::quit();
    }
}

void ViewerWindow::mousePressEvent(QMouseEvent* event)
{
    _pointer = positionOf(event);
    _dragged = event->button() == Qt::LeftButton ? _overlays.visibleAt(pointerInLayout()) : _dragged;
    if (_dragged != osg::NullFC)
        _dragOrigin = {double(_dragged->offset.x) - _pointer.x(), double(_dragged->offset.y) + _pointer.y()};
}

void ViewerWindow::mouseMoveEvent(QMouseEvent* event)
{
    constexpr double degreesPerPixel = 0.4;
    QPointF const before = std::exchange(_pointer, positionOf(event));
    if (_dragged != osg::NullFC)
        moveTo(_dragged, {float(_dragOrigin.x() + _pointer.x()), float(_dragOrigin.y() - _pointer.y())});
    else if (event->buttons() & Qt::LeftButton)
        _orbit.degrees += (_pointer - before) * degreesPerPixel;
}

void ViewerWindow::wheelEvent(QWheelEvent* event)
{
    constexpr float least = 0.2f, most = 20.0f, perTurnOfOneDegree = 1.01f;
    float const degrees = float(event->angleDelta().y()) / 8.0f;
    _orbit.zoom = std::clamp(_orbit.zoom * std::pow(perTurnOfOneDegree, degrees), least, most);
}

void ViewerWindow::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        _dragged = osg::NullFC;
}

} // namespace ztExamples
