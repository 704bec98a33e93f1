/// \file
/// overlay-viewer: a turning mesh in a window, with overlays in front of it. It shows a host that draws its
/// scene itself, has a viewport for the overlays and hands them to the OpenGL draw action.

#include "Host.h"
#include "MeshFile.h"
#include "Resources.h"
#include "ViewerOptions.h"
#include "ViewerWindow.h"
#include "ztOverlayCheck.h"

#include <QThread>

#include <algorithm>

namespace
{

using namespace ztExamples;

ExitCode check(ScreenOverlays& overlays, QSize const& size)
{
    overlays.layOut(size, 1.0);
    auto const findings = ztOverlayCheck::inspect(overlays.viewport());
    for (ztOverlayCheck::Finding const& finding : findings)
        printLine(QString::fromStdString(toLine(finding)));
    return findings.empty() ? AllDone : NotAllDone;
}

ExitCode show(ViewerOptions const& options)
{
    limitThreads(std::max(QThread::idealThreadCount(), 1));
    auto const entries =
        options.overlayFile.isEmpty() ? std::vector<OverlayEntry>() : readOverlays(options.overlayFile);
    Mesh mesh = options.meshFile.isEmpty() ? createTrefoilKnot() : readMeshFile(options.meshFile);
    ScreenOverlays overlays(entries, placeholdersOf(options));
    if (options.isCheck)
        return check(overlays, options.size);
    if (!ViewerWindow::findFormat())
    {
        printError("overlay-viewer: there is no OpenGL 3.3 and no OpenGL ES 3.0 here");
        return NotAllDone;
    }
    ViewerWindow window(std::move(mesh), overlays, options);
    window.show();
    auto const exitCode = ExitCode(QGuiApplication::exec());
    printLine(QString("%1 frames  ").arg(window.frameCount()) + window.counts());
    if (exitCode == AllDone && !options.screenshot.isEmpty() && window.frameCount() < options.frameCount)
    {
        printError("overlay-viewer: closed before the last frame, of which there is no screenshot now");
        return NotAllDone;
    }
    return exitCode;
}

} // namespace

int main(int argc, char** argv)
{
    // Without a display there is still --help, and an answer in our own words.
    return runHost(argc, argv, "xcb;wayland;offscreen", parseViewerOptions, show);
}
