/// \file
/// overlay-stamp: stamps labels and pictures onto image files. It shows the smallest host that the overlay
/// library can have: no window, no viewport, a scene of overlays only.

#include "Console.h"
#include "Options.h"
#include "Report.h"
#include "Scene.h"
#include "Sequence.h"

#include <QDir>
#include <QGuiApplication>

#include <cstdio>
#include <stdexcept>

namespace
{

using namespace ztExamples;

enum ExitCode
{
    AllDone = 0,
    FramesFailed = 1,
    WrongInput = 2
};

void makeFolder(QString const& folder)
{
    if (!folder.isEmpty() && !QDir().mkpath(folder))
        throw std::runtime_error("overlay-stamp: can't make the folder \"" + folder.toStdString() + "\"");
}

ExitCode stamp(Options const& options)
{
    Scene scene(readOverlayFile(options.overlayFile));
    makeFolder(options.outputDir);
    Report report(options.frames.size(), options.isQuiet);
    stampSequence(options, scene, report);
    return report.finish() ? AllDone : FramesFailed;
}

ExitCode run(QStringList const& arguments)
{
    Options const options = parseOptions(arguments);
    if (options.information.isEmpty())
        return stamp(options);
    std::fputs(options.information.toLocal8Bit().constData(), stdout);
    return AllDone;
}

} // namespace

int main(int argc, char** argv)
{
    quietenLibraries();
    // Text needs an application, not a display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
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
