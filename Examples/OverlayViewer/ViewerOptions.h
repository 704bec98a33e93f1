/// \file
/// The command line.
#pragma once

#include "Placeholders.h"

#include <QStringList>

namespace ztExamples
{

struct ViewerOptions
{
    /// Empty: no overlays besides the viewer's own.
    QString overlayFile;
    /// Empty: the built-in shape.
    QString meshFile;
    /// How many frames to show before quitting, 0 for no end.
    int frameCount = 0;
    /// Where a picture of the last frame goes, if not empty.
    QString screenshot;
    /// Only say what is amiss with the overlays.
    bool isCheck = false;
    /// Of the window, in DPI-independent pixels.
    QSize size{1280, 720};
    /// Not empty: this is asked for, and nothing else.
    QString information;
};

/// What {file} stands for.
QString meshName(ViewerOptions const& options);

/// What placeholders stand for: the viewer shows frame 1 of 1.
Placeholders placeholdersOf(ViewerOptions const& options);

/// \param arguments  the program's name first
/// \throw std::runtime_error for a usage error; what() is one line about it
ViewerOptions parseViewerOptions(QStringList const& arguments);

} // namespace ztExamples
