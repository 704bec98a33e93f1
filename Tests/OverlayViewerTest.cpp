// overlay-viewer: meshes, what is where, and the window, in which suites have names that begin with Window.

#include "ObjFile.h"
#include "Picture.h"
#include "ScreenOverlays.h"
#include "View.h"
#include "ViewerWindow.h"
#include "ztOverlayUtils.h"
#include "ztPlatform.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>

#include <cmath>
#include <sstream>

namespace
{

using namespace ztExamples;

Mesh meshOf(std::string const& text)
{
    std::istringstream stream(text);
    return readObj(stream);
}

std::string const square = "v 1 1 5\nv 5 1 5\nv 5 4 5\nv 1 4 5\n";

TEST(Obj, SpellsASquareInManyWays)
{
    struct
    {
        char const* name;
        std::string text;
    } const rows[] = {
        {"fan", square + "f 1 2 3 4"},
        {"triangles", square + "f 1 2 3\nf 1 3 4"},
        {"from the end", square + "f -4 -3 -2 -1"},
        {"with texture coordinates", square + "vt 0.5\nf 1/1 2/1 3/-1 4/1"},
        {"with empty parts", square + "f 1/ 2// 3 4"},
        {"with normals", square + "vn 0 0 3e38\nf 1//1 2//1 3//-1 4//1"},
        {"with both", square + "vn 0 0 0.5\nvt 0 0 0\nf 1/1/1 2/1/1 3/1/1 4/1/1"},
        {"one normal computed", square + "vn 0 0 1\nf 1//1 2//1 3 4//1"},
        {"other statements", "mtllib a.mtl\no x\n" + square + "usemtl y\ns 1\nl 1 9\nf 1 2 3 4\nend"},
        {"comments", "# a square\n" + square + "f 1 2 3 4 # 5"},
        {"blanks", "\n\n\tv  +1 1.0e0 5 1.0\r\nv 5 1 5 0 0 0\r\nv 5\t4 5\r\nv 1 4 5 \r\n f 1  2 3 4 \r\n"},
        {"continued", square + "f 1 2\\\n3 \\\r\n4\n"},
    };
    float const x = 0.8f, y = 0.6f;
    QVector3D const corners[] = {{-x, -y, 0.0f}, {x, -y, 0.0f}, {x, y, 0.0f},
                                 {-x, -y, 0.0f}, {x, y, 0.0f},  {-x, y, 0.0f}};
    for (auto const& row : rows)
    {
        Mesh const mesh = meshOf(row.text);
        ASSERT_EQ(mesh.size(), 6u) << row.name;
        for (std::size_t i = 0; i < 6; ++i)
        {
            EXPECT_LT((mesh[i].position - corners[i]).length(), 1e-6f) << row.name;
            EXPECT_LT((mesh[i].normal - QVector3D(0.0f, 0.0f, 1.0f)).length(), 1e-6f) << row.name;
        }
    }
}

TEST(Obj, StaysFiniteWhateverTheSize)
{
    for (char const* const size : {"3e38", "1e-38", "0"})
    {
        std::string const s = size;
        for (Vertex const& vertex :
             meshOf("v -" + s + " -" + s + " 0\nv " + s + " -" + s + " 0\nv 0 " + s + " 0\nf 1 2 3"))
            for (int i = 0; i < 3; ++i)
            {
                EXPECT_LE(std::abs(vertex.position[i]), 1.0f) << size;
                EXPECT_LE(std::abs(vertex.normal[i]), 1.0f) << size;
            }
    }
}

TEST(Obj, WrongIsALineOfComplaint)
{
    std::string const vertices = " the number of one of the 4 vertices above, got ";
    struct
    {
        char const* name;
        std::string text;
        std::string complaint;
    } const rows[] = {
        {"empty", "", "line 1: expected a face before the end of the file"},
        {"no face", square, "line 5: expected a face before the end of the file"},
        {"two coordinates", "v 1 2", R"(line 1: expected three numbers, got "1 2")"},
        {"word", "#\n\nv 1 2 x # 3", R"(line 3: expected three numbers, got "1 2 x ")"},
        {"no number at all", "vn", R"(line 1: expected three numbers, got "")"},
        {"nan", "v 1 nan 3", R"(line 1: expected three numbers, got "1 nan 3")"},
        {"infinite", "v 1 inf 3", R"(line 1: expected three numbers, got "1 inf 3")"},
        {"beyond float", "v 1 1e39 3", R"(line 1: expected three numbers, got "1 1e39 3")"},
        {"beyond double", "v 1 1e999 3", R"(line 1: expected three numbers, got "1 1e999 3")"},
        {"two corners", square + "f 1 2", R"(line 5: expected three or more corners, got "1 2")"},
        {"zero", square + "f 0 1 2", "line 5: expected" + vertices + R"("0")"},
        {"too high", square + "f 1 2 5", "line 5: expected" + vertices + R"("5")"},
        {"too low", square + "f 1 2 -5", "line 5: expected" + vertices + R"("-5")"},
        {"lowest", square + "f 1 2 -9223372036854775808", "line 5: expected" + vertices + R"("-9223372036854775808")"},
        {"beyond 64 bits", square + "f 1 2 18446744073709551617",
         "line 5: expected" + vertices + R"("18446744073709551617")"},
        {"fraction", square + "f 1 2 3.5", "line 5: expected" + vertices + R"("3.5")"},
        {"no position", square + "f 1 2 /1", "line 5: expected" + vertices + R"("")"},
        {"no texture coordinate", square + "f 1/1 2 3",
         R"(line 5: expected the number of one of the 0 texture coordinates above, got "1")"},
        {"no normal", square + "vn 0 0 1\nf 1//1 2//1 3//2",
         R"(line 6: expected the number of one of the 1 normals above, got "2")"},
        {"four parts", square + "vt 0\nvn 0 0 1\nf 1/1/1/1 2 3",
         R"(line 7: expected the number of one of the 1 normals above, got "1/1")"},
        {"after a continued line", square + "f 1 2 \\\n3\nv", R"(line 7: expected three numbers, got "")"},
        {"long", "v " + std::string(1000, '1') + "x",
         "line 1: expected three numbers, got \"" + std::string(60, '1') + "...\""},
        {"binary", std::string("v \0\xff 1", 6), std::string("line 1: expected three numbers, got \"\0\xff 1\"", 41)},
    };
    for (auto const& row : rows)
        try
        {
            meshOf(row.text);
            ADD_FAILURE() << row.name << " is accepted";
        }
        catch (std::runtime_error const& error)
        {
            EXPECT_STREQ(error.what(), row.complaint.c_str()) << row.name;
        }
}

TEST(Knot, IsClosedAndHasItsNormalsOutside)
{
    Mesh const mesh = createTrefoilKnot();
    ASSERT_EQ(mesh.size() % 3, 0u);
    double volume = 0.0;
    for (std::size_t i = 0; i < mesh.size(); i += 3)
    {
        QVector3D const& a = mesh[i].position;
        QVector3D const& b = mesh[i + 1].position;
        QVector3D const& c = mesh[i + 2].position;
        volume += double(QVector3D::dotProduct(a, QVector3D::crossProduct(b, c))) / 6.0;
        EXPECT_GT(QVector3D::dotProduct(QVector3D::crossProduct(b - a, c - a), mesh[i].normal), 0.0f);
        EXPECT_LE(a.length(), 1.0001f);
    }
    EXPECT_GT(volume, 0.1); // the sum over a surface with a hole, or inside out, isn't the volume inside
}

TEST(View, ShowsAllOfAUnitSphere)
{
    for (QSize const size : {QSize(1280, 720), QSize(300, 300), QSize(100, 700), QSize(1, 1000)})
        for (int i = 0; i < 360; ++i)
            for (QVector3D const point : {QVector3D(std::cos(float(i)), std::sin(float(i)), 0.0f),
                                          QVector3D(0.0f, std::sin(float(i)), std::cos(float(i)))})
            {
                QVector3D const seen = projectionFor(size).map(modelAt(i).map(point));
                for (int axis = 0; axis < 3; ++axis)
                    EXPECT_LE(std::abs(seen[axis]), 1.0f) << size.width() << "x" << size.height();
            }
}

TEST(View, SplitsAPictureIntoTilesThatMeet)
{
    for (QSize const size : {QSize(1280, 720), QSize(512, 512), QSize(513, 1), QSize(1, 1025)})
    {
        QSize const tileSize(512, 512);
        QImage cover(size, QImage::Format_Grayscale8);
        cover.fill(0);
        for (QRect const& tile : splitIntoTiles(size, tileSize))
        {
            EXPECT_TRUE(cover.rect().contains(tile));
            EXPECT_TRUE(tile.width() <= 512 && tile.height() <= 512);
            for (int y = tile.top(); y <= tile.bottom(); ++y)
                for (int x = tile.left(); x <= tile.right(); ++x)
                    ++cover.scanLine(y)[x];
        }
        QImage once(size, QImage::Format_Grayscale8);
        once.fill(1);
        EXPECT_EQ(cover, once);
    }
}

OverlayEntry picture(char const* name, QColor const& color, QSize const& size, osg::Vec2f const& anchor,
                     osg::Vec2f const& offset)
{
    QImage pixels(size, QImage::Format_RGBA8888_Premultiplied);
    pixels.fill(color);
    OverlayEntry entry;
    entry.name = name;
    entry.contentType = osg::Overlay::ContentImage;
    entry.image = pixels;
    entry.size = float(size.height());
    entry.anchor = anchor;
    entry.offset = offset;
    return entry;
}

OverlayEntry label(char const* text, float size, osg::Vec2f const& anchor)
{
    OverlayEntry entry;
    entry.name = "label";
    entry.text = text;
    entry.sizeMode = osg::Overlay::SizeRelative;
    entry.size = size;
    entry.anchor = anchor;
    entry.backgroundColor = {0.1f, 0.3f, 0.5f};
    entry.backgroundTransparency = {0.4f, 0.4f, 0.4f};
    return entry;
}

/// Red lies over a part of blue, in the lower left corner; the label is in the upper right one.
std::vector<OverlayEntry> const testEntries = {picture("red", Qt::red, {40, 20}, {0, 0}, {10, 20}),
                                               picture("blue", Qt::blue, {40, 20}, {0, 0}, {30, 30}),
                                               label("Ag {file}", 0.12f, {0.97f, 0.93f})};

osg::OverlayPtr overlayOf(char const* name)
{
    return osg::dynamicCast<osg::Overlay>(ztOverlays::findOverlay(name)->core);
}

std::string nameAt(ScreenOverlays const& overlays, QPointF const& pointer, double scale)
{
    osg::OverlayPtr const overlay = overlays.visibleAt(toLayout(pointer, QSize(200, 150), scale));
    for (char const* const name : {"red", "blue", "label"})
        if (overlay == overlayOf(name))
            return name;
    return overlay == osg::NullFC ? "" : "own";
}

TEST(Overlays, AreFoundUnderThePointer)
{
    ScreenOverlays overlays(testEntries, {});
    struct
    {
        char const* name;
        QPointF pointer;
        double scale;
        std::string found;
    } const rows[] = {
        {"first pixel of red", {10, 129}, 1.0, "red"},
        {"left of it", {9, 129}, 1.0, ""},
        {"below it", {10, 130}, 1.0, ""},
        {"last pixel of red", {49, 110}, 1.0, "red"},
        {"above it, in blue", {49, 109}, 1.0, "blue"},
        {"last pixel of blue", {69, 100}, 1.0, "blue"},
        {"right of it", {70, 100}, 1.0, ""},
        {"above it", {69, 99}, 1.0, ""},
        {"first pixel of red of two a unit", {10, 54.5}, 2.0, "red"},
        {"left of it, half a unit", {9.5, 54.5}, 2.0, ""},
        {"label", {185, 20}, 1.0, "label"},
        {"hidden help", {100, 75}, 1.0, ""},
        {"outside", {-1, 300}, 1.0, ""},
    };
    for (auto const& row : rows)
    {
        overlays.layOut({200, 150}, row.scale);
        EXPECT_EQ(nameAt(overlays, row.pointer, row.scale), row.found) << row.name;
    }
    overlays.layOut({200, 150}, 1.0);
}

TEST(Overlays, AreRenderedAnewForAnotherScaleOnly)
{
    ScreenOverlays overlays(testEntries, {});
    overlays.setStatus("status");
    overlays.layOut({200, 150}, 1.0);
    EXPECT_EQ(overlays.renderingCount(), 3u); // help, status, label
    overlays.layOut({300, 150}, 1.0);
    EXPECT_EQ(overlays.renderingCount(), 3u);
    EXPECT_EQ(overlayOf("red")->foreground->positions[0].x, 10.0f);
    overlays.layOut({300, 150}, 2.0);
    EXPECT_EQ(overlays.renderingCount(), 6u);
    EXPECT_EQ(overlayOf("red")->foreground->positions[0].x, 20.0f);
    overlays.layOut({300, 150}, 2.0);
    EXPECT_EQ(overlays.renderingCount(), 6u);
    overlays.layOut({300, 150}, 1.0);
}

struct Outcome
{
    int exitCode;
    std::string output;
    std::string errors;
};

class Viewer : public testing::Test
{
  protected:
    QString path(QString const& name) const { return _folder.filePath(name); }

