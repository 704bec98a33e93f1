/// \file
/// overlay-stamp: stamps labels and pictures onto image files. It shows the smallest host that the overlay
/// library can have: no window, no viewport, a scene of overlays only.

#include "Host.h"
#include "Options.h"
#include "Report.h"
#include "Scene.h"
#include "Sequence.h"

#include <QDir>

#include <stdexcept>

namespace
{

using namespace ztExamples;

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
    return report.finish() ? AllDone : NotAllDone;
}

} // namespace

int main(int argc, char** argv)
{
    // Text needs an application, not a display.
    return runHost(argc, argv, "offscreen", parseOptions, stamp);
}
