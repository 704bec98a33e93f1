// overlay-stamp, run as its users run it, and the nodes that come of an overlay file.

#include "HostTest.h"
#include "OSGNodeUtils.h"
#include "OSGRefPtr.h"
#include "OverlayNodes.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QRegularExpression>

#include <cmath>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// With labels.json and a gray frame.png.
class OverlayStamp : public HostTest
{
  protected:
    OverlayStamp() : HostTest(ZT_OVERLAY_STAMP)
    {
        writeLabels(R"({"text": "{file}", "size": 6})");
        writePicture("frame.png", Qt::gray, {60, 40});
    }

    static void writeLabels(QByteArray const& entries) { write("labels.json", "{\"overlays\":[" + entries + "]}"); }

    /// Stamps frame.png with the labels.
    QImage stamped(QString const& output = "out.png", QString const& more = "") const
    {
        Outcome const done(0, "frame.png -> " + output.toStdString() + "\n", "");
        EXPECT_EQ(run("--overlays labels.json --output " + output + more + " frame.png"), done);
        return QImage(output);
    }
};

/// LABELS and OUT stand for options that are right.
std::pair<char const*, std::string> const wrongUsages[] = {
    {"--overlay labels.json", "Unknown option 'overlay'"},
    {"OUT frame.png", "--overlays is needed"},
    {"LABELS OUT", "no input is given"},
    {"LABELS frame.png", "one of --output and --output-dir is needed"},
    {"LABELS OUT --output-dir out frame.png", "one of --output and --output-dir is needed"},
    {"LABELS OUT --output b.png frame.png", "--output is given twice"},
    {"LABELS OUT frame.png sub/frame.png",
     "--output takes one input, or several with a name such as out.####.png; --output-dir takes several"},
    {"LABELS --output-dir out frame.png sub/frame.png", "two inputs would be written to \"out/frame.png\""},
    {"LABELS --output frame.png link.png", "\"frame.png\" is an input, which only --force replaces"},
    {"LABELS --output-dir . link.png sub/frame.png", "\"./link.png\" is an input, which only --force replaces"},
    {"LABELS --output same/hard.png frame.png", "\"same/hard.png\" is an input, which only --force replaces"},
    {"LABELS --output-dir same frame.png", "\"same/frame.png\" is an input, which only --force replaces"},
    {"LABELS --output labels.png frame.png", "\"labels.png\" is the overlay file, which only --force replaces"},
    {"LABELS --output same/red.png frame.png",
     "\"same/red.png\" is a picture of the overlay file, which only --force replaces"},
    {"LABELS --output-dir sub red.png hard.png",
     "\"sub/hard.png\" is \"sub/red.png\" too, which only --force replaces"},
    {"LABELS OUT -", "the input - stands alone, with --output - or a name such as out.####.png"},
    {"LABELS OUT --count 2 frame.png", "--count is the number of layers of --layer"},
    {"LABELS OUT --layer 8x8 frame.png", "--layer takes --output, and no input"},
    {"LABELS OUT --layer 8x0", "--layer: expected a width and a height in pixels as in 1920x1080, got \"8x0\""},
    {"LABELS OUT --layer 20000x20000", "--layer: 20000x20000 pixels are above the limit of 268435456"},
    {"LABELS --output a.#.png --layer 8x8 --count 2 --frames 1-2", "--layer takes --count or --frames, not both"},
    {"LABELS OUT --layer 8x8 --count 2",
     "--output: expected a name with # for the number of each layer, or -, got \"a.png\""},
    {"LABELS --output a.jpg --layer 8x8", "--output: the format of \"a.jpg\" has no alpha channel for a layer"},
    {"LABELS OUT --dpi-scale 0 frame.png", "--dpi-scale: expected a number above 0, got \"0\""},
    {"LABELS OUT --jobs 0 frame.png", "--jobs: expected a whole number from 1 to 256, got \"0\""},
    {"LABELS OUT --compression 10 frame.png", "--compression: expected a whole number from 0 to 9, got \"10\""},
    {"LABELS OUT --max-pixels 1e9 frame.png",
     "--max-pixels: expected a whole number from 0 to 2147483647, got \"1e9\""},
    {"LABELS OUT --frames 1 frame.png", "--frames needs an input such as shot.####.exr"},
    {"LABELS OUT a.%02d.png", "no file matches \"a.01.png\" with any number"},
    {"LABELS OUT a#b%02d.png", "\"a#b%02d.png\": expected one place of 18 digits at most for a number"},
    {"LABELS --output a.#.png frame.png", "\"frame.png\" has no number for --output \"a.#.png\""},
    {"LABELS OUT --frames 1-2x0 a.#.png",
     "--frames: expected numbers of 9 digits at most such as 1001-1100,1120,1200-1300x10, got \"1-2x0\""},
    {"LABELS OUT --frames 1-9,5 a.#.png", "--frames: 5 is there twice"},
    {"LABELS OUT --frames 0-999999,-1 a.#.png", "--frames: expected 1000000 frames at most, got \"0-999999,-1\""},
    {"LABELS --output - --skip-existing frame.png", "--skip-existing needs outputs that are files"},
    {"LABELS OUT --fps 29.9 frame.png", "--fps: expected a rate such as 24, 23.976 or 29.97, got \"29.9\""},
    {"LABELS OUT --start 01:00:00:00 frame.png", "--start needs --fps"},
    {"LABELS OUT --fps 25 --start 01:00:00:25 frame.png",
     "--start: expected a timecode of 25 frames a second, got \"01:00:00:25\""},
    {"LABELS OUT --now noon frame.png", "--now: expected a time such as 2026-01-31T12:00:00, got \"noon\""},
    {"LABELS OUT --set Shot frame.png", "--set: expected NAME=VALUE, got \"Shot\""},
    {"LABELS OUT --set A=1 --set A=2 frame.png", "--set: \"A\" is given twice"},
    {"LABELS OUT --allow-env NOT_THERE frame.png", "--allow-env: the environment has no \"NOT_THERE\""},
};