    void writeFile(QString const& name, QByteArray const& bytes) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QStringList names() const
    {
        return QDir(path(".")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    Outcome run(QStringList const& arguments,
                QProcessEnvironment const& environment = QProcessEnvironment::systemEnvironment()) const
    {
        QProcess process;
        process.setWorkingDirectory(_folder.path());
        process.setProcessEnvironment(environment);
        process.start(OVERLAY_VIEWER, arguments);
        EXPECT_TRUE(process.waitForFinished(120000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }

    QTemporaryDir _folder;
};

TEST_F(Viewer, RefusesWrongUsageInALine)
{
    writeFile("wrong.obj", "v 0 0 0\nf 1 2 3\n");
    writeFile("wrong.json", R"({"overlays":[{"text":"a","anchor":"top"}]})");
    QStringList const before = names();
    struct
    {
        char const* arguments;
        std::string complaint;
    } const rows[] = {
        {"--overlay a.json", "overlay-viewer: Unknown option 'overlay' (see --help)"},
        {"--frames", "overlay-viewer: Missing value after '--frames' (see --help)"},
        {"a.obj b.obj", "overlay-viewer: one mesh at most is shown (see --help)"},
        {"--size 1x1 --size 1x1", "overlay-viewer: --size is given twice (see --help)"},
        {"--size 640x", R"(overlay-viewer: --size: expected WxH, each from 1 to 16384, got "640x" (see --help))"},
        {"--size 0x480", R"(overlay-viewer: --size: expected WxH, each from 1 to 16384, got "0x480" (see --help))"},
        {"--size 9x16385", R"(overlay-viewer: --size: expected WxH, each from 1 to 16384, got "9x16385" (see --help))"},
        {"--size -1x9", R"(overlay-viewer: --size: expected WxH, each from 1 to 16384, got "-1x9" (see --help))"},
        {"--frames 0",
         R"(overlay-viewer: --frames: expected a whole number from 1 to 2147483647, got "0" (see --help))"},
        {"--frames 2.5",
         R"(overlay-viewer: --frames: expected a whole number from 1 to 2147483647, got "2.5" (see --help))"},
        {"--screenshot a.gif", R"(overlay-viewer: --screenshot: can't write the format of "a.gif", only )"},
        {"no.obj", "no.obj: can't read it: No such file or directory"},
        {".", ".: can't read it: Is a directory"},
        {"wrong.obj", R"(wrong.obj: line 2: expected the number of one of the 1 vertices above, got "2")"},
        {"--overlays wrong.json", R"(wrong.json: overlays[0].anchor: expected two numbers, got "top")"},
    };
    for (auto const& row : rows)
    {
        Outcome const outcome = run(QString(row.arguments).split(' '));
        EXPECT_EQ(outcome.exitCode, 2) << row.arguments;
        EXPECT_EQ(outcome.output, "") << row.arguments;
        EXPECT_EQ(outcome.errors.substr(0, row.complaint.size()), row.complaint);
        EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << row.arguments;
    }
    EXPECT_EQ(names(), before);
}

TEST_F(Viewer, SaysThatThereIsNoOpenGL)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (char const* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(name);
    Outcome const outcome = run({"--screenshot", "a.png"}, environment);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "overlay-viewer: there is no OpenGL 3.3 and no OpenGL ES 3.0 here\n");
    EXPECT_EQ(names(), QStringList());
}

/// The largest difference of two pictures' colour values, or 256 if their sizes differ.
int difference(QImage const& a, QImage const& b)
{
    if (a.size() != b.size() || a.isNull())
        return 256;
    int largest = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
        {
            QRgb const p = a.pixel(x, y), q = b.pixel(x, y);
            largest = std::max(
                {largest, std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
        }
    return largest;
}

class WindowOfProcess : public Viewer
{
  protected:
    WindowOfProcess()
    {
        QImage red(24, 16, QImage::Format_RGB32);
        red.fill(Qt::red);
        EXPECT_TRUE(red.save(path("red.png")));
        writeFile("labels.json", R"({"overlays":[
            {"contentType": "image", "image": "red.png", "size": 16, "anchor": [1, 0], "offset": [-5.7, 9.2]},
            {"text": " opaque {file} ", "font": "DejaVu Sans", "size": 15, "anchor": [0.3, 0.5],
             "backgroundColor": [0, 0.4, 0], "backgroundTransparency": 0},
            {"text": "translucent\n{index}/{count}", "sizeMode": "relative", "size": 0.23,
             "anchor": [0.91, 0.97], "textColor": [1, 0.9, 0.2, 0.7], "backgroundTransparency": 0.5}]})");
    }

    QImage screenshot(QStringList const& more,
                      QProcessEnvironment const& environment = QProcessEnvironment::systemEnvironment()) const
    {
        Outcome const outcome = run(QStringList{"--size", "401x303", "--screenshot", "a.png"} + more, environment);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.errors, "");
        QImage const picture(path("a.png"));
        EXPECT_TRUE(QFile::remove(path("a.png")));
        return picture;
    }
};

TEST_F(WindowOfProcess, ShowsTheOverlaysThatStampingGives)
{
    QImage const shown = screenshot({"--overlays", "labels.json"});
    QImage pixels = toPixels(screenshot({}));
    Scene scene(readOverlayFile(path("labels.json")));
    scene.setTexts({"built-in shape", 1, 1});
    stamp(pixels, osg::NullFC);
    EXPECT_LE(difference(shown, pixels.mirrored()), 1);
    // From 401 - 24 - 5.7 = 371.3 and 9.2, truncated, on.
    EXPECT_EQ(shown.pixelColor(371, 303 - 1 - 9), QColor(Qt::red));
    EXPECT_NE(shown.pixelColor(370, 303 - 1 - 9), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(394, 303 - 9 - 16), QColor(Qt::red));
    EXPECT_NE(shown.pixelColor(394, 303 - 9 - 17), QColor(Qt::red));
}

TEST_F(WindowOfProcess, ShowsTheSameInEachRunAndAnotherMeshElse)
{
    writeFile("triangle.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    QImage const first = screenshot({"--frames", "3"});
    EXPECT_EQ(first, screenshot({"--frames", "3"}));
    EXPECT_NE(first, screenshot({"--frames", "4"}));
    EXPECT_NE(first, screenshot({"--frames", "3", "triangle.obj"}));
}

TEST_F(WindowOfProcess, HasTwiceThePixelsOnAScreenOfScaleTwo)
{
    writeFile("red.json", R"({"overlays":[
        {"contentType": "image", "image": "red.png", "size": 16, "offset": [10, 20]}]})");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_SCALE_FACTOR", "2");
    QImage const shown = screenshot({"--overlays", "red.json"}, environment);
    EXPECT_EQ(shown.size(), QSize(802, 606));
    EXPECT_EQ(shown.pixelColor(21, 606 - 1 - 41), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(20 + 46, 606 - 1 - 40 - 30), QColor(Qt::red));
    EXPECT_NE(shown.pixelColor(19, 606 - 1 - 41), QColor(Qt::red));
    EXPECT_NE(shown.pixelColor(20 + 48, 606 - 1 - 41), QColor(Qt::red));
}

TEST_F(WindowOfProcess, RendersAndUploadsOnlyItsLabelTwiceASecond)
{
    QStringList const common = {"--size", "160x120", "--overlays", "labels.json", "--frames"};
    // Two of the file's texts, the label and the help, which is hidden and isn't uploaded; a picture.
    EXPECT_EQ(run(common + QStringList{"1"}).output, "1 frames  4 renderings  4 uploads\n");
    EXPECT_EQ(run(common + QStringList{"30"}).output, "30 frames  4 renderings  4 uploads\n");
    EXPECT_EQ(run(common + QStringList{"200"}).output, "200 frames  10 renderings  10 uploads\n");
}

TEST_F(WindowOfProcess, SaysWhenTheScreenshotCantBeWritten)
{
    Outcome const outcome = run({"--size", "80x60", "--screenshot", "no/a.png"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "can't write \"no/a.png\": No such file or directory\n");
}

/// A window of a size whose tiles have edges beside single precision fractions, with a still mesh and no label of
/// changing counts.
class Window : public testing::Test
{
  protected:
    Window() : _overlays(testEntries, {"a", 1, 1}), _window(createTrefoilKnot(), _overlays, options())
    {
        QDir::setCurrent(_folder.path());
        _window.show();
        press(Qt::Key_Space);
        settle();
        pressAt({194, 285}, Qt::Key_V); // the label
    }

    ~Window() override { QDir::setCurrent(QDir::rootPath()); }

    static Options options()
    {
        Options options;
        options.size = {388, 293};
        return options;
    }

    /// Waits until what has been done shows.
    void settle()
    {
        int const end = _window.frameCount() + 3;
        QDeadlineTimer const deadline(60000);
        while (_window.frameCount() < end && !deadline.hasExpired())
            QCoreApplication::processEvents();
        ASSERT_GE(_window.frameCount(), end);
    }

    QImage shown()
    {
        settle();
        return _window.screen()->grabWindow(_window.winId()).toImage();
    }

    void press(Qt::Key key)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&_window, &event);
    }

