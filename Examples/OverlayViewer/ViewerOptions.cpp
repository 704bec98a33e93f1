#include "ViewerOptions.h"

#include "CommandLine.h"
#include "OverlayFile.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <limits>

namespace ztExamples
{

namespace
{

constexpr int maxSide = 16384;

constexpr char description[] =
    "Shows a turning mesh with labels and pictures in front of it. They are read from a JSON file, in which\n"
    "{\"overlays\": [...]} lists them, the topmost first.";

constexpr char details[] = R"(
In a text, {file} stands for the mesh file's name without folder; {index} and {count} are 1, since there is
one mesh; {{ and }} are braces.

Keys and mouse:
  H           show or hide this list
  C           show or hide what is amiss with the overlays, and what to do about it
  V           hide the overlay under the pointer; there, V shows it again
  drag        move an overlay, or turn the mesh
  wheel       enlarge the mesh
  drop        show the mesh or the overlays of the file that is dropped onto the window
  R           reverse the order of the overlays
  S           save what is shown, 1, 2 and 4 times as large, with the overlays stamped onto the picture
  T           save the same drawn by the graphics card in tiles
  Space       pause or go on
  Q, Escape   quit

S and T write PNG files into the current folder and print their names. In the larger ones overlays of relative
size are larger, too, and those of absolute size aren't. What is stamped at a negative position counts from the
other side of the picture, so an overlay that hangs over the left or lower edge isn't as shown.

The label at the lower edge is written anew twice a second: the mean time of a frame, how often an overlay's
text has been rendered and how many textures have been uploaded since the start. At the end a line tells the
counts. With --frames or --screenshot each frame is a sixtieth of a second and no time is shown, so that the
pictures are always the same.

Placeholders as overlay-stamp --help lists them stand for frame 1 of 1 at 24 frames a second, {width} and {height}
for --size, and {file} for the mesh's file.

A mesh has 10 million triangles at most. The pictures of the JSON file have 2^28 pixels together, and so have the
texts as they are rendered; a text has 100000 characters at most, the file 4 MiB.

Exit codes: 0 if all is well; 1 if --check finds anything, if a frame couldn't be drawn or the screenshot not be
written, if there is no OpenGL 3.3 or OpenGL ES 3.0, or if the system doesn't give what is needed; 2 if the
command line, the JSON file or the mesh is wrong; 129, 130 and 143 after a signal HUP, INT and TERM.
)";

void addOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription(description);
    parser.addOptions({
        {"overlays", "JSON file with the overlays.", "FILE"},
        {"frames", "Quit after so many frames.", "N"},
        {"screenshot", "Save the last frame (the first without --frames); the suffix says the format.", "FILE"},
        {"check", "Say what is amiss with the overlays, a line each, and show nothing."},
        {"size", "Size of the window in DPI-independent pixels (1280x720).", "WxH"},
    });
    parser.addPositionalArgument(
        "MESH", "OBJ, STL or PLY file, in its materials' or vertices' colours (a built-in shape).", "[MESH]");
}

int parseFrameCount(QString const& text)
{
    bool isNumber;
    int const count = text.toInt(&isNumber);
    require(isNumber && count >= 1, QString("--frames: expected a whole number from 1 to %1, got \"%2\"")
                                        .arg(std::numeric_limits<int>::max())
                                        .arg(text));
    return count;
}

QSize parseSize(QString const& text)
{
    auto const match = QRegularExpression("\\A([0-9]{1,5})x([0-9]{1,5})\\z").match(text);
    QSize const size(match.captured(1).toInt(), match.captured(2).toInt());
    require(!size.isEmpty() && size.width() <= maxSide && size.height() <= maxSide,
            QString("--size: expected WxH, each from 1 to %1, got \"%2\"").arg(maxSide).arg(text));
    return size;
}

} // namespace

QString meshName(ViewerOptions const& options)
{
    return options.meshFile.isEmpty() ? "built-in shape" : QFileInfo(options.meshFile).fileName();
}

Placeholders placeholdersOf(ViewerOptions const& options)
{
    return {meshName(options), 1, 1, {options.size, {}}, 1};
}

ViewerOptions parseViewerOptions(QStringList const& arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    ViewerOptions options;
    options.information = parse(parser, arguments, overlayFileHelp + QString(details));
    if (!options.information.isEmpty())
        return options;

    QStringList const meshes = parser.positionalArguments();
    require(meshes.size() < 2, "one mesh at most is shown");
    require(!meshes.contains(QString()), "the mesh's name is empty");
    options.meshFile = meshes.value(0);
    options.overlayFile = valueOf(parser, "overlays");
    options.isCheck = parser.isSet("check");
    options.screenshot = valueOf(parser, "screenshot");
    if (parser.isSet("screenshot"))
        requireFormat("screenshot", options.screenshot);
    if (parser.isSet("frames"))
        options.frameCount = parseFrameCount(valueOf(parser, "frames"));
    else if (parser.isSet("screenshot"))
        options.frameCount = 1;
    if (parser.isSet("size"))
        options.size = parseSize(valueOf(parser, "size"));
    return options;
}

} // namespace ztExamples