TEST_F(OverlayStamp, SaysInOneLineWhatIsWrongWithItsUsageAndLeavesNoTrace)
{
    ASSERT_TRUE(QDir().mkdir("sub"));
    writePicture("sub/frame.png", Qt::red, {60, 40});
    ASSERT_TRUE(QFile::link("frame.png", "link.png") && QFile::link(".", "same"));
    ASSERT_TRUE(QFile::link("none.png", "sub/red.png") && QFile::link("none.png", "sub/hard.png"));
    ASSERT_TRUE(link("frame.png", "hard.png") == 0 && link("labels.json", "labels.png") == 0);
    writePicture("red.png", Qt::red, {4, 4});
    writeLabels(R"({"contentType": "image", "image": "red.png"})");
    auto const complete = [](QString arguments) {
        return arguments.replace("LABELS", "--overlays labels.json").replace("OUT", "--output a.png");
    };
    for (auto const& [arguments, complaint] : wrongUsages)
        expectComplaint(complete(arguments), "overlay-stamp: " + complaint + " (see --help)");
    EXPECT_EQ(run(complete("LABELS --output-dir sub --quiet --force red.png hard.png")), Outcome(0, "", ""));
    EXPECT_EQ(run(complete("LABELS --output-dir new none/a.png --dry-run")),
              Outcome(1, "", "none/a.png: can't read it: File not found\n1 of 1 frames would fail\n"));
    auto const [exitCode, output, errors] = run(complete("LABELS --output a.none frame.png"));
    EXPECT_EQ(errors.rfind("overlay-stamp: --output: can't write the format of \"a.none\", only ", 0), 0u) << errors;
    expectComplaint(complete("LABELS --output-dir labels.json frame.png"),
                    "overlay-stamp: can't make the folder \"labels.json\"");
    expectComplaint(complete("--overlays no.json OUT frame.png"), "no.json: can't read it: No such file or directory");
}

std::pair<QByteArray, char const*> const wrongFiles[] = {
    {"[1]", R"(expected an object with the key "overlays", got [1])"},
    {"{\n\"overlays\": [\n{\"text\": \"é\" 1}]}", "line 3, column 15: unterminated object"},
    {"{}", "overlays: expected an array of objects, got nothing"},
    {R"({"overlay":[]})", R"(overlay: unknown key, did you mean "overlays"?)"},
    {R"({"$schema":1})", "$schema: expected a string, got 1"},
    {R"({"fontFiles":"a.ttf"})", R"(fontFiles: expected an array of paths, got "a.ttf")"},
    {R"({"fontFiles":["no.ttf"]})", R"(fontFiles[0]: can't read "no.ttf": File not found)"},
    {R"({"fontFiles":["frame.png"]})", R"(fontFiles[0]: can't read "frame.png": It is no font)"},
    {R"({"overlays":[{"text":"a"},null]})", "overlays[1]: expected an object, got null"},
    {"{\"overlays\":[{\"text\":\"a\\\\\"},{\"text\":\"\\\"}\",\n\"te\\u0078t\" :1}]}",
     R"(line 2, column 1: the key "text" is there already)"},
    {"{\"overlays\":[]" + QByteArray(1 << 22, ' ') + "}", "expected 4194304 bytes at most"},
    {"{\"overlays\":[" + QByteArray(R"({"contentType":"guide","guide":"grid","columns":90,"rows":90},)").repeated(3) +
         "1]}",
     "overlays[2]: the guides of a file may not have so many lines"},
};

std::pair<QByteArray, std::string> const wrongEntries[] = {
    {R"("anchr":[0,0])", R"(anchr: unknown key, did you mean "anchor"?)"},
    {R"("si\nze":1)", R"(si\nze: unknown key, did you mean "size"?)"},
    {"", "text: expected a string, got nothing"},
    {R"("contentType":"image","text":"a")", "image: expected a path, got nothing"},
    {R"("contentType":"Text")", R"(contentType: expected "text", "image" or "guide", got "Text")"},
    {R"("contentType":"guide")", "guide: expected a guide's name, got nothing"},
    {R"("contentType":"guide","guide":"bar")", "rectangle: expected four numbers from 0 to 1, got nothing"},
    {R"("contentType":"guide","guide":"bar","columns":3)", "columns: no key of a guide \"bar\""},
    {R"("contentType":"guide","guide":"grid","rows":1.5)", "rows: expected a whole number from 1 to 100, got 1.5"},
    {R"("contentType":"guide","guide":"cross","length":0)", "length: expected a number above 0, up to 1, got 0"},
    {R"("text":"a","color":[1,1,1,1])", "color: no key of a text"},
    {R"("text":"a","padding":[1,-1])", "padding: expected one or two numbers from 0 on, got [1,-1]"},
    {R"("text":"a","shadow":{"ofset":[1,1]})", R"(shadow: ofset: unknown key, did you mean "offset"?)"},
    {R"("anchor":[1,"top"])", R"(anchor: expected two numbers, got [1,"top"])"},
    {R"("offset":[1,2,3])", "offset: expected two numbers, got [1,2,3]"},
    {R"("anchor":[0,1e308])", "anchor: expected two numbers in single precision's range, got [0,1e+308]"},
    {R"("textColor":[0,0,0,1.01])", "textColor: expected four numbers from 0 to 1, got [0,0,0,1.01]"},
    {R"("backgroundTransparency":-1)",
     "backgroundTransparency: expected a number or three numbers from 0 to 1, got -1"},
    {R"("size":0)", "size: expected a number above 0, got 0"},
    {R"("size":1e-320)", "size: expected a number above 0 in single precision's range, got 1e-320"},
    {R"("text":"a","size":0.5)", "size: expected at least 1 point, got 0.5"},
    {R"("text":"a","sizeMode":"relative")", "size: expected a fraction of the frame's height, got nothing"},
    {R"("visible":0)", "visible: expected true or false, got 0"},
    {R"("text":"a\u0000b")", R"(text: expected a string without zero bytes, got "a\u0000b")"},
    {R"("text":"{Index}")", R"(text: unknown placeholder "{Index}", did you mean {index}?)"},
    {R"("text":"a } b")", R"(text: expected {{ or }} for a brace, got "a } b")"},
    {R"("text":"{frame:4}")", "text: {frame:4}: expected a shift, a width in zeros or both, as in {frame+1000:04}"},
    {R"("text":"{timecode:04}")", "text: {timecode:04}: expected a shift at most, as in {timecode-1001}"},
    {R"("text":"{stem+1}")", "text: {stem+1}: expected nothing behind the name"},
    {R"("text":"{meta}")", "text: {meta}: expected a name, as in {meta:Camera} or {meta:Camera|unknown}"},
    {R"("text":"{set:shot}")", "text: {set:shot} needs --set shot=VALUE, did you mean {set:Shot}?"},
    {R"("text":"{env:HOME}")", "text: {env:HOME} needs --allow-env HOME"},
    {R"("font":[")" + QByteArray(61, '1') + "\"]", "font: expected a string, got [\"" + std::string(58, '1') + "..."},
    {R"("text":"a","font":"DejaVv Sanz")",
     R"(font: expected a family of the system's fonts, got "DejaVv Sanz", did you mean "DejaVu Sans"?)"},
    {R"("contentType":"image","image":"no.png")", R"(image: can't read "no.png": File not found)"},
    {R"("contentType":"image","image":"huge.ppm")",
     R"(image: can't read "huge.ppm": 20000 by 20000 pixels are above the limit of 268435456)"},
    {"\"text\":\"" + QByteArray(100001, '1') + "\"",
     "text: expected 100000 characters at most, got \"" + std::string(59, '1') + "..."},
};