    void mouse(QEvent::Type type, QPointF const& position, Qt::MouseButton button = Qt::NoButton)
    {
        QMouseEvent event(type, position, button, button, Qt::NoModifier);
        QCoreApplication::sendEvent(&_window, &event);
    }

    void pressAt(QPointF const& position, Qt::Key key)
    {
        mouse(QEvent::MouseMove, position);
        press(key);
    }

    /// The pictures that a key saves, by their names.
    std::vector<QImage> saved(Qt::Key key, char const* kind)
    {
        settle();
        press(key);
        QStringList const names = QDir(_folder.path()).entryList({QString("overlay-viewer-*-%1-?x.png").arg(kind)});
        std::vector<QImage> pictures;
        for (QString const& name : names)
            pictures.push_back(QImage(_folder.filePath(name)));
        return pictures;
    }

    QTemporaryDir _folder;
    ScreenOverlays _overlays;
    ViewerWindow _window;
};

TEST_F(Window, SavesTheSameStampedAndTiledAndShowsThatToo)
{
    QImage const before = shown();
    std::vector<QImage> const stamped = saved(Qt::Key_S, "stamped");
    std::vector<QImage> const tiled = saved(Qt::Key_T, "tiled");
    ASSERT_EQ(stamped.size(), 3u);
    ASSERT_EQ(tiled.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i)
    {
        EXPECT_EQ(stamped[i].size(), QSize(388, 293) * (1 << i));
        EXPECT_LE(difference(stamped[i], tiled[i]), 1) << i;
    }
    EXPECT_LE(difference(before, stamped[0]), 1);
    EXPECT_EQ(difference(before, shown()), 0) << "the layout isn't restored";
}

