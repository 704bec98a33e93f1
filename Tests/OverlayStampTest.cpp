// overlay-stamp, run as its users run it.

#include <gtest/gtest.h>

#include <QColorSpace>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace
{

struct Outcome
{
    int exitCode;
    std::string output;
    std::string errors;
};

/// A folder to work in, with labels.json and pictures of one colour.
class OverlayStamp : public testing::Test
{
  protected:
    OverlayStamp()
    {
        writeLabels(R"({"text": "{file}", "size": 6})");
        writePicture("frame.png", Qt::gray);
    }

    QString path(QString const& name) const { return _folder.filePath(name); }

    void writeFile(QString const& name, QByteArray const& bytes) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    void writeLabels(QByteArray const& entries) const { writeFile("labels.json", "{\"overlays\":[" + entries + "]}"); }

    void writePicture(QString const& name, QColor const& color, QSize const& size = {60, 40}) const
    {
        QImage picture(size, QImage::Format_RGB32);
        picture.fill(color);
        ASSERT_TRUE(picture.save(path(name)));
    }

    QByteArray bytes(QString const& name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QStringList names(QString const& folder = ".") const
    {
        return QDir(path(folder)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    Outcome run(QStringList const& arguments, QString const& folder = ".") const
    {
        QProcess process;
        process.setWorkingDirectory(path(folder));
        process.start(OVERLAY_STAMP, arguments);
        EXPECT_TRUE(process.waitForFinished(60000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }

    /// Stamps frame.png with the labels.
    QImage stamped(QStringList const& more = {}, QString const& output = "out.png") const
    {
        Outcome const outcome = run(QStringList{"--overlays", "labels.json", "--output", output, "frame.png"} + more);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        return QImage(path(output));
    }

    QTemporaryDir _folder;
};

struct UsageCase
{
    char const* name;
    char const* arguments;
    char const* complaint;
};

void PrintTo(UsageCase const& row, std::ostream* stream)
{
    *stream << row.name;
}

class WrongUsage : public OverlayStamp, public testing::WithParamInterface<UsageCase>
{
};

TEST_P(WrongUsage, IsOneLineAndLeavesNoTrace)
{
    writeFile("wrong.json", R"({"overlays":[{"text":"a"},{"text":"a","anchor":"top"}]})");
    ASSERT_TRUE(QDir(path(".")).mkdir("sub"));
    writePicture("sub/frame.png", Qt::red);
    ASSERT_TRUE(QFile::link("frame.png", path("link.png")));
    QStringList const before = names();
    QByteArray const frame = bytes("frame.png");

    Outcome const outcome = run(QString(GetParam().arguments).split(' '));
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, GetParam().complaint + std::string("\n"));
    EXPECT_EQ(names(), before);
    EXPECT_EQ(bytes("frame.png"), frame);
}

UsageCase const wrongUsages[] = {
    {"UnknownOption", "--overlay labels.json", "overlay-stamp: Unknown option 'overlay' (see --help)"},
    {"NoValue", "frame.png --output", "overlay-stamp: Missing value after '--output' (see --help)"},
    {"NoOverlays", "--output out.png frame.png", "overlay-stamp: --overlays is needed (see --help)"},
    {"NoInput", "--overlays labels.json --output out.png", "overlay-stamp: no input is given (see --help)"},
    {"NoOutput", "--overlays labels.json frame.png",
     "overlay-stamp: one of --output and --output-dir is needed (see --help)"},
    {"BothOutputs", "--overlays labels.json --output out.png --output-dir out frame.png",
     "overlay-stamp: one of --output and --output-dir is needed (see --help)"},
    {"OutputTwice", "--overlays labels.json --output a.png --output b.png frame.png",
     "overlay-stamp: --output is given twice (see --help)"},
    {"OneOutputForTwo", "--overlays labels.json --output out.png frame.png sub/frame.png",
     "overlay-stamp: --output takes one input; --output-dir takes several (see --help)"},
    {"SameNames", "--overlays labels.json --output-dir out frame.png sub/frame.png",
     "overlay-stamp: two inputs would be written to \"out/frame.png\" (see --help)"},
    {"OverItself", "--overlays labels.json --output sub/../frame.png frame.png",
     "overlay-stamp: \"sub/../frame.png\" is an input, which only --force replaces (see --help)"},
    {"OverLinkedInput", "--overlays labels.json --output frame.png link.png",
     "overlay-stamp: \"frame.png\" is an input, which only --force replaces (see --help)"},
    {"OverOtherInput", "--overlays labels.json --output-dir . link.png sub/frame.png",
     "overlay-stamp: \"./link.png\" is an input, which only --force replaces (see --help)"},
    {"DpiScaleOfZero", "--overlays labels.json --output out.png --dpi-scale 0 frame.png",
     "overlay-stamp: --dpi-scale: expected a number above 0, got \"0\" (see --help)"},
    {"DpiScaleNan", "--overlays labels.json --output out.png --dpi-scale nan frame.png",
     "overlay-stamp: --dpi-scale: expected a number above 0, got \"nan\" (see --help)"},
    {"HalfAJob", "--overlays labels.json --output out.png --jobs 0.5 frame.png",
     "overlay-stamp: --jobs: expected a whole number from 1 to 256, got \"0.5\" (see --help)"},
    {"NoJobs", "--overlays labels.json --output out.png --jobs 0 frame.png",
     "overlay-stamp: --jobs: expected a whole number from 1 to 256, got \"0\" (see --help)"},
    {"OutputDirIsFile", "--overlays labels.json --output-dir labels.json frame.png",
     "overlay-stamp: can't make the folder \"labels.json\""},
    {"NoSuchFile", "--overlays no.json --output out.png frame.png",
     "no.json: can't read it: No such file or directory"},
    {"WrongFile", "--overlays wrong.json --output-dir out frame.png",
     "wrong.json: overlays[1].anchor: expected two numbers, got \"top\""},
};

INSTANTIATE_TEST_SUITE_P(All, WrongUsage, testing::ValuesIn(wrongUsages),
                         [](auto const& row) { return row.param.name; });

TEST_F(OverlayStamp, RefusesAFormatThatItCantWrite)
{
    Outcome const outcome = run({"--overlays", "labels.json", "--output", "out.gif", "frame.png"});
    EXPECT_EQ(outcome.exitCode, 2);
    std::string const complaint = "overlay-stamp: --output: can't write the format of \"out.gif\", only ";
    EXPECT_EQ(outcome.errors.substr(0, complaint.size()), complaint);
    EXPECT_EQ(names(), (QStringList{"frame.png", "labels.json"}));
}

TEST_F(OverlayStamp, DoesTheOtherFramesAndCountsFailures)
{
    writePicture("good.png", Qt::white);
    writePicture("last.jpg", Qt::white);
    writePicture("taken.png", Qt::white);
    writeFile("empty.png", "");
    writeFile("huge.ppm", "P6 100000 100000 255\n");
    QByteArray const whole = bytes("good.png");
    writeFile("cut.png", whole.left(whole.size() / 2));
    QFile::copy(path("good.png"), path("good.gif"));
    ASSERT_TRUE(QDir(path(".")).mkpath("out/taken.png"));

    Outcome const outcome = run({"--overlays", "labels.json", "--output-dir", "out", "good.png", "no.png", "empty.png",
                                 "huge.ppm", "cut.png", "good.gif", "taken.png", ".", "last.jpg"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "good.png -> out/good.png\nlast.jpg -> out/last.jpg\n");
    // Libraries that decode may add lines of their own.
    QStringList const own =
        QString::fromStdString(outcome.errors).split('\n').filter(QRegularExpression(": can't |failed$"));
    EXPECT_EQ(own.join('\n').toStdString(), "no.png: can't read it: File not found\n"
                                            "empty.png: can't read it: Unsupported image format\n"
                                            "huge.ppm: can't read it: Unable to read image data\n"
                                            "cut.png: can't read it: Unable to read image data\n"
                                            "good.gif: can't write \"out/good.gif\": Unsupported image format\n"
                                            "taken.png: can't write \"out/taken.png\": Filename refers to a directory\n"
                                            ".: can't read it: Is a directory\n"
                                            "7 of 9 frames failed");
    EXPECT_EQ(names("out"), (QStringList{"good.png", "last.jpg", "taken.png"}));
}

TEST_F(OverlayStamp, ReplacesAnInputWithForce)
{
    QImage const before(path("frame.png"));
    QImage const after = stamped({"--force"}, "frame.png");
    EXPECT_EQ(after.size(), before.size());
    EXPECT_NE(after, before);
    EXPECT_EQ(names(), (QStringList{"frame.png", "labels.json"}));
}

TEST_F(OverlayStamp, PutsAPictureWhereAnchorAndOffsetSay)
{
    writeLabels(R"({"contentType": "image", "image": "logo.png", "size": 2, "anchor": [1, 0], "offset": [-4, 3]})");
    QImage logo(3, 2, QImage::Format_RGB32);
    QImage expected(path("frame.png"));
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
        {
            QRgb const color = qRgb(100 * x, 200 * y, 50);
            logo.setPixel(x, y, color);
            expected.setPixel(60 - 3 - 4 + x, 40 - 3 - 2 + y, color);
        }
    ASSERT_TRUE(logo.save(path("logo.png")));

    QImage const result = stamped();
    EXPECT_EQ(result.convertToFormat(QImage::Format_RGB32), expected);
    EXPECT_FALSE(result.hasAlphaChannel());
}

TEST_F(OverlayStamp, ScalesOffsetsAndSizes)
{
    writeLabels(R"({"contentType": "image", "image": "red.png", "size": 4, "offset": [3, 2]})");
    writePicture("red.png", Qt::red, {4, 4});
    QImage const result = stamped({"--dpi-scale", "2.5"});
    QImage expected(60, 40, QImage::Format_RGB32);
    expected.fill(Qt::gray);
    for (int y = 40 - 5 - 10; y < 40 - 5; ++y)
        for (int x = 7; x < 17; ++x)
            expected.setPixelColor(x, y, Qt::red);
    EXPECT_EQ(result.convertToFormat(QImage::Format_RGB32), expected);
}

TEST_F(OverlayStamp, HasTheFirstVisibleEntryOnTop)
{
    writePicture("red.png", Qt::red, {4, 4});
    writePicture("blue.png", Qt::blue, {8, 8});
    writeLabels(R"({"contentType": "image", "image": "blue.png", "size": 40, "visible": false},
                   {"contentType": "image", "image": "red.png", "size": 4},
                   {"contentType": "image", "image": "blue.png", "size": 8})");
    QImage const result = stamped();
    EXPECT_EQ(result.pixelColor(1, 38), QColor(Qt::red));
    EXPECT_EQ(result.pixelColor(6, 38), QColor(Qt::blue));
    EXPECT_EQ(result.pixelColor(9, 38), QColor(Qt::gray));
}

TEST_F(OverlayStamp, ReplacesPlaceholdersInEachFrame)
{
    QStringList const labels = {R"({"text": "{file} {index}/{count} {{}}", "size": 5})",
                                R"({"text": "frame.png 1/2 {{}}", "size": 5})",
                                R"({"text": "b.png 2/2 {{}}", "size": 5})"};
    ASSERT_TRUE(QDir(path(".")).mkdir("sub"));
    writePicture("sub/b.png", Qt::gray);
    for (int i = 0; i < labels.size(); ++i)
    {
        writeLabels(labels[i].toUtf8());
        EXPECT_EQ(
            run({"--overlays", "labels.json", "--output-dir", QString::number(i), "frame.png", "sub/b.png"}).exitCode,
            0);
    }
    EXPECT_EQ(bytes("0/frame.png"), bytes("1/frame.png"));
    EXPECT_EQ(bytes("0/b.png"), bytes("2/b.png"));
    EXPECT_NE(bytes("0/frame.png"), bytes("0/b.png"));
    EXPECT_NE(QImage(path("0/frame.png")), QImage(path("frame.png")));
}

/// Every colour of a coarse grid with every alpha of one, 0 too.
QImage translucentPicture()
{
    QImage picture(64, 64, QImage::Format_ARGB32);
    for (int i = 0; i < 64 * 64; ++i)
        picture.setPixel(i % 64, i / 64, qRgba(i * 37 % 256, i * 101 % 256, i * 11 % 256, i / 64 * 4));
    picture.setDotsPerMeterX(5000);
    picture.setText("Camera", "north");
    picture.setColorSpace(QColorSpace::DisplayP3);
    return picture;
}

TEST_F(OverlayStamp, KeepsAlphaAndMetadata)
{
    QImage const frame = translucentPicture();
    ASSERT_TRUE(frame.save(path("frame.png")));
    writePicture("red.png", Qt::red, {8, 8});
    writeLabels(R"({"contentType": "image", "image": "red.png", "size": 8, "anchor": [0, 1]})");
    QImage expected = QImage(path("frame.png")).convertToFormat(QImage::Format_ARGB32);
    for (int i = 0; i < 64; ++i)
        expected.setPixelColor(i % 8, i / 8, Qt::red);

    QImage const result = stamped();
    EXPECT_EQ(result.convertToFormat(QImage::Format_ARGB32), expected);
    EXPECT_TRUE(result.hasAlphaChannel());
    EXPECT_EQ(result.dotsPerMeterX(), 5000);
    EXPECT_EQ(result.text("Camera"), "north");
    EXPECT_EQ(result.colorSpace(), expected.colorSpace());
}

TEST_F(OverlayStamp, ShowsAlphaOverBlackWhereTheFormatHasNone)
{
    QImage frame(60, 40, QImage::Format_ARGB32);
    frame.fill(QColor(200, 100, 50, 51));
    ASSERT_TRUE(frame.save(path("frame.png")));
    EXPECT_EQ(stamped({}, "out.bmp").pixelColor(59, 0), QColor(40, 20, 10));
    QColor const inJpeg = stamped({}, "out.JPG").pixelColor(59, 0);
    EXPECT_NEAR(inJpeg.red(), 40, 3);
}

TEST_F(OverlayStamp, GivesTheSameWhateverTheJobs)
{
    QStringList inputs;
    for (int i = 0; i < 20; ++i)
    {
        QString const name = QString("f%1.png").arg(i);
        inputs << "../" + name;
        writePicture(name, QColor(10 * i, 0, 0), {60 + 40 * (i % 3), 40});
    }
    QFile::remove(path("f7.png"));
    std::vector<Outcome> outcomes;
    for (QString const jobs : {"1", "4"})
    {
        ASSERT_TRUE(QDir(path(".")).mkdir(jobs));
        QStringList const options = {"--overlays", "../labels.json", "--output-dir", "out", "--jobs", jobs};
        outcomes.push_back(run(options + inputs, jobs));
    }
    EXPECT_EQ(outcomes[0].exitCode, 1);
    EXPECT_EQ(outcomes[0].output.substr(0, 21), "../f0.png -> out/f0.p");
    EXPECT_EQ(outcomes[0].errors, "../f7.png: can't read it: File not found\n1 of 20 frames failed\n");
    EXPECT_EQ(outcomes[0].output, outcomes[1].output);
    EXPECT_EQ(outcomes[0].errors, outcomes[1].errors);
    EXPECT_EQ(names("1/out").size(), 19);
    EXPECT_EQ(names("1/out"), names("4/out"));
    for (QString const& name : names("1/out"))
        EXPECT_EQ(bytes("1/out/" + name), bytes("4/out/" + name)) << name.toStdString();
}

TEST_F(OverlayStamp, SaysWhatItIsAskedFor)
{
    EXPECT_EQ(run({"--version"}).output.substr(0, 16), "overlay-stamp 1.");
    EXPECT_EQ(run({"--overlays", "labels.json", "--output", "out.png", "--quiet", "frame.png"}).output, "");
    std::string const help = run({"--help"}).output;
    for (char const* word :
         {"contentType", "text", "font", "textColor", "backgroundColor", "backgroundTransparency", "sizeMode", "size",
          "anchor", "offset", "image", "name", "visible", "{file}", "{index}", "{count}", "Exit codes"})
        EXPECT_NE(help.find(word), std::string::npos) << word;
}

} // namespace