TEST_F(OverlayStamp, SaysInOneLineWhatIsWrongInTheOverlayFile)
{
    auto const expectComplaintOf = [this](QByteArray const& json, std::string const& complaint) {
        static int count = 0;
        if (qEnvironmentVariableIsSet("ZT_WRONG_FILES")) // for the test of the schema
            write(qEnvironmentVariable("ZT_WRONG_FILES") + QString("/%1.json").arg(++count), json);
        write("labels.json", json);
        expectComplaint("--overlays labels.json --set Shot=1 --output-dir out frame.png", "labels.json: " + complaint);
    };
    for (auto const& [json, complaint] : wrongFiles)
        expectComplaintOf(json, complaint);
    write("huge.ppm", "P6 20000 20000 255\n");
    for (auto const& [keys, complaint] : wrongEntries)
        expectComplaintOf("{\"overlays\":[{" + keys + "}]}", "overlays[0]." + complaint);
}

TEST_F(OverlayStamp, MakesNodesThatHaveWhatTheFileSays)
{
    ASSERT_TRUE(QDir().mkdir("sub"));
    writePicture("sub/logo.png", QColor(255, 0, 0, 51), {1, 1});
    write("sub/labels.json", R"({"overlays": [
        {"contentType": "image", "image": "logo.png", "font": "Noto Sans", "textColor": [0, 0.5, 1, 0.4],
         "backgroundColor": [0.5, 0.6, 0.7], "backgroundTransparency": 0.25, "sizeMode": "relative", "size": 0.5,
         "name": "sun", "visible": false},
        {"text": "a"}]})");
    osg::RefPtr<osg::Node> root(osg::create<osg::Node>());
    for (ztExamples::OverlayEntry const& entry : ztExamples::readOverlayFile("sub/labels.json"))
        createOverlayNode(root, entry);
    osg::NodePtr const node = root->children.at(0);
    auto const picture = osg::dynamicCast<osg::Overlay>(node->core);
    EXPECT_EQ(picture->font, "Noto Sans");
    EXPECT_FLOAT_EQ(picture->textColor.a, 0.4f);
    EXPECT_FLOAT_EQ(picture->backgroundColor.b, 0.7f);
    EXPECT_FLOAT_EQ(picture->backgroundTransparency.b, 0.25f);
    EXPECT_EQ(picture->sizeMode, osg::Overlay::SizeRelative);
    EXPECT_EQ(picture->image->pixels, (std::vector<osg::UInt8>{51, 0, 0, 51}));
    EXPECT_FALSE(picture->foreground->active);
    EXPECT_STREQ(osg::NodeUtils::getName(node), "sun");

    auto const label = osg::dynamicCast<osg::Overlay>(root->children.at(1)->core);
    for (bool const isNew : {true, false})
    {
        label->dirty = false;
        ztExamples::setText(label, "frame 1");
        EXPECT_EQ(label->dirty, isNew) << "needs another rendering";
    }
    root = osg::NullFC;
    EXPECT_EQ(osg::FieldContainerFactory::getNumContainers(), 0u);
}

char const failures[] = "no.png: can't read it: File not found\n"
                        "cut.png: can't read it: Unable to read image data\n"
                        "cut.jpg: can't read it: The file is cut off\n"
                        "cut.bmp: can't read it: The file is cut off\n"
                        "f0.gif: can't write \"out/f0.gif\": Unsupported image format\n"
                        "taken.png: can't write \"out/taken.png\": Filename refers to a directory\n"
                        ".: can't read it: Is a directory\n"
                        "7 of 27 frames failed\n";

TEST_F(OverlayStamp, DoesTheOtherFramesInTheirOrderWhateverTheJobs)
{
    QStringList inputs, lines;
    for (int i = 0; i < 20; ++i)
    {
        inputs << QString("f%1.png").arg(i);
        lines << inputs.back() + " -> out/" + inputs.back() + "\n";
        writePicture(inputs.back(), QColor(10 * i, 0, 0), {60 + 40 * (i % 3), 40});
    }
    QFile whole("f0.png");
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    write("cut.png", whole.read(whole.size() - 20));
    ASSERT_TRUE(QFile::copy("f0.png", "f0.gif"));
    ASSERT_TRUE(QFile::copy("f0.png", "taken.png"));
    for (QString const name : {"cut.jpg", "cut.bmp"})
    {
        writePicture(name, Qt::red, {60, 40});
        ASSERT_TRUE(QFile::resize(name, QFileInfo(name).size() - 2));
    }
    QString const failing = " no.png cut.png cut.jpg cut.bmp f0.gif taken.png . ";
    for (QString const jobs : {"1", "4"})
    {
        ASSERT_TRUE(QDir().mkpath("out/taken.png"));
        EXPECT_EQ(run("--overlays labels.json --output-dir out --jobs " + jobs + failing + inputs.join(' ')),
                  Outcome(1, lines.join("").toStdString(), failures));
        ASSERT_TRUE(QDir().rename("out", jobs));
        EXPECT_EQ(names(jobs).size(), 21);
    }
    for (QString const& name : inputs)
        EXPECT_EQ(QImage("1/" + name), QImage("4/" + name)) << name.toStdString();
}