TEST_F(Window, HidesAndShowsWhatIsUnderThePointer)
{
    QImage const before = shown();
    QPoint const overlap(35, 293 - 1 - 35); // of red and blue
    EXPECT_EQ(before.pixelColor(overlap), QColor(Qt::red));
    pressAt(overlap, Qt::Key_V);
    EXPECT_EQ(shown().pixelColor(overlap), QColor(Qt::blue));
    press(Qt::Key_V);
    EXPECT_EQ(difference(shown(), before), 0);
    pressAt({300, 100}, Qt::Key_V);
    EXPECT_EQ(difference(shown(), before), 0);
}

TEST_F(Window, ReversesTheOrder)
{
    QImage const before = shown();
    QPoint const overlap(35, 293 - 1 - 35);
    press(Qt::Key_R);
    EXPECT_EQ(shown().pixelColor(overlap), QColor(Qt::blue));
    press(Qt::Key_R);
    EXPECT_EQ(difference(shown(), before), 0);
}

TEST_F(Window, DragsAnOverlayWithoutRenderingIt)
{
    settle();
    std::size_t const renderings = _overlays.renderingCount();
    mouse(QEvent::MouseButtonPress, {320, 30}, Qt::LeftButton);
    mouse(QEvent::MouseMove, {250, 40}, Qt::LeftButton);
    mouse(QEvent::MouseMove, {260.5, 60}, Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, {260.5, 60}, Qt::LeftButton);
    mouse(QEvent::MouseMove, {0, 0});
    osg::OverlayPtr const dragged = overlayOf("label");
    EXPECT_EQ(dragged->offset.x, -59.5f);
    EXPECT_EQ(dragged->offset.y, -30.0f);
    float const before = dragged->foreground->positions[0].x;
    settle();
    EXPECT_EQ(dragged->foreground->positions[0].x, before - 59.5f);
    EXPECT_FALSE(dragged->dirty);
    EXPECT_LE(_overlays.renderingCount(), renderings + 1) << "but for the label with the counts";
}

