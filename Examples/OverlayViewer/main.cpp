/// \file
/// overlay-viewer: a turning mesh in a window, with overlays in front of it. It shows a host that draws its
/// scene itself, has a viewport for the overlays and hands them to the OpenGL draw action.

#include "Console.h"
#include "ObjFile.h"
#include "Options.h"
#include "OverlayFile.h"
#include "ViewerWindow.h"

#include <QFileInfo>
#include <QGuiApplication>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <stdexcept>

namespace
{

using namespace ztExamples;

enum ExitCode
{
    AllDone = 0,
    NotShown = 1,
    WrongInput = 2
};

bool hasDisplay()
{
    char const* const names[] = {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"};
    return std::any_of(std::begin(names), std::end(names), qEnvironmentVariableIsSet);
}

int show(Options const& options)
{
    auto const entries =
        options.overlayFile.isEmpty() ? std::vector<OverlayEntry>() : readOverlayFile(options.overlayFile);
    Mesh mesh = options.meshFile.isEmpty() ? createTrefoilKnot() : readObjFile(options.meshFile);
    if (!ViewerWindow::hasOpenGL())
    {
        printError("overlay-viewer: there is no OpenGL 3.3 and no OpenGL ES 3.0 here");
        return NotShown;
    }
    QString const name = options.meshFile.isEmpty() ? "built-in shape" : QFileInfo(options.meshFile).fileName();
    ScreenOverlays overlays(entries, {name, 1, 1});
    ViewerWindow window(std::move(mesh), overlays, options);
    window.show();
    int const exitCode = QGuiApplication::exec();
    printLine(QString("%1 frames  ").arg(window.frameCount()) + window.counts());
    return exitCode;
}

int run(QStringList const& arguments)
{
    Options const options = parseOptions(arguments);
    if (options.information.isEmpty())
        return show(options);
    std::fputs(options.information.toLocal8Bit().constData(), stdout);
    return AllDone;
}

} // namespace

int main(int argc, char** argv)
{
    quietenQt();
    if (!hasDisplay())
        qputenv("QT_QPA_PLATFORM", "offscreen"); // for --help, and to fail in our own words
    QGuiApplication const application(argc, argv);
    try
    {
        return run(QGuiApplication::arguments());
    }
    catch (std::exception const& error)
    {
        printError(QString::fromUtf8(error.what()));
        return WrongInput;
    }
}