TEST_F(OverlayStamp, LeavesNoPartOfAFileAndNoOtherKindOfFile)
{
    std::string const failure = "\n1 of 1 frames failed\n";
    ASSERT_EQ(mkfifo("pipe.png", 0600), 0);
    QStringList const before = names();
    EXPECT_EQ(run("--overlays labels.json --output pipe.png frame.png"),
              Outcome(1, "", "frame.png: can't write \"pipe.png\": It is no regular file" + failure));
    EXPECT_EQ(run("--overlays labels.json --output out.png frame.png", "prlimit --fsize=100"),
              Outcome(1, "", "frame.png: can't write \"out.png\": File too large" + failure));
    EXPECT_EQ(names(), before);
}

TEST_F(OverlayStamp, EndsInOneLineWhereTheSystemGivesTooLittle)
{
    expectNeeds("--overlays labels.json --output out.png frame.png");
    EXPECT_EQ(run("--overlays labels.json --quiet --jobs 200 --output-dir out frame.png", "prlimit --nofile=24"),
              Outcome(0, "", ""));
}

TEST_F(OverlayStamp, RefusesWhatIsTooLargeBeforeItTakesTheMemory)
{
    writePicture("line.png", Qt::red, {700, 1});
    write("huge.ppm", "P6 20000 20000 255\n");
    std::tuple<char const*, QByteArray, std::string> const rows[] = {
        {"frame.png", R"("contentType":"image","image":"line.png","sizeMode":"relative","size":20)",
         "labels.json: overlays[0]: 560000 by 800 pixels are above the limit of 268435456"},
        {"frame.png --max-pixels 2399", R"("text":"")", "can't read it: 60 by 40 pixels are above the limit of 2399"},
        {"huge.ppm", R"("text":"")", "can't read it: 20000 by 20000 pixels are above the limit of 268435456"},
        {"frame.png", R"("text":")" + QByteArray("{file}").repeated(12000) + "\"",
         "labels.json: overlays[0].text: has 108000 characters in place of 100000 at most"},
    };
    for (auto const& [arguments, entry, complaint] : rows)
    {
        writeLabels("{" + entry + "}");
        EXPECT_EQ(
            run(QString("--overlays labels.json --output-dir out ") + arguments),
            Outcome(1, "",
                    QString(arguments).split(' ')[0].toStdString() + ": " + complaint + "\n1 of 1 frames failed\n"));
    }
    for (QByteArray const& text :
         {QByteArray("\"text\":\"") + QByteArray(9000, 'M') + "\"", QByteArray(R"("text":"a","size":1000000)"),
          QByteArray(R"("text":"a","sizeMode":"relative","size":1000000)")})
    {
        writeLabels("{" + text + "}");
        auto const [exitCode, output, errors] = run("--overlays labels.json --output-dir out frame.png");
        EXPECT_EQ(errors.rfind("frame.png: labels.json: overlays[0]: can't draw ", 0), 0u) << errors;
    }
}

/// Each frame of 64 million pixels is read, and then its text is too long.
TEST_F(OverlayStamp, HoldsFewLargeFramesAtATime)
{
    write("0.pbm", "P4 8192 8192\n" + QByteArray(8192 * 1024, 0));
    writeLabels("{\"text\":\"" + QByteArray("{file}").repeated(16000) + "{file}{file}{file}\"}");
    QString inputs;
    for (QString const name : {"1234567.pbm", "2345678.pbm", "3456789.pbm", "4567890.pbm", "5678901.pbm"})
    {
        ASSERT_EQ(link("0.pbm", name.toUtf8()), 0);
        inputs += " " + name;
    }
    EXPECT_EQ(std::get<0>(run("--overlays labels.json --jobs 5 --output-dir out" + inputs)), 1);
    rusage usage;
    getrusage(RUSAGE_CHILDREN, &usage);
    EXPECT_LT(usage.ru_maxrss, 1200000) << "KiB";
}

TEST_F(OverlayStamp, TakesFileNamesOfAnyBytesAndPrintsThemHarmless)
{
    write("script",
          QByteArray(
              R"(n=$(printf 'a\377\n\342\200\256b') && mkdir "$n" && mv frame.png "$n/$n.png" && mv labels.json "$n" &&
        "$1" --overlays "$n/labels.json" --output-dir "$n/out" "$n/$n.png" && test -f "$n/out/$n.png" && rm -r "$n")")
              .replace("\\377", qVersion()[0] == '5' ? "\\377" : "?")); // Qt 6 takes them for UTF-8
    EXPECT_EQ(run("", "sh script"), Outcome(0, "a?  b/a?  b.png -> a?  b/out/a?  b.png\n", ""));
}

TEST_F(OverlayStamp, LeavesWholeFilesOnlyWhenASignalEndsIt)
{
    writePicture("frame.png", Qt::gray, {900, 600});
    QStringList inputs;
    for (int i = 0; i < 40; ++i)
    {
        inputs << QString("f%1.png").arg(i);
        ASSERT_EQ(link("frame.png", inputs.back().toUtf8()), 0);
    }
    QProcess process;
    process.start(_program, QStringList{"--overlays", "labels.json", "--output-dir", "out"} + inputs);
    EXPECT_TRUE(process.waitForReadyRead());
    process.terminate();
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 143);
    QString const errors = process.readAllStandardError();
    EXPECT_TRUE(QRegularExpression("\\Aoverlay-stamp: ended early, [1-3]?[0-9] of 40 frames are done\n\\z")
                    .match(errors)
                    .hasMatch())
        << errors.toStdString();
    for (QString const& name : names("out"))
        EXPECT_EQ(QImage("out/" + name).size(), QSize(900, 600)) << name.toStdString();
}

