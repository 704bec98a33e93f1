/// \file
/// The command line.
#pragma once

#include "Frame.h"
#include "NamePattern.h"
#include "Placeholders.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace ztExamples
{

struct FramePaths
{
    QString input;
    QString output;
    /// Of a layer, or where the input is named by a pattern.
    std::optional<qint64> number = {};
    /// Why it is left out, or nothing.
    QString omission = {};
};

struct StampOptions
{
    QString overlayFile;
    /// Not empty: an overlay file of which to say what it holds, and nothing else is to be done.
    QString checkedFile;
    std::vector<FramePaths> frames;
    /// Whether the frames are the pictures of the standard input stream, in place of those above.
    bool readsPipe = false;
    /// Of such a picture's file, unless they go to the standard output stream.
    std::optional<NamePattern> outputPattern;
    /// Whether they are written to the standard output stream.
    bool writesPipe = false;
    /// Of the frames if they are layers, without inputs.
    std::optional<QSize> layerSize;
    RunValues values;
    /// To be made if it is missing; empty for none.
    QString outputDir;
    /// Pixels for each DPI-independent pixel.
    double dpiScale = 1.0;
    /// How many threads decode and encode.
    int jobs = 1;
    /// The limit is also one of the overlay file's pictures, and of an overlay's picture as it is stamped.
    FrameRules rules;
    /// Whether to leave out frames without an input, or with an output.
    bool skipsMissing = false;
    bool skipsExisting = false;
    /// Whether to tell what would be done, and do nothing.
    bool isDryRun = false;
    bool isQuiet = false;
    /// Whether outputs may replace what the program reads.
    bool isForced = false;
    /// Not empty: this is asked for, and nothing else.
    QString information;
};

/// Those that aren't left out.
std::size_t countFrames(StampOptions const& options);

/// \param arguments  the program's name first
/// \throw std::runtime_error for a usage error; what() is one line about it
StampOptions parseStampOptions(QStringList const& arguments);

} // namespace ztExamples
