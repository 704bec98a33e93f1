/// \file
/// overlay-stamp: stamps labels and pictures onto image files. It shows the smallest host that the overlay
/// library can have: no window, no viewport, a scene of overlays only.

#include "Check.h"
#include "Fonts.h"
#include "Host.h"
#include "Outputs.h"
#include "Report.h"
#include "Resources.h"
#include "Scene.h"
#include "Sequence.h"
#include "StampOptions.h"
#include "ztPlatform.h"

#include <QDir>
#include <QFileInfo>

#include <limits>
#include <stdexcept>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace
{

using namespace ztExamples;

void makeFolder(QString const& folder, bool isDryRun)
{
    bool const isFile = QFileInfo::exists(folder) && !QFileInfo(folder).isDir();
    if (!folder.isEmpty() && (isDryRun ? isFile : !QDir().mkpath(folder)))
        throw std::runtime_error("overlay-stamp: can't make the folder \"" + folder.toStdString() + "\"");
}

/// \throw std::runtime_error without what the frames need for sure
void prepareFrames(StampOptions const& options)
{
    bool const areNative = !options.rules.space.isEmpty() ||
                           std::any_of(options.frames.begin(), options.frames.end(), [](FramePaths const& frame) {
                               return isNativeSuffix(suffixOf(frame.input)) || isNativeSuffix(suffixOf(frame.output));
                           });
    if (!areNative)
        return;
    // Frames side by side leave no processor to spare.
    nativeFrames().setThreads(options.frames.size() == 1 ? options.jobs : 1);
    nativeFrames().requireSpace(options.rules.space);
}

ExitCode check(StampOptions const& options)
{
    std::vector<OverlayEntry> const entries =
        readOverlayFile(options.checkedFile, options.rules.maxPixels, options.values);
    requireFonts(entries);
    for (OverlayEntry const& entry : entries)
        printLine(describe(entry));
    return AllDone;
}

void tellOmissions(StampOptions const& options)
{
    if (options.isQuiet)
        return;
    auto const tell = options.writesPipe ? printError : printLine;
    std::size_t count = 0;
    for (FramePaths const& frame : options.frames)
        if (!frame.omission.isEmpty())
        {
            ++count;
            tell(frame.input + ": left out, " + frame.omission);
        }
    if (count > 0)
        tell(QString("%1 of %2 frames are left out").arg(count).arg(options.frames.size()));
}

ExitCode tellFrames(StampOptions const& options)
{
    std::size_t missing = 0;
    for (FramePaths const& frame : options.frames)
    {
        bool const isThere = options.layerSize || QFileInfo::exists(frame.input);
        if (!frame.omission.isEmpty())
            continue;
        if (isThere)
            printLine(frame.input + " -> " + frame.output);
        else
            printError(frame.input + ": can't read it: File not found");
        missing += !isThere;
    }
    if (missing > 0)
        printError(QString("%1 of %2 frames would fail").arg(missing).arg(countFrames(options)));
    return missing > 0 ? NotAllDone : AllDone;
}

ExitCode stamp(StampOptions const& options)
{
    if (!options.checkedFile.isEmpty())
        return check(options);
    limitThreads(options.jobs);
    ztPlatform::setDpiScale(options.dpiScale, options.dpiScale);
    std::vector<OverlayEntry> const entries =
        readOverlayFile(options.overlayFile, options.rules.maxPixels, options.values);
    requireFonts(entries);
    if (!options.isForced)
        requireSafeOutputs(options, entries);
    Scene scene(entries, options.rules.maxPixels);
    prepareFrames(options);
    makeFolder(options.outputDir, options.isDryRun);
    tellOmissions(options);
    if (options.isDryRun)
        return tellFrames(options);
    Report report(options);
    stampSequence(options, scene, report);
    return report.finish() ? AllDone : NotAllDone;
}

/// Frames come and go. To get the memory of each from the system takes a fifth of the time of JPEG files.
void keepFreedMemory()
{
#ifdef __GLIBC__
    constexpr int mostThatIsKept = 32 << 20; // of the sizes that glibc takes
    mallopt(M_MMAP_THRESHOLD, mostThatIsKept);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_ARENA_MAX, 1); // what one thread frees serves another
#endif
}

} // namespace

int main(int argc, char** argv)
{
    keepFreedMemory();
    // Text needs an application, not a display.
    return runHost(argc, argv, "offscreen", parseStampOptions, stamp);
}