TEST_F(OverlayStamp, PutsPicturesWhereTheEntriesSayTheFirstOnTop)
{
    writePicture("red.png", Qt::red, {4, 4});
    writePicture("blue.png", Qt::blue, {8, 8});
    writeLabels(R"({"contentType": "image", "image": "blue.png", "size": 40, "visible": false},
                   {"contentType": "image", "image": "red.png", "size": 4, "offset": [3, 2]},
                   {"contentType": "image", "image": "blue.png", "size": 8},
                   {"contentType": "image", "image": "logo.png", "size": 2, "anchor": [1, 0], "offset": [-4, 3]})");
    QImage logo(3, 2, QImage::Format_RGB32);
    for (int i = 0; i < 6; ++i)
        logo.setPixel(i % 3, i / 3, qRgb(100 * (i % 3), 200 * (i / 3), 50));
    ASSERT_TRUE(logo.save("logo.png"));
    auto const expected = [](int scale, QImage const& scaledLogo) {
        QImage picture(60, 40, QImage::Format_RGB32);
        picture.fill(Qt::gray);
        QPainter painter(&picture);
        painter.fillRect(0, 40 - 8 * scale, 8 * scale, 8 * scale, Qt::blue);
        painter.fillRect(3 * scale, 40 - 6 * scale, 4 * scale, 4 * scale, Qt::red);
        painter.drawImage(60 - 7 * scale, 40 - 5 * scale, scaledLogo);
        return picture;
    };
    EXPECT_EQ(stamped(), expected(1, logo));
    QImage const scaled = stamped("frame.png", " --dpi-scale 2 --force");
    EXPECT_EQ(scaled, expected(2, scaled.copy(60 - 14, 40 - 10, 6, 4))) << "but for the logo, which is resampled";
}

/// What a dry run prints of the numbers of a sequence.
std::string sequenceLines(QString const& numbers)
{
    QString all;
    for (QString const& number : numbers.split(' '))
        all += "s." + number + ".png -> o." + number + ".png\n";
    return all.toStdString();
}

QByteArray read(QString const& name)
{
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

std::string const missing = "s.0009.png: can't read it: File not found\n";
std::string const left = "s.0007.png: left out, its output is there\ns.0009.png: left out, it is missing\n"
                         "2 of 3 frames are left out\n";
std::pair<QString, std::tuple<int, std::string, std::string>> const dryRuns[] = {
    {"s.####.png", {0, sequenceLines("-001 0007 0008 0010 10011"), ""}},
    {"s.%04d.png --frames 10-7,-1", {1, sequenceLines("0010 0008 0007 -001"), missing + "1 of 5 frames would fail\n"}},
    {"s.@@@@.png --frames=-1--3x5,7-11x3 --skip-missing", {0, sequenceLines("-001 0007 0010"), ""}},
    {"s.%04d.png --frames 7-9 --skip-missing --skip-existing", {0, left + sequenceLines("0008"), ""}},
};

TEST_F(OverlayStamp, TakesSequencesByTheirNumbersHoweverTheyAreCut)
{
    writeLabels(R"({"text": "{frame}", "size": 6})");
    for (QString const number : {"0007", "0008", "0010", "10011", "-001", "11"})
        writePicture("s." + number + ".png", Qt::gray, {60, 40});
    write("o.0007.png", "");
    QStringList const before = names();
    for (auto const& [arguments, outcome] : dryRuns)
        EXPECT_EQ(run("--overlays labels.json --dry-run --output o.####.png " + arguments), outcome);
    EXPECT_EQ(run("--overlays labels.json --dry-run --output %d.png s.@@.png"),
              Outcome(0, "s.11.png -> 11.png\ns.10011.png -> 10011.png\n", ""));
    EXPECT_EQ(names(), before);

    auto const stampTo = [this](QString const& folder, QString const& more) {
        return run("--overlays labels.json --quiet --output-dir " + folder + more + " s.####.png");
    };
    EXPECT_EQ(stampTo("whole", ""), Outcome(0, "", ""));
    EXPECT_EQ(stampTo("cut", " --frames 9,7,10 --jobs 1"), Outcome(1, "", missing + "1 of 3 frames failed\n"));
    EXPECT_EQ(stampTo("cut", " --frames=-1,7-8 --skip-existing"), Outcome(0, "", ""));
    EXPECT_EQ(run("--overlays labels.json --quiet --output cut/s.%04d.png s.10011.png"), Outcome(0, "", ""));
    ASSERT_EQ(names("cut").size(), 5);
    for (QString const& name : names("cut"))
        EXPECT_EQ(read("cut/" + name), read("whole/" + name)) << name.toStdString();
    EXPECT_NE(read("cut/s.0007.png"), read("cut/s.0008.png"));
    ASSERT_TRUE(QFile::rename("s.11.png", "s.7#.png"));
    EXPECT_EQ(run("--overlays labels.json --output-dir out s.7#.png"), Outcome(0, "s.7#.png -> out/s.7#.png\n", ""));
}

TEST(Timecode, KeepsUpWithTheClock)
{
    std::tuple<char const*, qint64, char const*> const rows[] = {
        {"24", 86399, "00:59:59:23"},    {"23.976", 86400, "01:00:00:00"}, {"25", -1, "23:59:59:24"},
        {"29.97", 1799, "00:00:59;29"},  {"29.97", 1800, "00:01:00;02"},   {"29.97", 17981, "00:09:59;29"},
        {"29.97", 17982, "00:10:00;00"}, {"29.97", 107892, "01:00:00;00"}, {"29.97", 2589407, "23:59:59;29"},
        {"59.94", 3599, "00:00:59;59"},  {"59.94", 3600, "00:01:00;04"},   {"59.94", 215784, "01:00:00;00"},
        {"119.88", 7200, "00:01:00;08"}, {"30", 107892, "00:59:56:12"},    {"120", 119, "00:00:00:119"},
    };
    for (auto const& [rate, frame, timecode] : rows)
    {
        auto const parsed = ztExamples::parseFrameRate(rate);
        EXPECT_EQ(ztExamples::toTimecode(frame, *parsed).toStdString(), timecode) << rate;
        EXPECT_EQ((*ztExamples::parseTimecode(timecode, *parsed) - frame) % 86400, 0) << rate << timecode;
    }
    for (char const* dropped : {"00:01:00;00", "00:01:00:01", "00:00:00;30", "24:00:00;00", "0:00:00;00"})
        EXPECT_FALSE(ztExamples::parseTimecode(dropped, {30, 2})) << dropped;
    EXPECT_FALSE(ztExamples::parseTimecode("00:00:00;00", {30, 0}));
}

std::pair<char const*, char const*> const expansions[] = {
    {"{{{file}}} {stem} {ext} {folder}", "{sh02.0017.v3.exr} sh02.0017.v3 exr seq"},
    {"{index:03}/{count} {width}x{height}", "002/10 640x480"},
    {"{frame} {frame:04} {frame+1000} {frame-10:05}", "3 0003 1003 -0007"},
    {"{date} {time} {date:%a %e.%m.%y %j} {time:%Hh%M}", "2026-01-04 09:05:07 Sun  4.01.26 004 09h05"},
    {"{meta:Camera} {meta:Lens|} {meta:Lens|a|b}", "A  a|b"},
    {"{meta:Camra}", "{meta:Camra}: the file has no such entry, did you mean {meta:Camera}?"},
    {"{set:Shot} {env:USER}", "{x} me"},
    {"{timecode}", "10:00:00:00"},
    {"{timecode+1}", "{timecode+1} needs --fps"},
    {"{time:%Q}", "{time:%Q}: expected a format of %a %A %b %B %d %e %F %G %H %I %j %m %M %p %R %S %T %u %V %y %Y %%, "
                  "as in {time:%H:%M:%S}"},
};

TEST(Placeholders, StandForWhatAFrameIs)
{
    ztExamples::RunValues run;
    run.now = QDateTime({2026, 1, 4}, {9, 5, 7});
    run.settings = {{"Shot", "{x}"}};
    run.environment = {{"USER", "me"}};
    ztExamples::Placeholders frame{"/a/seq/sh02.0017.v3.exr", 2, 10, {{640, 480}, {{"Camera", "A"}}}, {}};
    frame.info.metadata["smpte:TimeCode"] = "10:00:00:00";
    auto const expanded = [&](char const* text) -> std::string {
        try
        {
            return expand(ztExamples::parseTemplate(text, run), frame).toStdString();
        }
        catch (std::runtime_error const& error)
        {
            return error.what();
        }
    };
    for (auto const& [text, result] : expansions)
        EXPECT_EQ(expanded(text), result);
    run.rate = ztExamples::parseFrameRate("24");
    run.start = 86400;
    frame.frame = 1003;
    EXPECT_EQ(expanded("{frame} {timecode} {timecode-1001}"), "1003 01:00:41:19 01:00:00:02");
    frame = {"a.exr"};
    EXPECT_EQ(expanded("{timecode}"), "{timecode} needs a number in the file's name");
    EXPECT_EQ(expanded("{width}"), "the frame's size isn't known");
}

TEST_F(OverlayStamp, ReplacesPlaceholdersInEachFrame)
{
    ASSERT_TRUE(QDir().mkdir("sub"));
    writePicture("frame.png", Qt::gray, {600, 20});
    QImage second("frame.png");
    second.setText("Lens", "35 mm");
    ASSERT_TRUE(second.save("sub/b.17.png"));
    _environment.insert("SOURCE_DATE_EPOCH", "86400");
    _environment.insert("ZT_A", "7");
    QByteArray const texts[] = {"{file} {index}/{count} {width} {date} {set:S} {env:ZT_A} {meta:Lens|none} {}",
                                "frame.png 1/2 600 1970-01-02 s=s 7 none {}",
                                "b.17.png 2/2 600 1970-01-02 s=s 7 35 mm {}", "{file} {timecode}",
                                "b.17.png 01:00:00:17"};
    for (int i = 0; i < 5; ++i)
    {
        writeLabels(R"({"font": "DejaVu Sans", "size": 6, "text": ")" + QByteArray(texts[i]).replace(" {}", " {{}}") +
                    "\"}");
        EXPECT_EQ(std::get<2>(run(QString("--overlays labels.json --set S=s=s --allow-env ZT_A --fps 24 "
                                          "--start 01:00:00:00 --output-dir %1 --quiet frame.png sub/b.17.png")
                                      .arg(i))),
                  i != 3 ? ""
                         : "frame.png: labels.json: overlays[0].text: {timecode} needs a number in the file's name\n"
                           "1 of 2 frames failed\n");
    }
    EXPECT_EQ(QImage("0/frame.png"), QImage("1/frame.png"));
    EXPECT_EQ(QImage("0/b.17.png"), QImage("2/b.17.png"));
    EXPECT_EQ(QImage("3/b.17.png"), QImage("4/b.17.png"));
    EXPECT_NE(QImage("0/frame.png"), QImage("0/b.17.png"));
    EXPECT_NE(QImage("1/b.17.png"), QImage("2/b.17.png"));
}

