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

#include <cstdio>
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

int show(Options const& options)
{
    auto const entries =
        options.overlayFile.isEmpty() ? std::vector<OverlayEntry>() : readOverlayFile(options.overlayFile);
    Mesh mesh = options.meshFile.isEmpty() ? createTrefoilKnot() : readObjFile(options.meshFile);
    if (!ViewerWindow::findFormat())
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
    if (exitCode == AllDone && !options.screenshot.isEmpty() && window.frameCount() < options.frameCount)
    {
        printError("overlay-viewer: closed before the last frame, of which there is no screenshot now");
        return NotShown;
    }
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
    quietenLibraries();
    // Without a display there is still --help, and an answer in our own words.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb;wayland;offscreen");
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
