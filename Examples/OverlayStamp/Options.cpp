#include "Options.h"

#include "CommandLine.h"
#include "OverlayFile.h"
#include "ztPlatform.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QThread>

#include <algorithm>
#include <limits>

namespace ztExamples
{

namespace
{

constexpr int maxJobs = 256;

constexpr char pipe[] = "-";

constexpr char description[] =
    "Stamps labels and pictures onto images. They are read from a JSON file, in which {\"overlays\": [...]}\n"
    "lists them, the topmost first.";

constexpr char details[] = R"(
In a text, {file} stands for the input's name without folder, {index} for its number from 1 and {count} for
the number of inputs; {{ and }} are braces.

An output has 8 bits a channel, and the alpha channel, resolution, colour space and text entries of its input.
Formats that have no alpha channel (JPEG, BMP, PPM) show transparent pixels over black. An output is written
whole or not at all. Each frame is reported in a line; several on a terminal in a progress bar.

The pictures of a stream, one behind the other, are PAM (P7, gray or RGB, with or without alpha) or PPM (P6), of
8 or 16 bits. They leave as they came, in their form and depth, each as soon as it is done; what no overlay covers
keeps its value, and alpha is straight. Files leave as PAM of 8 bits. The stream ends with the first picture that
fails. {file} is - for a picture of a stream, and nobody knows {count}:

  ffmpeg -i in.mp4 -f image2pipe -c:v pam - | overlay-stamp --overlays labels.json --output - - |
    ffmpeg -f image2pipe -c:v pam -framerate 25 -i - out.mp4

A frame takes up to 16 bytes a pixel. Those under way at a time have 2^27 pixels, 2 GiB, together; a larger one
goes alone. Only without a limit is a picture read whose format doesn't tell its size before it is decoded. A
text has 100000 characters at most and is 32767 pixels wide and high, the JSON file has 4 MiB.

Exit codes: 0 if all is well; 1 if frames couldn't be read or written, the others are done, or if the system
doesn't give what is needed; 2 if the command line or the JSON file is wrong, nothing is done; 129, 130 and 143
after a signal HUP, INT and TERM, the outputs that are there are whole.

Example:
  overlay-stamp --overlays labels.json --output-dir stamped render/frame_*.png

with this labels.json:
  {"overlays": [{"text": "{file}  {index}/{count}", "sizeMode": "relative", "size": 0.05,
                 "anchor": [0.5, 0.02], "backgroundTransparency": 0.4},
                {"contentType": "image", "image": "logo.png", "size": 64, "anchor": [1, 1],
                 "offset": [-16, -16]}]}
)";

void addOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription(description);
    parser.addOptions({
        {"overlays", "JSON file with the overlays.", "FILE"},
        {"output",
         "Where the stamped image goes; the suffix says the format. One input only. - is the standard output stream, "
         "for any number of them.",
         "FILE"},
        {"output-dir", "Folder for the stamped images, under their inputs' names.", "DIR"},
        {"dpi-scale", "Pixels for each DPI-independent pixel (1).", "S"},
        {"jobs", "How many threads decode and encode (one a processor).", "N"},
        {"compression",
         QString("How small PNG files get: 0 is uncompressed, 9 the smallest and slowest (%1). Other formats take no "
                 "notice.")
             .arg(defaultPngCompression),
         "N"},
        {"max-pixels",
         QString("How many pixels a frame may have, an overlay's picture where it is stamped, all pictures that the "
                 "JSON file names, and all texts of a frame as they are rendered (%1). 0 is no limit.")
             .arg(defaultMaxPixels),
         "N"},
        {"quiet", "Report errors only."},
        {"force", "Let an output replace an input, the JSON file, one of its pictures or, through a link, another "
                  "output."},
    });
    parser.addPositionalArgument(
        "INPUT", "Images, in the order of the sequence; or - for those of the standard input stream.", "INPUT...");
}

void applyDpiScale(QString const& text)
{
    bool isNumber;
    double const scale = text.toDouble(&isNumber);
    require(isNumber && ztPlatform::setDpiScale(scale, scale),
            "--dpi-scale: expected a number above 0, got \"" + text + "\"");
}

/// The value of an option, or a default if it isn't given.
int parseWhole(QCommandLineParser const& parser, QString const& option, int least, int most, int otherwise)
{
    if (!parser.isSet(option))
        return otherwise;
    QString const text = valueOf(parser, option);
    bool isNumber;
    int const value = text.toInt(&isNumber);
    require(
        isNumber && value >= least && value <= most,
        QString("--%1: expected a whole number from %2 to %3, got \"%4\"").arg(option).arg(least).arg(most).arg(text));
    return value;
}

void checkNames(std::vector<FramePaths> const& frames)
{
    QSet<QString> outputs;
    for (FramePaths const& frame : frames)
    {
        require(!outputs.contains(frame.output), "two inputs would be written to \"" + frame.output + "\"");
        outputs << frame.output;
    }
}

std::vector<FramePaths> parseFrames(QCommandLineParser const& parser)
{
    QString const output = valueOf(parser, "output");
    QString const outputDir = valueOf(parser, "output-dir");
    QStringList const inputs = parser.positionalArguments();
    require(!inputs.isEmpty(), "no input is given");
    require(output.isEmpty() != outputDir.isEmpty(), "one of --output and --output-dir is needed");
    require(!inputs.contains(pipe) || (inputs.size() == 1 && output == pipe),
            "the input - stands alone, with --output -");
    require(output.isEmpty() || output == pipe || inputs.size() == 1,
            "--output takes one input; --output-dir takes several");
    if (!output.isEmpty() && output != pipe)
        requireFormat("output", output);

    std::vector<FramePaths> frames;
    if (inputs.contains(pipe))
        return frames;
    for (QString const& input : inputs)
        frames.push_back({input, output.isEmpty() ? QDir(outputDir).filePath(QFileInfo(input).fileName()) : output});
    if (output != pipe)
        checkNames(frames);
    return frames;
}

} // namespace

Options parseOptions(QStringList const& arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    Options options;
    options.information = parse(parser, arguments, overlayFileHelp + QString(details));
    if (!options.information.isEmpty())
        return options;

    options.overlayFile = valueOf(parser, "overlays");
    require(!options.overlayFile.isEmpty(), "--overlays is needed");
    options.frames = parseFrames(parser);
    options.outputDir = valueOf(parser, "output-dir");
    options.readsPipe = parser.positionalArguments().contains(pipe);
    options.writesPipe = valueOf(parser, "output") == pipe;
    options.jobs = parseWhole(parser, "jobs", 1, maxJobs, std::clamp(QThread::idealThreadCount(), 1, maxJobs));
    options.pngCompression = parseWhole(parser, "compression", 0, 9, defaultPngCompression);
    if (parser.isSet("dpi-scale"))
        applyDpiScale(valueOf(parser, "dpi-scale"));
    options.maxPixels = parseWhole(parser, "max-pixels", 0, std::numeric_limits<int>::max(), defaultMaxPixels);
    options.isQuiet = parser.isSet("quiet");
    options.isForced = parser.isSet("force");
    return options;
}

} // namespace ztExamples