TEST_F(OverlayStamp, TakesThePictureThatAPathNamesForEachFrame)
{
    ASSERT_TRUE(QDir().mkdir("p"));
    for (QString const name : {"a.1.png", "a.2.png", "a.3.png"})
        writePicture(name, Qt::gray, {8, 8});
    writePicture("p/1x8.png", Qt::red, {8, 8});
    writePicture("p/3x8.png", Qt::blue, {4, 4});
    writeLabels(R"({"contentType": "image", "image": "p/{frame}x{width}.png", "size": 8})");
    EXPECT_EQ(run("--overlays labels.json --jobs 1 --quiet --output b.#.png a.#.png"),
              Outcome(1, "",
                      "a.2.png: labels.json: overlays[0].image: can't read \"p/2x8.png\": File not found\n"
                      "1 of 3 frames failed\n"));
    EXPECT_EQ(QImage("b.1.png").pixelColor(4, 4), QColor(Qt::red));
    EXPECT_EQ(QImage("b.3.png").pixelColor(4, 4), QColor(Qt::blue));
    auto const [exitCode, output, errors] = run("--overlays labels.json --max-pixels 60 --output c.png a.1.png");
    EXPECT_EQ(exitCode, 1);
    writeLabels(R"({"contentType": "image", "image": "{set:P}/1x{frame}.png", "size": 8})");
    expectComplaint(
        "--overlays labels.json --set P=p --output p/1x8.png a.#.png --frames 8",
        "overlay-stamp: \"p/1x8.png\" is a picture of the overlay file, which only --force replaces (see --help)");
}

std::pair<char const*, QString> const texts[] = {{"Camera", "north"},
                                                 {"Lens", "Größe"},
                                                 {"Place", QString("北 ").repeated(30)},
                                                 {"Notes", QString("IDAT ").repeated(30)}};

