// overlay-stamp, run as its users run it.

#include <gtest/gtest.h>

#include <QColorSpace>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace
{

struct Outcome
{
    int exitCode;
    std::string output, errors;
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

TEST_F(OverlayStamp, SaysInOneLineWhatIsWrongAndLeavesNoTrace)
{
    writeFile("wrong.json", R"({"overlays":[{"text":"a"},{"text":"a","anchor":"top"}]})");
    ASSERT_TRUE(QDir(path(".")).mkdir("sub"));
    writePicture("sub/frame.png", Qt::red);
    ASSERT_TRUE(QFile::link("frame.png", path("link.png")));
    QStringList const before = names();
    QByteArray const frame = bytes("frame.png");
    auto const complaintOf = [&](QString const& arguments) {
        // LABELS and OUT stand for options that are right.
        QString const whole =
            QString(arguments).replace("LABELS", "--overlays labels.json").replace("OUT", "--output a.png");
        Outcome const outcome = run(whole.split(' '));
        EXPECT_EQ(outcome.exitCode, 2) << whole.toStdString();
        EXPECT_EQ(outcome.output, "") << whole.toStdString();
        EXPECT_EQ(names(), before) << whole.toStdString();
        EXPECT_EQ(bytes("frame.png"), frame) << whole.toStdString();
        return outcome.errors;
    };
    std::pair<char const*, std::string> const usageRows[] = {
        {"--overlay labels.json", "Unknown option 'overlay'"},
        {"frame.png --output", "Missing value after '--output'"},
        {"OUT frame.png", "--overlays is needed"},
        {"LABELS OUT", "no input is given"},
        {"LABELS frame.png", "one of --output and --output-dir is needed"},
        {"LABELS OUT --output-dir out frame.png", "one of --output and --output-dir is needed"},
        {"LABELS OUT --output b.png frame.png", "--output is given twice"},
        {"LABELS OUT frame.png sub/frame.png", "--output takes one input; --output-dir takes several"},
        {"LABELS --output-dir out frame.png sub/frame.png", "two inputs would be written to \"out/frame.png\""},
        {"LABELS --output sub/../frame.png frame.png", "\"sub/../frame.png\" is an input, which only --force replaces"},
        {"LABELS --output frame.png link.png", "\"frame.png\" is an input, which only --force replaces"},
        {"LABELS --output-dir . link.png sub/frame.png", "\"./link.png\" is an input, which only --force replaces"},
        {"LABELS OUT --dpi-scale 0 frame.png", "--dpi-scale: expected a number above 0, got \"0\""},
        {"LABELS OUT --dpi-scale nan frame.png", "--dpi-scale: expected a number above 0, got \"nan\""},
        {"LABELS OUT --jobs 0.5 frame.png", "--jobs: expected a whole number from 1 to 256, got \"0.5\""},
        {"LABELS OUT --jobs 0 frame.png", "--jobs: expected a whole number from 1 to 256, got \"0\""},
    };
    for (auto const& [arguments, complaint] : usageRows)
        EXPECT_EQ(complaintOf(arguments), "overlay-stamp: " + complaint + " (see --help)\n");
    std::pair<char const*, char const*> const inputRows[] = {
        {"LABELS --output-dir labels.json frame.png", "overlay-stamp: can't make the folder \"labels.json\"\n"},
        {"--overlays no.json OUT frame.png", "no.json: can't read it: No such file or directory\n"},
        {"--overlays wrong.json OUT frame.png", "wrong.json: overlays[1].anchor: expected two numbers, got \"top\"\n"},
    };
    for (auto const& [arguments, complaint] : inputRows)
        EXPECT_EQ(complaintOf(arguments), complaint);
    std::string const format = "overlay-stamp: --output: can't write the format of \"out.gif\", only ";
    EXPECT_EQ(complaintOf("LABELS --output out.gif frame.png").substr(0, format.size()), format);
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
    ASSERT_TRUE(logo.save(path("logo.png")));
    auto const expected = [&](int scale, QImage const& scaledLogo) {
        QImage picture(60, 40, QImage::Format_RGB32);
        picture.fill(Qt::gray);
        QPainter painter(&picture);
        painter.fillRect(0, 40 - 8 * scale, 8 * scale, 8 * scale, Qt::blue);
        painter.fillRect(3 * scale, 40 - 6 * scale, 4 * scale, 4 * scale, Qt::red);
        painter.drawImage(60 - 7 * scale, 40 - 5 * scale, scaledLogo);
        return picture;
    };
    QImage const result = stamped();
    EXPECT_EQ(result.convertToFormat(QImage::Format_RGB32), expected(1, logo));
    EXPECT_FALSE(result.hasAlphaChannel());
    QImage const scaled = stamped({"--dpi-scale", "2", "--force"}, "frame.png").convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(scaled, expected(2, scaled.copy(60 - 14, 40 - 10, 6, 4))) << "but for the logo, which is resampled";
    EXPECT_EQ(names(), (QStringList{"blue.png", "frame.png", "labels.json", "logo.png", "out.png", "red.png"}));
}

TEST_F(OverlayStamp, ReplacesPlaceholdersInEachFrame)
{
    ASSERT_TRUE(QDir(path(".")).mkdir("sub"));
    writePicture("sub/b.png", Qt::gray);
    auto const stampBoth = [this](QByteArray const& text, QString const& folder) {
        writeLabels("{\"text\": \"" + text + "\", \"size\": 5}");
        EXPECT_EQ(run({"--overlays", "labels.json", "--output-dir", folder, "frame.png", "sub/b.png"}).exitCode, 0);
    };
    stampBoth("{file} {index}/{count} {{}}", "0");
    stampBoth("frame.png 1/2 {{}}", "1");
    stampBoth("b.png 2/2 {{}}", "2");
    EXPECT_EQ(bytes("0/frame.png"), bytes("1/frame.png"));
    EXPECT_EQ(bytes("0/b.png"), bytes("2/b.png"));
    EXPECT_NE(bytes("0/frame.png"), bytes("0/b.png"));
}

TEST_F(OverlayStamp, KeepsAlphaAndMetadata)
{
    // Every colour of a coarse grid with every alpha of one, 0 too.
    QImage frame(64, 64, QImage::Format_ARGB32);
    for (int i = 0; i < 64 * 64; ++i)
        frame.setPixel(i % 64, i / 64, qRgba(i * 37 % 256, i * 101 % 256, i * 11 % 256, i / 64 * 4));
    frame.setDotsPerMeterX(5000);
    frame.setText("Camera", "north");
    frame.setColorSpace(QColorSpace::DisplayP3);
    ASSERT_TRUE(frame.save(path("frame.png")));
    writePicture("red.png", Qt::red, {8, 8});
    writeLabels(R"({"contentType": "image", "image": "red.png", "size": 8, "anchor": [0, 1]})");
    QImage expected = QImage(path("frame.png")).convertToFormat(QImage::Format_ARGB32);
    QPainter(&expected).fillRect(0, 0, 8, 8, Qt::red);

    QImage const result = stamped();
    EXPECT_EQ(result.convertToFormat(QImage::Format_ARGB32), expected);
    EXPECT_EQ(result.dotsPerMeterX(), 5000);
    EXPECT_EQ(result.text("Camera"), "north");
    EXPECT_EQ(result.colorSpace(), expected.colorSpace());

    frame.fill(QColor(200, 100, 50, 51));
    ASSERT_TRUE(frame.save(path("frame.png")));
    EXPECT_EQ(stamped({}, "out.bmp").pixelColor(59, 59), QColor(40, 20, 10)) << "over black in a format without alpha";
    EXPECT_NEAR(stamped({}, "out.JPG").pixelColor(59, 59).red(), 40, 3);
}

TEST_F(OverlayStamp, GivesTheSameWhateverTheJobs)
{
    QStringList inputs;
    for (int i = 0; i < 20; ++i)
    {
        inputs << QString("../f%1.png").arg(i);
        if (i != 7)
            writePicture(QString("f%1.png").arg(i), QColor(10 * i, 0, 0), {60 + 40 * (i % 3), 40});
    }
    std::vector<Outcome> outcomes;
    for (QString const jobs : {"1", "4"})
    {
        ASSERT_TRUE(QDir(path(".")).mkdir(jobs));
        QStringList const options = {"--overlays", "../labels.json", "--output-dir", "out", "--jobs", jobs};
        outcomes.push_back(run(options + inputs, jobs));
        EXPECT_EQ(outcomes.back().exitCode, 1);
        EXPECT_EQ(outcomes.back().errors, "../f7.png: can't read it: File not found\n1 of 20 frames failed\n");
        EXPECT_EQ(names(jobs + "/out").size(), 19);
    }
    EXPECT_EQ(outcomes[0].output.substr(0, 21), "../f0.png -> out/f0.p");
    EXPECT_EQ(outcomes[0].output, outcomes[1].output);
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
