// overlay-stamp between other programs: pictures from the standard input stream, to the standard output stream.

#include "HostTest.h"

#include <QRegularExpression>

namespace
{

QByteArray const picture = "P6 2 1 255\nabcdef";

class Pipe : public HostTest
{
  protected:
    Pipe() : HostTest(ZT_OVERLAY_STAMP) { write("labels.json", R"({"overlays": []})"); }
};

TEST_F(Pipe, SaysInOneLineWhatIsWrongWithAPictureBehindThoseThatAreWhole)
{
    std::pair<QByteArray, char const*> const rows[] = {
        {"P6 2 1 255\nabcde", "It ends early"},
        {"P7 332\n", "It is no PAM or PPM picture"},
        {"P6 2 1 0\nabcdef", R"(Expected maxval from 1 to 65535, got "0")"},
        {"P7\nWIDTH 2\nDEPTH 3\nMAXVAL 255\nENDHDR\n", R"(Expected HEIGHT from 1 to 16777216, got "")"},
        {"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n",
         R"(Expected a TUPLTYPE of gray or RGB for the DEPTH 4, got "CMYK")"},
        {"P6 " + QByteArray(70000, ' '), "Its header has more than 65536 bytes"},
        {"P6 16777216 16777216 65535\n", "16777216 by 16777216 pixels are above the limit of 268435456"},
    };
    write("script", "exec \"$@\" <in");
    for (auto const& [bad, complaint] : rows)
    {
        write("in", picture + picture + bad);
        EXPECT_EQ(run("--overlays labels.json --output - -", "sh script"),
                  Outcome(1, picture + picture, std::string("-: can't read picture 3: ") + complaint + "\n"));
    }
    write("in", "");
    EXPECT_EQ(run("--overlays labels.json --output - -", "sh script"),
              Outcome(1, "", "-: can't read picture 1: There is none\n"));
    write("labels.json", R"({"overlays": [{"text": "{count}"}]})");
    expectComplaint("--overlays labels.json --output - -",
                    "labels.json: overlays[0].text: {count}: nobody knows how many pictures a stream has");
}

TEST_F(Pipe, PassesAPictureOnAtOnceAndTellsWhatEndsItThen)
{
    std::tuple<char const*, int, char const*> const rows[] = {
        {"{ \"$@\"; echo $? >&2; } | head -c 17", 0, "-: can't write to the standard output stream: Broken pipe\n1\n"},
        {"exec \"$@\"", 143, "overlay-stamp: ended early, [01] frames are done\n"},
    };
    for (auto const& [script, exitCode, errors] : rows)
    {
        QProcess process;
        process.start("sh",
                      {"-c", script, "", _program, "--overlays", "labels.json", "--output", "-", "--jobs", "1", "-"});
        process.write(picture);
        EXPECT_TRUE(process.waitForReadyRead());
        EXPECT_EQ(process.readAllStandardOutput(), picture) << errors;
        if (exitCode == 0)
            process.write(picture);
        else
            process.terminate();
        EXPECT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.exitCode(), exitCode) << errors;
        QString const said = process.readAllStandardError();
        EXPECT_TRUE(QRegularExpression(QString("\\A%1\\z").arg(errors)).match(said).hasMatch()) << said.toStdString();
    }
}

} // namespace