TEST_F(OverlayStamp, KeepsAlphaAndMetadata)
{
    // Every colour of a coarse grid with every alpha of one, 0 too.
    QImage frame(64, 64, QImage::Format_ARGB32);
    for (int i = 0; i < 64 * 64; ++i)
        frame.setPixel(i % 64, i / 64, qRgba(i * 37 % 256, i * 101 % 256, i * 11 % 256, i / 64 * 4));
    frame.setDotsPerMeterX(5000);
    frame.setDotsPerMeterY(6000);
    for (auto const& [key, text] : texts)
        frame.setText(key, text);
    frame.setColorSpace(QColorSpace::DisplayP3);
    ASSERT_TRUE(frame.save("frame.png"));
    writePicture("red.png", Qt::red, {8, 8});
    writeLabels(R"({"contentType": "image", "image": "red.png", "size": 8, "anchor": [0, 1]})");
    QImage expected("frame.png");
    QPainter(&expected).fillRect(0, 0, 8, 8, Qt::red);

    EXPECT_EQ(stamped(), expected);
    for (QString const output : {"out.png", "out.jpg"})
    {
        QImage const result = stamped(output);
        EXPECT_NEAR(result.dotsPerMeterX(), 5000, 5) << output.toStdString();
        EXPECT_NEAR(result.dotsPerMeterY(), 6000, 5) << output.toStdString();
        EXPECT_EQ(result.colorSpace(), expected.colorSpace()) << output.toStdString();
        for (auto const& [key, text] : texts)
            EXPECT_EQ(result.text(key).toStdString(), text.toStdString()) << output.toStdString();
    }

    frame.fill(QColor(200, 100, 50, 51));
    ASSERT_TRUE(frame.save("frame.png"));
    EXPECT_EQ(stamped("out.bmp").pixelColor(59, 59), QColor(40, 20, 10)) << "over black in a format without alpha";
    EXPECT_NEAR(stamped("out.JPG").pixelColor(59, 59).red(), 40, 3);
}

TEST_F(OverlayStamp, ReadsAPipe)
{
    writeLabels("");
    writePicture("frame.png", Qt::darkCyan, {30, 20});
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    QProcess writer;
    writer.start("sh", {"-c", "cat frame.png >pipe"});
    EXPECT_EQ(run("--overlays labels.json --quiet --output out.png pipe"), Outcome(0, "", ""));
    EXPECT_TRUE(writer.waitForFinished());
    EXPECT_EQ(QImage("out.png"), QImage("frame.png"));
}

TEST_F(OverlayStamp, KeepsPixelsOfEveryKindWhateverTheCompression)
{
    writeLabels("");
    for (QSize const size : {QSize(1, 1), QSize(3, 200), QSize(200, 70)})
        for (auto const format : {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_Grayscale8,
                                  QImage::Format_Indexed8, QImage::Format_Mono})
        {
            // Takes every filter.
            QImage frame(size, QImage::Format_ARGB32);
            for (int y = 0; y < size.height(); ++y)
                for (int x = 0; x < size.width(); ++x)
                    frame.setPixel(x, y, qRgba(x * x / 9 * y, y / 7 % 2 * x * 91, y / 5 * x, 255 - x * y % 256));
            ASSERT_TRUE(frame.convertToFormat(format).save("frame.png"));
            qint64 bytes = std::numeric_limits<qint64>::max();
            for (char const* compression : {"0", "1", "9"})
            {
                QImage const result = stamped("out.png", QString(" --compression ") + compression);
                EXPECT_EQ(result, QImage("frame.png").convertToFormat(result.format())) << format;
                EXPECT_LE(QFileInfo("out.png").size(), bytes) << compression;
                bytes = QFileInfo("out.png").size();
            }
        }
    EXPECT_EQ(stamped("out.jpg", " --compression 0"), stamped("out.jpg", " --compression 9"));
}

QByteArray jpeg(QImage const& picture, QImageIOHandler::Transformation transformation)
{
    QBuffer file;
    QImageWriter writer(&file, "jpg");
    writer.setTransformation(transformation);
    EXPECT_TRUE(writer.write(picture));
    return file.data();
}

TEST_F(OverlayStamp, ReadsJpegFilesOfEveryKindAsQtDoes)
{
    writeLabels("");
    QImage frame(50, 30, QImage::Format_RGB32);
    for (int i = 0; i < 50 * 30; ++i)
        frame.setPixel(i % 50, i / 50, qRgb(i % 50 * 5, i / 50 * 8, i * 7 % 256));
    frame.setDotsPerMeterX(4000);
    frame.setText("Camera", "north");
    frame.setColorSpace(QColorSpace::DisplayP3);
    QByteArray const plain = jpeg(frame, QImageIOHandler::TransformationNone);
    QByteArray late = plain;
    late.insert(plain.indexOf("\xff\xc0"), QByteArray("\xff\xfe\0\x0cLens: long", 14));
    std::pair<char const*, QByteArray> const files[] = {
        {"plain", plain},
        {"turned", jpeg(frame, QImageIOHandler::TransformationRotate90)},
        {"gray", jpeg(frame.convertToFormat(QImage::Format_Grayscale8), QImageIOHandler::TransformationNone)},
        {"a comment behind the tables", late},
    };
    for (auto const& [name, bytes] : files)
    {
        write("frame.png", bytes);
        QImageReader reader("frame.png");
        reader.setAutoTransform(true);
        reader.setDecideFormatFromContent(true);
        QImage const expected = reader.read().convertToFormat(QImage::Format_RGB32);
        QImage const result = stamped();
        EXPECT_EQ(result, expected) << name;
        EXPECT_EQ(result.dotsPerMeterX(), expected.dotsPerMeterX()) << name;
        EXPECT_EQ(result.colorSpace(), expected.colorSpace()) << name;
        EXPECT_EQ(result.textKeys(), expected.textKeys()) << name;
    }
}

/// Gray with rectangles in the colour that the corner of the first one has in a picture.
QImage withRectangles(QImage picture, std::vector<QRect> const& rectangles)
{
    QColor const color = rectangles.empty() ? Qt::gray : picture.pixelColor(rectangles.front().topLeft());
    picture.fill(Qt::gray);
    for (QRect const& rectangle : rectangles)
        QPainter(&picture).fillRect(rectangle, color);
    return picture;
}

