#include "StampOptions.h"

#include "CommandLine.h"
#include "Frame.h"
#include "NamePattern.h"
#include "OverlayFile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

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
An input or --output is a pattern if %d, %04d, #### or @@@@ stands for a number in its file's name, with so many
digits at least, and an input only if there is no file of that very name. An output has the number that its input has
in the pattern's place, or the last one in its name. --frames may count backwards and below 0; each number stands
once. A frame that is missing has failed unless --skip-missing leaves it out; {index} and {count} count all.

Frames of 8 bits a channel are PNG, JPEG, BMP, PPM and what else Qt reads. EXR, DPX, TIFF, HDR, TGA, WebP and PNG
of 16 bits are read and written by OpenImageIO, where the program is built with it, in their own depth: with all
parts, channels and metadata, overlays laid out for the display window, pixels that none covers as they were, but for
what a format's compression loses; WebP is written with colour at half the size. Gray frames get colour if the
overlays have some. Deep pictures, volumes, levels of detail, CMYK, Lab and PPM files of 16 bits are errors. An
output of another format has what that can hold of the channels that show: numbers with a fraction are in linear
light then, others in sRGB.

An output has the alpha channel, resolution, colour space and text entries of its input. Formats that have no
alpha channel (JPEG, BMP, PPM, HDR) show transparent pixels over black. An output is written whole or not at all.
Each frame is reported in a line; several on a terminal in a progress bar.

The pictures of a stream, one behind the other, are PAM (P7, gray or RGB, with or without alpha) or PPM (P6), of
8 or 16 bits. They leave as they came, in their form and depth, each as soon as it is done; what no overlay covers
keeps its value, and alpha is straight. Files leave as PAM of 8 bits. The stream ends with the first picture that
fails. {file} is - for a picture of a stream or a layer, and nobody knows a stream's {count}. With --output
still.####.png the pictures are written to files, numbered from 0; files of the stream's own kind keep 16 bits, others can't:

  ffmpeg -i in.mp4 -f image2pipe -c:v pam - | overlay-stamp --overlays labels.json --output - - |
    ffmpeg -f image2pipe -c:v pam -framerate 25 -i - out.mp4

For programs that composite themselves, --layer writes the overlays alone. Alpha is straight in PAM and PNG. A
pattern as output, layer.####.png, takes several layers: those of --frames, or --count from 0, which is {frame}, too:

  overlay-stamp --overlays labels.json --layer 1920x1080 --count 100 --output - |
    ffmpeg -i in.mp4 -f image2pipe -c:v pam -framerate 25 -i - -filter_complex overlay out.mp4

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
        {"check", "Only read a JSON file, and say in a line per overlay what it holds. It takes no images.", "FILE"},
        {"output",
         "Where the stamped image goes; the suffix says the format. One input only, unless it is a pattern, "
         "whose folder is made. - is the standard output stream, for any number of them.",
         "FILE"},
        {"frames", "The numbers of the frames of an input that is a pattern (all that are there), or of layers.",
         "1001-1100,1120,1200-1300x10"},
        {"skip-missing", "Leave out inputs that aren't there."},
        {"skip-existing", "Leave out frames whose outputs are there, to go on after an interruption."},
        {"dry-run", "Print what would be written and write nothing."},
        {"output-dir", "Folder for the stamped images, under their inputs' names.", "DIR"},
        {"layer", "Writes the overlays alone, on transparent pictures of a size, in place of inputs.", "WxH"},
        {"count", "How many of them (1).", "N"},
        {"dpi-scale", "Pixels for each DPI-independent pixel (1).", "S"},
        {"jobs", "How many threads decode and encode (one a processor).", "N"},
        {"compression",
         QString("How small PNG and zip-compressed EXR files get, others take no notice: 0 is uncompressed, 9 the "
                 "smallest and slowest (%1).")
             .arg(defaultPngCompression),
         "N"},
        {"max-pixels",
         QString("How many pixels a frame may have, an overlay's picture where it is stamped, all pictures that the "
                 "JSON file names, and all texts of a frame as they are rendered (%1). 0 is no limit.")
             .arg(defaultMaxPixels),
         "N"},
        {"frame-space",
         "Colour space of the frames, in which overlays are blended: linear, sRGB or Rec709, or one of the "
         "configuration that the environment variable OCIO names (as the file says it; else linear for numbers with a "
         "fraction, and sRGB).",
         "NAME"},
        {"fps", "Frames a second for {timecode}: a whole number, 23.976, 29.97 or their doubles.", "RATE"},
        {"start", "Timecode of frame 0 (00:00:00:00).", "HH:MM:SS:FF"},
        {"now", "The time for {date} and {time} (SOURCE_DATE_EPOCH or the clock's).", "2026-01-31T12:00:00"},
        {"set", "The value for {set:NAME}; several times for several names.", "NAME=VALUE"},
        {"allow-env", "Let {env:NAME} stand for this environment variable; several times for several.", "NAME"},
        {"quiet", "Report errors only."},
        {"force", "Let an output replace an input, the JSON file, one of its pictures or, through a link, another "
                  "output."},
    });
    parser.addPositionalArgument(
        "INPUT", "Images, in the order of the sequence; or - for those of the standard input stream.", "INPUT...");
}

