// The small examples, each run and its picture compared with what overlay-stamp makes of the same overlays.

#include "HostTest.h"

namespace
{

class Examples : public HostTest
{
  protected:
    Examples() : HostTest(ZT_OVERLAY_STAMP)
    {
        QImage frame(330, 190, QImage::Format_RGB32);
        for (int i = 0; i < 330 * 190; ++i)
            frame.setPixel(i % 330, i / 330, qRgb(i % 256, i / 999, 200));
        QImage logo(40, 30, QImage::Format_ARGB32);
        for (int i = 0; i < 40 * 30; ++i)
            logo.setPixel(i % 40, i / 40, qRgba(6 * (i % 40), 255, i / 5, 255 - i / 6));
        EXPECT_TRUE(frame.save("frame.png") && logo.save("logo.png"));
    }

    /// How far an example's picture is from a frame with overlays stamped onto it.
    int distance(QString const& picture, QString const& frame, QByteArray const& overlays) const
    {
        write("overlays.json", "{\"overlays\": [" + overlays + "]}");
        EXPECT_EQ(run("--quiet --overlays overlays.json --output stamped.png " + frame), Outcome(0, "", ""));
        EXPECT_NE(QImage("stamped.png"), QImage(frame));
        return difference(QImage(picture), QImage("stamped.png"));
    }
};

QByteArray const logo = R"({"contentType": "image", "image": "logo.png", "anchor": [1, 1], "size": )";
QByteArray const label = R"({"text": "Take 3", "anchor": [0.5, 0.05])";

TEST_F(Examples, LabelIsWhatAStampShows)
{
    EXPECT_EQ(QProcess::execute(ZT_LABEL_EXAMPLE, {"frame.png", "out.png"}), 0);
    EXPECT_EQ(
        distance("out.png", "frame.png", label + R"(, "font": "DejaVu Sans", "sizeMode": "relative", "size": 0.1})"),
        0);
}

TEST_F(Examples, OwnRendererIsWhatAStampShows)
{
    EXPECT_EQ(QProcess::execute(ZT_OWN_RENDERER_EXAMPLE, {"frame.png", "logo.png", "out.png"}), 0);
    EXPECT_LE(distance("out.png", "frame.png", label + R"(, "font": "DejaVu Sans"},)" + logo + "21.3}"), 1);
}

#ifdef ZT_VIEWER_EXAMPLE
TEST_F(Examples, ViewerShowsATriangleALogoAndALabelThatGoes)
{
    QStringList const arguments{"-a", "-s", "-screen 0 800x600x24", ZT_VIEWER_EXAMPLE, "logo.png", "a.png", "b.png"};
    qputenv("ASAN_OPTIONS", "detect_leaks=0"); // in what the driver unloads before the check
    EXPECT_EQ(QProcess::execute(ZT_XVFB_RUN, arguments), 0);
    EXPECT_LE(distance("a.png", "b.png", label + R"(, "size": 24})"), 1) << "but for the label they are the same";
    QImage picture("b.png");
    EXPECT_NE(picture.pixelColor(320, 180), QColor(Qt::black)) << "in the middle of the triangle";
    for (int x = 554; x < 640; ++x)
        for (int y = 0; y < 64; ++y)
            picture.setPixel(x, y, qRgb(0, 0, 0));
    ASSERT_TRUE(picture.save("c.png"));
    EXPECT_LE(distance("b.png", "c.png", logo + "64}"), 1);
}
#endif

} // namespace