TEST_F(OverlayStamp, DrawsGuidesInWholePixelsForEachFrame)
{
    std::tuple<QByteArray, QSize, std::vector<QRect>> const rows[] = {
        {R"("letterbox","aspect":2)", {60, 40}, {{0, 0, 60, 5}, {0, 35, 60, 5}}},
        {R"("letterbox","aspect":1)", {61, 40}, {{0, 0, 10, 40}, {50, 0, 11, 40}}},
        {R"("letterbox","aspect":1.5)", {60, 40}, {}},
        {R"("safe","fractions":[0.5])", {60, 40}, {{15, 10, 30, 1}, {15, 29, 30, 1}, {15, 10, 1, 20}, {44, 10, 1, 20}}},
        {R"("grid","lineWidth":2)", {60, 41}, {{19, 0, 2, 41}, {39, 0, 2, 41}, {0, 13, 60, 2}, {0, 26, 60, 2}}},
        {R"("grid","rows":1,"columns":2)", {60, 40}, {{30, 0, 1, 40}}},
        {R"("grid","rows":100,"columns":100)", {60, 40}, {{0, 0, 60, 40}}},
        {R"("cross","length":0.5)", {61, 41}, {{20, 20, 21, 1}, {30, 10, 1, 21}}},
        {R"("bar","rectangle":[0.25,0,0.5,0.1])", {60, 40}, {{15, 36, 30, 4}}},
    };
    for (auto const& [keys, frame, expected] : rows)
    {
        writePicture("frame.png", Qt::gray, frame);
        writeLabels(R"({"contentType":"guide","color":[1,0,0,0.4],"guide":)" + keys + "}");
        QImage const shown = stamped();
        EXPECT_EQ(shown, withRectangles(shown, expected)) << keys.data();
        EXPECT_EQ(shown == withRectangles(shown, {}), expected.empty()) << keys.data();
    }
}

TEST_F(OverlayStamp, PadsATextAsItsAnchorSays)
{
    // A rectangle of one colour: spaces before a background.
    auto const areaOf = [this](QByteArray const& keys, double scale) {
        writeLabels(R"({"font":"DejaVu Sans","backgroundTransparency":0.5,"text":"   \n  ",)" + keys + "}");
        QImage const shown = stamped("out.png", QString(" --dpi-scale %1").arg(scale));
        QRect area;
        for (int i = 0; i < 120 * 80; ++i)
            if (shown.pixelColor(i % 120, i / 120) != QColor(Qt::gray))
                area |= QRect(i % 120, i / 120, 1, 1);
        EXPECT_EQ(shown, withRectangles(shown, {area}));
        return area;
    };
    writePicture("frame.png", Qt::gray, {120, 80});
    for (QByteArray const size : {R"("size":8)", R"("size":0.3,"sizeMode":"relative")"})
        for (double const scale : {1.0, 1.25, 2.0})
        {
            QSize const around(int(std::ceil(6 * scale)), int(std::ceil(2 * scale)));
            QRect const right = areaOf(size + R"(,"padding":[6,2],"anchor":[1,1])", scale);
            EXPECT_EQ(right.size(), areaOf(size, scale).size() + 2 * around) << size.data() << scale;
            EXPECT_EQ(right.topRight(), QPoint(119, 0)) << size.data() << scale;
            EXPECT_EQ(areaOf(size + R"(,"padding":[6,2])", scale).bottomLeft(), QPoint(0, 79)) << size.data() << scale;
        }
}

TEST_F(OverlayStamp, ShowsShadowsBeneathTextsAtEveryEdge)
{
    QByteArray const text = R"({"font":"DejaVu Sans","size":14,"text":"Tag\nj")", red = R"(,"textColor":[1,0,0,1])";
    for (QPoint const shift : {QPoint(3, 2), {-3, -4}, {50, 0}, {-70, 0}})
    {
        auto const at = [](int x, int y) { return QString(R"(,"offset":[%1,%2])").arg(x).arg(y).toUtf8(); };
        writePicture("frame.png", Qt::gray, {150, 80});
        writeLabels(text + at(80, 20) + "}," + text + at(80 + shift.x(), 20 + shift.y()) + red + "}");
        QImage const expected = stamped().copy(80, 0, 70, 60);
        writePicture("frame.png", Qt::gray, {70, 60});
        writeLabels(text + R"(,"shadow":{"color":[1,0,0,1])" + at(shift.x(), shift.y()) + "}}");
        EXPECT_LE(difference(stamped(), expected), 1) << shift.x();
    }
}

TEST_F(OverlayStamp, DrawsShapesAtTheSizeThatTheyAreShownAt)
{
    if (!QImageReader::supportedImageFormats().contains("svg"))
        GTEST_SKIP() << "Qt's SVG plugin isn't there";
    write("bar.svg", R"(<svg width="4" height="2"><rect width="2" height="2"/></svg>)");
    for (int const height : {2, 20, 25})
    {
        QRect const area(60 - 2 * height, 40 - height, height, height);
        writeLabels(R"({"contentType":"image","image":"bar.svg","anchor":[1,0],"sizeMode":"relative","size":)" +
                    QByteArray::number((height + 0.1) / 40) + "}");
        QImage const shown = stamped();
        EXPECT_EQ(shown, withRectangles(shown, {area})) << height;
        EXPECT_EQ(shown.pixelColor(area.center()), QColor(Qt::black)) << height;
    }
    write("bar.svg", R"(<svg><g><image xlink:href="bar.svg"/></g></svg>)");
    expectComplaint("--overlays labels.json --output a.png frame.png",
                    R"(labels.json: overlays[0].image: can't read "bar.svg": It has a picture inside)");
}

TEST_F(OverlayStamp, SaysWhatAFileHoldsAndTakesFontsOfItsOwn)
{
    QByteArray const font = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
    write("labels.json",
          R"({"fontFiles":[")" + font + R"("],"overlays":[{"text":"a{{","name":"tag","font":"DejaVu Sans","padding":2},
              {"contentType":"guide","guide":"cross","visible":false}]})");
    write("fonts.conf", "<fontconfig/>");
    _environment.insert("FONTCONFIG_FILE", "fonts.conf");
    std::string const text = R"(labels.json: overlays[0] "tag": text "a{{" in "DejaVu Sans", 12 points)";
    std::string const guide = "labels.json: overlays[1]: guide \"cross\", hidden\n";
    EXPECT_EQ(run("--check labels.json"), Outcome(0, text + ", anchor [0, 0], padding [2, 2]\n" + guide, ""));
    EXPECT_EQ(std::get<0>(run("--check labels.json labels.json")), 2) << "takes no images";
}

} // namespace