double parseDpiScale(QString const& text)
{
    bool isNumber;
    double const scale = text.toDouble(&isNumber);
    require(isNumber && scale > 0.0 && std::isfinite(scale),
            "--dpi-scale: expected a number above 0, got \"" + text + "\"");
    return scale;
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

QDateTime parseNow(QCommandLineParser const& parser)
{
    QString const now = valueOf(parser, "now");
    if (!now.isEmpty())
    {
        QDateTime const time = QDateTime::fromString(now, Qt::ISODate);
        require(time.isValid(), "--now: expected a time such as 2026-01-31T12:00:00, got \"" + now + "\"");
        return time;
    }
    if (!qEnvironmentVariableIsSet("SOURCE_DATE_EPOCH"))
        return QDateTime::currentDateTime();
    QString const epoch = qEnvironmentVariable("SOURCE_DATE_EPOCH");
    bool isNumber;
    QDateTime const time = QDateTime::fromSecsSinceEpoch(epoch.toLongLong(&isNumber), Qt::UTC);
    require(isNumber && time.isValid(), "SOURCE_DATE_EPOCH: expected seconds, got \"" + epoch + "\"");
    return time;
}

std::map<QString, QString> parseSettings(QStringList const& settings)
{
    std::map<QString, QString> values;
    for (QString const& setting : settings)
    {
        int const end = int(setting.indexOf('='));
        require(end > 0, "--set: expected NAME=VALUE, got \"" + setting + "\"");
        bool const isNew = values.emplace(setting.left(end), setting.mid(end + 1)).second;
        require(isNew, "--set: \"" + setting.left(end) + "\" is given twice");
    }
    return values;
}

std::map<QString, QString> readEnvironment(QStringList const& names)
{
    std::map<QString, QString> values;
    for (QString const& name : names)
    {
        require(qEnvironmentVariableIsSet(name.toUtf8()), "--allow-env: the environment has no \"" + name + "\"");
        values[name] = qEnvironmentVariable(name.toUtf8());
    }
    return values;
}

RunValues parseValues(QCommandLineParser const& parser)
{
    RunValues run;
    run.now = parseNow(parser);
    run.settings = parseSettings(parser.values("set"));
    run.environment = readEnvironment(parser.values("allow-env"));
    QString const rate = valueOf(parser, "fps"), start = valueOf(parser, "start");
    run.rate = parseFrameRate(rate);
    require(rate.isEmpty() || run.rate, "--fps: expected a rate such as 24, 23.976 or 29.97, got \"" + rate + "\"");
    if (start.isEmpty())
        return run;
    require(run.rate.has_value(), "--start needs --fps");
    auto const frame = parseTimecode(start, *run.rate);
    require(frame.has_value(), "--start: expected a timecode of " + rate + " frames a second, got \"" + start + "\"");
    run.start = *frame;
    return run;
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

/// Frames without inputs.
std::vector<FramePaths> nameLayers(QString const& output, std::vector<qint64> const& numbers)
{
    require(output == pipe || hasAlpha(suffixOf(output)),
            "--output: the format of \"" + output + "\" has no alpha channel for a layer");
    auto const pattern = parsePattern(output);
    require(output == pipe || numbers.size() == 1 || pattern,
            "--output: expected a name with # for the number of each layer, or -, got \"" + output + "\"");
    std::vector<FramePaths> frames;
    for (qint64 const number : numbers)
        frames.push_back({pipe, pattern ? nameOf(*pattern, number) : output, number});
    return frames;
}

/// Those of --frames, else as many as --count says, from 0 as in a stream.
std::vector<qint64> parseLayerNumbers(QCommandLineParser const& parser)
{
    require(!parser.isSet("frames") || !parser.isSet("count"), "--layer takes --count or --frames, not both");
    if (parser.isSet("frames"))
        return parseNumbers(valueOf(parser, "frames"));
    std::vector<qint64> numbers(std::size_t(parseWhole(parser, "count", 1, int(maxFrameCount), 1)));
    std::iota(numbers.begin(), numbers.end(), qint64(0));
    return numbers;
}

QSize parseLayerSize(QString const& text, qint64 maxPixels)
{
    static QRegularExpression const form(R"(\A([1-9]\d{0,4})x([1-9]\d{0,4})\z)");
    auto const match = form.match(text);
    require(match.hasMatch(), "--layer: expected a width and a height in pixels as in 1920x1080, got \"" + text + "\"");
    QSize const size(match.captured(1).toInt(), match.captured(2).toInt());
    require(maxPixels == 0 || qint64(size.width()) * size.height() <= maxPixels,
            QString("--layer: %1 pixels are above the limit of %2").arg(text).arg(maxPixels));
    return size;
}

std::vector<FramePaths> parseInputs(QStringList const& inputs, QString const& numbers)
{
    std::vector<FramePaths> frames;
    bool hasPattern = false;
    for (QString const& input : inputs)
    {
        auto const pattern = QFileInfo::exists(input) ? std::nullopt : parsePattern(input);
        hasPattern = hasPattern || pattern;
        if (!pattern)
            frames.push_back({input, ""});
        else
            for (qint64 const number : numbers.isEmpty() ? findNumbers(*pattern) : parseNumbers(numbers))
                frames.push_back({nameOf(*pattern, number), "", number});
        require(frames.size() <= maxFrameCount, QString("expected %1 frames at most").arg(maxFrameCount));
    }
    require(numbers.isEmpty() || hasPattern, "--frames needs an input such as shot.####.exr");
    return frames;
}

QString outputOf(FramePaths const& frame, QString const& output, QString const& outputDir)
{
    if (output.isEmpty())
        return QDir(outputDir).filePath(QFileInfo(frame.input).fileName());
    auto const pattern = parsePattern(output);
    if (!pattern)
        return output;
    auto const number = frame.number ? frame.number : frameNumber(frame.input);
    require(number.has_value(), "\"" + frame.input + "\" has no number for --output \"" + output + "\"");
    return nameOf(*pattern, *number);
}

/// Says of each frame that is left out why it is.
void leaveOut(StampOptions& options)
{
    for (FramePaths& frame : options.frames)
    {
        if (options.skipsMissing && !QFileInfo::exists(frame.input))
            frame.omission = "it is missing";
        else if (options.skipsExisting && QFileInfo::exists(frame.output))
            frame.omission = "its output is there";
    }
}

/// Whether inputs and outputs go together with each other and with the options about them.
void requireAgreement(QCommandLineParser const& parser)
{
    QString const output = valueOf(parser, "output");
    QString const outputDir = valueOf(parser, "output-dir");
    QStringList const inputs = parser.positionalArguments();
    bool const isLayer = parser.isSet("layer");
    require(isLayer || !inputs.isEmpty(), "no input is given");
    require(!isLayer || (inputs.isEmpty() && outputDir.isEmpty()), "--layer takes --output, and no input");
    require(isLayer || !parser.isSet("count"), "--count is the number of layers of --layer");
    require(output.isEmpty() != outputDir.isEmpty(), "one of --output and --output-dir is needed");
    bool const isStream = inputs.contains(pipe);
    require(!isStream || (inputs.size() == 1 && (output == pipe || parsePattern(output))),
            "the input - stands alone, with --output - or a name such as out.####.png");
    for (QString const option : {"frames", "skip-missing", "skip-existing", "dry-run"})
        require(!parser.isSet(option) || !isStream, "--" + option + " needs inputs that are files");
    require(!parser.isSet("skip-missing") || !isLayer, "--skip-missing needs inputs that are files");
    require(!parser.isSet("skip-existing") || output != pipe, "--skip-existing needs outputs that are files");
    bool const canBeOther = isStream ? suffixOf(output) == "pam" : !isLayer && isNativeSuffix(suffixOf(output));
    if (!output.isEmpty() && output != pipe && !canBeOther)
        requireFormat("output", output);
}

/// None for a stream, which tells them itself.
std::vector<FramePaths> parseFrames(QCommandLineParser const& parser)
{
    requireAgreement(parser);
    QString const output = valueOf(parser, "output");
    if (parser.isSet("layer"))
        return nameLayers(output, parseLayerNumbers(parser));
    if (parser.positionalArguments().contains(pipe))
        return {};
    std::vector<FramePaths> frames = parseInputs(parser.positionalArguments(), valueOf(parser, "frames"));
    require(output.isEmpty() || output == pipe || frames.size() == 1 || parsePattern(output),
            "--output takes one input, or several with a name such as out.####.png; --output-dir takes several");
    for (FramePaths& frame : frames)
        frame.output = outputOf(frame, output, valueOf(parser, "output-dir"));
    if (output != pipe)
        checkNames(frames);
    return frames;
}

/// What is read and written.
void parsePlaces(QCommandLineParser const& parser, StampOptions& options)
{
    options.frames = parseFrames(parser);
    QString const output = valueOf(parser, "output");
    bool const isPattern = output != pipe && parsePattern(output);
    options.outputDir = isPattern ? QFileInfo(output).path() : valueOf(parser, "output-dir");
    options.readsPipe = parser.positionalArguments().contains(pipe);
    options.writesPipe = output == pipe;
    if (options.readsPipe && isPattern)
        options.outputPattern = parsePattern(output);
    if (parser.isSet("layer"))
        options.layerSize = parseLayerSize(valueOf(parser, "layer"), options.rules.maxPixels);
    options.skipsMissing = parser.isSet("skip-missing");
    options.skipsExisting = parser.isSet("skip-existing");
    options.isDryRun = parser.isSet("dry-run");
    leaveOut(options);
}

} // namespace

std::size_t countFrames(StampOptions const& options)
{
    return std::size_t(std::count_if(options.frames.begin(), options.frames.end(),
                                     [](FramePaths const& frame) { return frame.omission.isEmpty(); }));
}

StampOptions parseStampOptions(QStringList const& arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    StampOptions options;
    options.information = parse(parser, arguments, overlayFileHelp + QString(placeholdersHelp) + details);
    if (!options.information.isEmpty())
        return options;

    options.rules.maxPixels = parseWhole(parser, "max-pixels", 0, std::numeric_limits<int>::max(), defaultMaxPixels);
    options.values = parseValues(parser);
    options.checkedFile = valueOf(parser, "check");
    options.overlayFile = valueOf(parser, "overlays");
    if (!options.checkedFile.isEmpty())
    {
        bool const isAlone = options.overlayFile.isEmpty() && parser.positionalArguments().isEmpty();
        require(isAlone, "--check takes neither --overlays nor images");
        return options;
    }
    require(!options.overlayFile.isEmpty(), "--overlays is needed");
    parsePlaces(parser, options);
    options.values.isCounted = !options.readsPipe;
    options.jobs = parseWhole(parser, "jobs", 1, maxJobs, std::clamp(QThread::idealThreadCount(), 1, maxJobs));
    options.rules.pngCompression = parseWhole(parser, "compression", 0, 9, defaultPngCompression);
    if (parser.isSet("dpi-scale"))
        options.dpiScale = parseDpiScale(valueOf(parser, "dpi-scale"));
    options.rules.space = valueOf(parser, "frame-space");
    options.isQuiet = parser.isSet("quiet");
    options.isForced = parser.isSet("force");
    return options;
}

} // namespace ztExamples
