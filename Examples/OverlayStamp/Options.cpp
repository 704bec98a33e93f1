#include "Options.h"

#include "ztPlatform.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QSet>
#include <QThread>

#include <algorithm>
#include <stdexcept>

namespace ztExamples
{

namespace
{

constexpr int maxJobs = 256;

constexpr char description[] =
    "Stamps labels and pictures onto images. They are read from a JSON file, in which {\"overlays\": [...]}\n"
    "lists them, the topmost first.";

constexpr char details[] = R"(
Each overlay is an object with these keys; what is left out has the value in parentheses:
  contentType             "text" or "image" ("text")
  text                    what a text shows, lines separated by \n; needed by a text
  image                   path of the picture, relative to the JSON file; needed by an image
  font                    font family (the system's)
  textColor               [red, green, blue, alpha], each from 0 to 1 ([1, 1, 1, 1])
  backgroundColor         [red, green, blue] behind a text ([0, 0, 0])
  backgroundTransparency  0 is opaque and 1 is clear, or [red, green, blue], whose luminance counts (1)
  sizeMode                "absolute" or "relative" ("absolute")
  size                    relative: the fraction of the frame's height that all the text's lines or the
                          picture take, needed then; absolute: points of a text's font, at least 1, or
                          DPI-independent pixels of a picture's height (12)
  anchor                  [x, y]: the point at this fraction of the overlay's size lies on the point at the
                          same fraction of the frame's; [0, 0] is lower left, [1, 1] upper right ([0, 0])
  offset                  [x, y]: shift from there in DPI-independent pixels, x right, y up ([0, 0])
  name                    a name for the overlay
  visible                 true or false (true)

In a text, {file} stands for the input's name without folder, {index} for its number from 1 and {count} for
the number of inputs; {{ and }} are braces.

An output has 8 bits a channel, and the alpha channel, resolution, colour space and text entries of its input.
Formats that have no alpha channel (JPEG, BMP, PPM) show transparent pixels over black. An output is written
whole or not at all. Each frame is reported in a line; several on a terminal in a progress bar.

Exit codes: 0 if all is well; 1 if frames couldn't be read or written, the others are done; 2 if the command
line or the JSON file is wrong, nothing is done.

Example:
  overlay-stamp --overlays labels.json --output-dir stamped render/frame_*.png

with this labels.json:
  {"overlays": [{"text": "{file}  {index}/{count}", "sizeMode": "relative", "size": 0.05,
                 "anchor": [0.5, 0.02], "backgroundTransparency": 0.4},
                {"contentType": "image", "image": "logo.png", "size": 64, "anchor": [1, 1],
                 "offset": [-16, -16]}]}
)";

[[noreturn]] void fail(QString const& message)
{
    throw std::runtime_error("overlay-stamp: " + message.toStdString() + " (see --help)");
}

void require(bool condition, QString const& message)
{
    if (!condition)
        fail(message);
}

void addOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription(description);
    parser.addOptions({
        {"overlays", "JSON file with the overlays.", "FILE"},
        {"output", "Where the stamped image goes; the suffix says the format. One input only.", "FILE"},
        {"output-dir", "Folder for the stamped images, under their inputs' names.", "DIR"},
        {"dpi-scale", "Pixels for each DPI-independent pixel (1).", "S"},
        {"jobs", "How many threads decode and encode (one a processor).", "N"},
        {"quiet", "Report errors only."},
        {"force", "Let an output replace an input."},
        {"help", "Show this."},
        {"version", "Show the version."},
    });
    parser.addPositionalArgument("INPUT", "Images, in the order of the sequence.", "INPUT...");
}

/// The value of an option, empty if it isn't given.
QString valueOf(QCommandLineParser const& parser, QString const& option)
{
    QStringList const values = parser.values(option);
    require(values.size() < 2, "--" + option + " is given twice");
    require(!values.contains(QString()), "--" + option + " is empty");
    return parser.value(option);
}

void applyDpiScale(QString const& text)
{
    bool isNumber;
    double const scale = text.toDouble(&isNumber);
    require(isNumber && ztPlatform::setDpiScale(scale, scale),
            "--dpi-scale: expected a number above 0, got \"" + text + "\"");
}

int parseJobs(QString const& text)
{
    bool isNumber;
    int const jobs = text.toInt(&isNumber);
    require(isNumber && jobs >= 1 && jobs <= maxJobs,
            QString("--jobs: expected a whole number from 1 to %1, got \"%2\"").arg(maxJobs).arg(text));
    return jobs;
}

void checkFormat(QString const& output)
{
    QByteArray const suffix = QFileInfo(output).suffix().toLower().toUtf8();
    QByteArrayList const formats = QImageWriter::supportedImageFormats();
    require(formats.contains(suffix), "--output: can't write the format of \"" + output + "\", only " +
                                          QString::fromUtf8(formats.join(", ")));
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

void checkInputsAreSafe(std::vector<FramePaths> const& frames)
{
    QSet<QString> inputs;
    for (FramePaths const& frame : frames)
        inputs << QFileInfo(frame.input).canonicalFilePath();
    inputs.remove(QString()); // of those that don't exist
    for (FramePaths const& frame : frames)
        require(!inputs.contains(QFileInfo(frame.output).canonicalFilePath()),
                "\"" + frame.output + "\" is an input, which only --force replaces");
}

std::vector<FramePaths> parseFrames(QCommandLineParser const& parser)
{
    QString const output = valueOf(parser, "output");
    QString const outputDir = valueOf(parser, "output-dir");
    QStringList const inputs = parser.positionalArguments();
    require(!inputs.isEmpty(), "no input is given");
    require(output.isEmpty() != outputDir.isEmpty(), "one of --output and --output-dir is needed");
    require(output.isEmpty() || inputs.size() == 1, "--output takes one input; --output-dir takes several");
    if (!output.isEmpty())
        checkFormat(output);

    std::vector<FramePaths> frames;
    for (QString const& input : inputs)
        frames.push_back(
            {input, output.isEmpty() ? QDir(outputDir).filePath(QFileInfo(input).fileName()) : output});
    checkNames(frames);
    if (!parser.isSet("force"))
        checkInputsAreSafe(frames);
    return frames;
}

} // namespace

Options parseOptions(QStringList const& arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments))
        fail(parser.errorText().chopped(1));

    Options options;
    if (parser.isSet("help"))
        options.information = parser.helpText() + details;
    else if (parser.isSet("version"))
        options.information = "overlay-stamp " ZT_VERSION "\n";
    if (!options.information.isEmpty())
        return options;

    options.overlayFile = valueOf(parser, "overlays");
    require(!options.overlayFile.isEmpty(), "--overlays is needed");
    options.frames = parseFrames(parser);
    options.outputDir = valueOf(parser, "output-dir");
    options.jobs = std::clamp(QThread::idealThreadCount(), 1, maxJobs);
    if (parser.isSet("jobs"))
        options.jobs = parseJobs(valueOf(parser, "jobs"));
    if (parser.isSet("dpi-scale"))
        applyDpiScale(valueOf(parser, "dpi-scale"));
    options.isQuiet = parser.isSet("quiet");
    return options;
}

} // namespace ztExamples