TEST_F(Window, ShowsHelpAndTakesItAway)
{
    QImage const before = shown();
    press(Qt::Key_H);
    EXPECT_GT(difference(shown(), before), 50);
    press(Qt::Key_H);
    EXPECT_EQ(difference(shown(), before), 0);
}

TEST_F(Window, FollowsItsSize)
{
    QImage const before = shown();
    _window.resize(500, 300);
    QImage const larger = shown();
    EXPECT_EQ(larger.size(), QSize(500, 300));
    EXPECT_EQ(larger.pixelColor(10, 300 - 1 - 20), QColor(Qt::red));
    EXPECT_NE(larger.pixelColor(10, 300 - 1 - 19), QColor(Qt::red));
    _window.resize(388, 293);
    EXPECT_EQ(difference(shown(), before), 0);
}

TEST_F(Window, OutlivesItsContext)
{
    QImage const before = shown();
    ASSERT_TRUE(_window.context()->create()); // destroys what was there
    EXPECT_EQ(difference(shown(), before), 0);
}

class Containers : public testing::Environment
{
    void TearDown() override { EXPECT_EQ(osg::FieldContainerFactory::getNumContainers(), 0u) << "are left"; }
};

} // namespace

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    QGuiApplication const application(argumentCount, arguments);
    testing::AddGlobalTestEnvironment(new Containers); // which takes it
    return RUN_ALL_TESTS();
}
