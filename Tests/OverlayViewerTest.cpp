// overlay-viewer: meshes, what is where, and the window, in which suites have names that begin with Window.

#include "HostTest.h"
#include "MeshFile.h"
#include "Picture.h"
#include "View.h"
#include "ViewerWindow.h"
#include "ztOverlayUtils.h"

#include <QBitmap>
#include <QDataStream>
#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QScreen>

#include <cmath>

namespace
{

using namespace ztExamples;

TEST(Knot, HasItsNormalsOutside)
{
    Mesh const mesh = createTrefoilKnot();
    double volume = 0.0;
    for (std::size_t i = 0; i < mesh.size(); i += 3)
    {
        QVector3D const a = mesh[i].position, b = mesh[i + 1].position, c = mesh[i + 2].position;
        volume += double(QVector3D::dotProduct(a, QVector3D::crossProduct(b, c))) / 6.0;
        EXPECT_GT(QVector3D::dotProduct(QVector3D::crossProduct(b - a, c - a), mesh[i].normal), 0.0f);
        EXPECT_LE(a.length(), 1.0001f);
    }
    EXPECT_GT(volume, 0.1) << "is inside out";
}

TEST(View, ShowsAllOfAUnitSphere)
{
    for (QSize const size : {QSize(1280, 720), QSize(100, 700)})
        for (int i = 0; i <= 1000; ++i)
        {
            float const angle = float(i), z = angle / 500.0f - 1.0f, r = std::sqrt(1.0f - z * z);
            QVector3D const seen = projectionFor(size).map(QVector3D(r * std::cos(angle), r * std::sin(angle), z));
            EXPECT_LE(std::max({std::abs(seen.x()), std::abs(seen.y()), std::abs(seen.z())}), 1.0f) << size.width();
        }
}

osg::OverlayPtr overlayOf(char const* name)
{
    return osg::dynamicCast<osg::Overlay>(ztOverlays::findOverlay(name)->core);
}

/// With overlays in labels.json: red, which lies over a part of blue, a label in the upper right corner, a picture
/// whose corner and size are no whole pixels, and an empty text.
class Viewer : public HostTest
{
  protected:
    Viewer() : HostTest(ZT_OVERLAY_VIEWER)
    {
        writePicture("red.png", Qt::red, {40, 20});
        writePicture("blue.png", Qt::blue, {40, 20});
        write("labels.json", R"({"overlays":[
            {"name": "red", "contentType": "image", "image": "red.png", "size": 20, "offset": [10, 20]},
            {"name": "blue", "contentType": "image", "image": "blue.png", "size": 20, "offset": [30, 30]},
            {"name": "label", "text": "Ag {file}", "font": "DejaVu Sans", "sizeMode": "relative", "size": 0.12, "anchor": [0.97, 0.93],
             "backgroundTransparency": 0.4},
            {"contentType": "image", "image": "blue.png", "size": 13.3, "anchor": [1, 0], "offset": [-5.7, 9.2]},
            {"text": ""}]})");
    }

    ~Viewer() override { EXPECT_EQ(osg::FieldContainerFactory::getNumContainers(), 0u) << "are left"; }

    QImage screenshot(QString const& more) const
    {
        auto const [exitCode, output, errors] = run("--size 401x303 --screenshot a.png" + more);
        EXPECT_EQ(exitCode, 0);
        EXPECT_EQ(errors, "");
        return QImage("a.png");
    }
};

QByteArray const square = "v 1 1 5\nv 5 1 5\nv 5 4 5\nv 1 4 5\n";

QByteArray const squarePly = "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
                             "property float z\nelement face 1\nproperty list uchar int vertex_index\nend_header\n";

/// Numbers of single precision in an order of bytes.
QByteArray toBytes(std::vector<float> const& numbers, QDataStream::ByteOrder order = QDataStream::LittleEndian)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setByteOrder(order);
    stream.setFloatingPointPrecision(QDataStream::SinglePrecision);
    for (float const number : numbers)
        stream << number;
    return bytes;
}

QByteArray binaryPly(QByteArray const& format, QDataStream::ByteOrder order)
{
    QByteArray face;
    QDataStream stream(&face, QIODevice::WriteOnly);
    stream.setByteOrder(order);
    stream << quint8(4) << qint32(0) << qint32(1) << qint32(2) << qint32(3);
    return QByteArray(squarePly).replace("ascii", format) + toBytes({1, 1, 5, 5, 1, 5, 5, 4, 5, 1, 4, 5}, order) + face;
}

/// With a normal that isn't so.
QByteArray const binaryStl = QByteArray(80, 's') + QByteArray("\2\0\0\0", 4) +
                             toBytes({9, 9, 9, 1, 1, 5, 5, 1, 5, 5, 4, 5}) + "ab" +
                             toBytes({9, 9, 9, 1, 1, 5, 5, 4, 5, 1, 4, 5}) + "ab";

std::pair<char const*, QByteArray> const squares[] = {
    {"a.obj", "\xef\xbb\xbf" + square + "f 1 2 3\nf 1 3 4"},
    {"a.obj", square + "vn 0 0 3e38\nvt 0.5\nf 1//1 -3/1/-1 3/-1 4/"},
    {"a.obj", "mtllib a.mtl\n# a square\n" + square + "s 1\nl 1 9\nf 1 2 3 4 # 5\nend"},
    {"a.obj", "\n\n\tv  +1 1.0e0 5 1.0\r\nv 5 1 5 0 0 0\r\nv 5\t4 5\r\nv 1 4 5 \r\n f 1  2\\\n3 \\\r\n4\r\n"},
    {"a.obj", "v -2.4e38 -1.8e38 0\nv 2.4e38 -1.8e38 0\nv 2.4e38 1.8e38 0\nv -2.4e38 1.8e38 0\nf 1 2 3 4"},
    {"a.stl", "solid a\nouter loop\nvertex 1 1 5\nvertex 5 1 5 vertex +5 4 5\nvertex 1 1 5 vertex 5 4 5 vertex 1 4 5"},
    {"a.STL", binaryStl},
    {"a.ply", squarePly + "1 1 5 5 1 5\n5 4 5\n1 4 5\n4 0 1 2 3"},
    {"a.ply", binaryPly("binary_little_endian", QDataStream::LittleEndian)},
    {"a.ply", binaryPly("binary_big_endian", QDataStream::BigEndian)},
};

TEST_F(Viewer, ReadsASquareSpeltInManyWays)
{
    float const x = 0.8f, y = 0.6f;
    QVector3D const corners[] = {{-x, -y, 0.0f}, {x, -y, 0.0f}, {x, y, 0.0f},
                                 {-x, -y, 0.0f}, {x, y, 0.0f},  {-x, y, 0.0f}};
    for (auto const& [name, bytes] : squares)
    {
        write(name, bytes);
        Mesh const mesh = readMeshFile(name);
        ASSERT_EQ(mesh.size(), 6u) << bytes.data();
        for (std::size_t i = 0; i < 6; ++i)
        {
            EXPECT_LT((mesh[i].position - corners[i]).length(), 1e-6f) << bytes.data();
            EXPECT_LT((mesh[i].normal - QVector3D(0.0f, 0.0f, 1.0f)).length(), 1e-6f) << bytes.data();
            EXPECT_EQ(mesh[i].color, Color()) << bytes.data();
        }
    }
    write("point.obj", "v 1 1 1\nf 1 1 1");
    EXPECT_EQ(readMeshFile("point.obj")[0].position, QVector3D());
    write("small.obj", "v -1 0 0\nv 1 0 0\nv 0 0 0\nv 0 1e-4 0\nv 0 0 1e-4\nf 3 4 5");
    EXPECT_EQ(readMeshFile("small.obj")[0].normal, QVector3D(1, 0, 0));
    write("folded.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 2 3\nf 1 4 2");
    Mesh const folded = readMeshFile("folded.obj");
    EXPECT_LT((folded[0].normal - QVector3D(0, 1, 1) / std::sqrt(2.0f)).length(), 1e-6f) << "along the fold";
    EXPECT_EQ(folded[2].normal, QVector3D(0, 0, 1));
}

TEST_F(Viewer, ReadsTheColorsOfMaterialsAndVertices)
{
    write("a b.mtl", "newmtl red one\nKa 1 1 1\nKd 1 0.2 -1\nnewmtl blue\nKd 0 0 2\r\n");
    write("a.obj",
          "mtllib a b.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nusemtl red one \nf 1 2 3\nusemtl blue\nf 1 2 3\n"
          "usemtl none\nf 1 2 3\n");
    Color const red{255, 51, 0, 255}, blue{0, 0, 255, 255};
    Mesh const mesh = readMeshFile("a.obj");
    for (auto const& [corner, color] : {std::pair{0u, Color()}, {3u, red}, {6u, blue}, {9u, Color()}})
        EXPECT_EQ(mesh.at(corner).color, color) << corner;
    write("a.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty uchar red\nproperty float x\nproperty float y\n"
                   "property float green\nproperty float nx\nelement face 1\nproperty list uchar uchar vertex_indices\n"
                   "end_header\n255 0 0 0.2 3\n255 1 0 0.2 0\n0 0 1 2 0\n3 0 1 2\n");
    Mesh const triangle = readMeshFile("a.ply");
    EXPECT_EQ(triangle.at(0).color, red);
    EXPECT_EQ(triangle.at(2).color, (Color{0, 255, 0, 255}));
    EXPECT_EQ(triangle.at(0).normal, QVector3D(1, 0, 0));
    EXPECT_EQ(triangle.at(1).normal, QVector3D(0, 0, 1)) << "of the surface, without one of its own";
}

std::pair<QByteArray, std::string> const wrongMeshes[] = {
    {square, "line 5: expected a face before the end of the file"},
    {"#\n\nv 1 2 x # 3", R"(line 3: expected three numbers, got "1 2 x ")"},
    {"v 1 1e39 3", R"(line 1: expected three numbers, got "1 1e39 3")"},
    {square + "f 1 2 \\\n3\nf 1 2", R"(line 7: expected three or more corners, got "1 2")"},
    {square + "f 0 1 2", R"(line 5: expected the number of one of the 4 vertices above, got "0")"},
    {square + "f 1 2 5", R"(line 5: expected the number of one of the 4 vertices above, got "5")"},
    {square + "f 1 2 -5", R"(line 5: expected the number of one of the 4 vertices above, got "-5")"},
    {square + "f 1 2 3.5", R"(line 5: expected the number of one of the 4 vertices above, got "3.5")"},
    {square + "f 1/1 2", R"(line 5: expected the number of one of the 0 texture coordinates above, got "1")"},
    {square + "vn 0 0 1\nf 3//2", R"(line 6: expected the number of one of the 1 normals above, got "2")"},
    {"v " + QByteArray(99, '1'), "line 1: expected three numbers, got \"" + std::string(60, '1') + "...\""},
    {"\n" + QByteArray(1 << 21, '1'), "line 2: expected 1048576 bytes at most"},
    {"\n" + QByteArray("1\\\n").repeated(1 << 20), "line 2: expected 1048576 bytes at most"},
};

std::tuple<char const*, QByteArray, std::string> const wrongFiles[] = {
    {"a.stl", "solid a\nvertex 1 2 x", R"(line 2: expected a number, got "x")"},
    {"a.stl", "vertex 1 2 3", "expected triangles of three vertices each before the end of the file"},
    {"a.ply", "plx", R"(expected "ply" at the beginning)"},
    {"a.ply", "ply\nformat ascii 1.0\nelement a b\n", R"(line 3: expected how many there are, got "b")"},
    {"a.ply", squarePly + "1 1 5 5 1 5 5 4 5 1 4 5\n3 0 1 4\n",
     "line 11: expected the number of one of the 4 vertices above, counted from 0"},
    {"a.ply", binaryPly("binary_little_endian", QDataStream::LittleEndian).chopped(1),
     "expected more numbers before the end of the file"},
    {"a.mtl", "Kd", "expected a mesh (.obj, .stl or .ply), got another kind of file"},
    {"a.json", "{}", "expected a mesh (.obj, .stl or .ply), got an overlay file, which --overlays takes"},
};

TEST_F(Viewer, SaysInOneLineWhatIsWrong)
{
    std::pair<char const*, std::string> const usageRows[] = {
        {"a.obj b.obj", "one mesh at most is shown"},
        {"--size 9x0", R"(--size: expected WxH, each from 1 to 16384, got "9x0")"},
        {"--size 9x16385", R"(--size: expected WxH, each from 1 to 16384, got "9x16385")"},
        {"--size -1x9", R"(--size: expected WxH, each from 1 to 16384, got "-1x9")"},
        {"--frames 0", R"(--frames: expected a whole number from 1 to 2147483647, got "0")"},
    };
    for (auto const& [arguments, complaint] : usageRows)
        expectComplaint(arguments, "overlay-viewer: " + complaint + " (see --help)");
    expectComplaint(".", ".: can't read it: Is a directory");
    for (auto const& [text, complaint] : wrongMeshes)
    {
        write("wrong.obj", text);
        expectComplaint("wrong.obj", "wrong.obj: " + complaint);
    }
    write("labels.json", R"({"overlays":[{"text":"a","text":"b"}]})");
    expectComplaint("--overlays labels.json", R"(labels.json: line 1, column 26: the key "text" is there already)");
    for (auto const& [name, bytes, complaint] : wrongFiles)
    {
        write(name, bytes);
        expectComplaint(name, std::string(name) + ": " + complaint);
    }
    expectComplaint("--overlays red.png", "red.png: expected an overlay file (.json), got a picture");
    expectComplaint("red.png", "red.png: expected a mesh (.obj, .stl or .ply), got a picture");
    for (char const* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        _environment.remove(name);
    expectNeeds("--frames 1");
    EXPECT_EQ(run("--frames 1"), Outcome(1, "", "overlay-viewer: there is no OpenGL 3.3 and no OpenGL ES 3.0 here\n"));
}

TEST_F(Viewer, SaysWhatIsAmissWithTheOverlays)
{
    write("a.json", R"({"overlays":[{"text": "a", "font": "DejaVu Sans"}]})");
    EXPECT_EQ(run("--check --overlays a.json"), Outcome(0, "", ""));
    write("a.json", R"({"overlays":[{"name": "logo", "contentType": "image", "image": "red.png", "sizeMode": "relative",
                                     "size": 36}, {"text": ""}]})");
    EXPECT_EQ(run("--check --overlays a.json"),
              Outcome(1,
                      "logo: its size is relative and 36 times the target's height; write a fraction up to 1 into "
                      "`size`, or SizeAbsolute into `sizeMode`\n"
                      "Overlay: it is still dirty: it has no text; write one, or take the node out of the scene\n",
                      ""));
}

TEST_F(Viewer, FindsOverlaysUnderThePointerAndRendersThemAnewForAnotherScaleOnly)
{
    ScreenOverlays overlays(readOverlayFile("labels.json"), {});
    osg::OverlayPtr const red = overlayOf("red"), blue = overlayOf("blue"), none;
    // The label, the viewer's own and the help, which is hidden, are rendered.
    for (auto const& [width, scale, renderings] : {std::tuple{200, 1, 3u}, {300, 1, 3u}, {300, 2, 6u}, {200, 1, 9u}})
    {
        QSize const size(width, 150);
        overlays.layOut(size, scale);
        EXPECT_EQ(overlays.renderingCount(), renderings);
        QRect const redArea(10 * scale, 20 * scale, 40 * scale, 20 * scale);
        QRect const blueArea = redArea.translated(20 * scale, 10 * scale);
        int wrong = 0;
        for (int y = 8; y <= 150; ++y)     // above the viewer's own label
            for (int x = -1; x < 145; ++x) // left of the label
            {
                QPointF const point = toLayout(QPointF(x, 149 - y) / scale, size, scale);
                osg::OverlayPtr const top = redArea.contains(x, y) ? red : blueArea.contains(x, y) ? blue : none;
                wrong += overlays.visibleAt(point) != top;
            }
        EXPECT_EQ(wrong, 0) << "at a width of " << width << " and a scale of " << scale;
    }
}

/// What is around all pixels of a picture that are red.
QRect redPart(QImage const& picture)
{
    QImage const mask = picture.createMaskFromColor(qRgb(255, 0, 0), Qt::MaskOutColor);
    return QRegion(QBitmap::fromImage(mask)).boundingRect();
}

using WindowOfProcess = Viewer;

TEST_F(WindowOfProcess, ShowsMeshAndOverlaysWhereStampingPutsThem)
{
    QImage const mesh = screenshot("");
    EXPECT_EQ(screenshot(" --frames 1"), mesh);
    EXPECT_NE(screenshot(" --frames 2"), mesh);
    write("triangle.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    QImage const triangle = screenshot(" triangle.obj");
    EXPECT_NE(triangle, mesh);
    write("triangle.mtl", "newmtl blue\nKd 0 0 1\n");
    write("blue.obj", "mtllib triangle.mtl\nusemtl blue\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    EXPECT_NE(screenshot(" blue.obj"), triangle);

    QImage const shown = screenshot(" --overlays labels.json");
    EXPECT_EQ(redPart(shown), QRect(10, 303 - 40, 40, 20));
    QImage pixels = toPixels(mesh);
    Scene scene(readOverlayFile("labels.json"));
    scene.setValues({"built-in shape", 1, 1});
    scene.stamp(pixels, osg::NullFC);
    EXPECT_LE(difference(shown, pixels.mirrored()), 1);

    _environment.insert("QT_SCALE_FACTOR", "2");
    QImage const large = screenshot(" --overlays labels.json");
    EXPECT_EQ(large.size(), QSize(802, 606));
    EXPECT_EQ(redPart(large), QRect(20, 606 - 80, 80, 40));
}

TEST_F(WindowOfProcess, RendersAndUploadsOnlyItsLabelTwiceASecondAndSaysSo)
{
    // The file's text, the viewer's label and the help, which is hidden and isn't uploaded; three pictures.
    QString const common = "--size 160x120 --overlays labels.json --frames ";
    EXPECT_EQ(run(common + "200"), Outcome(0, "200 frames  9 renderings  11 uploads\n", ""));
    std::string const complaint = "can't write \"no/a.png\": No such file or directory\n";
    EXPECT_EQ(run(common + "1 --screenshot no/a.png"), Outcome(1, "1 frames  3 renderings  5 uploads\n", complaint));
}

TEST_F(WindowOfProcess, SaysOnceThatAnOverlayCantBeDrawn)
{
    writePicture("red.png", Qt::red, {30000, 1});
    QByteArray const text = R"({"overlays":[{"text":"a","size":1000000}]})";
    for (std::string const complaint : {"can't draw an overlay: the image is larger than the context's limit of ",
                                        "labels.json: overlays[0]: can't draw "})
    {
        auto const [exitCode, output, errors] = run("--overlays labels.json --size 80x60 --frames 2");
        EXPECT_EQ(errors.rfind(complaint, 0), 0u) << errors;
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
        write("labels.json", text);
    }
}

/// A window with a still mesh and no label of changing counts.
class Window : public Viewer
{
  protected:
    Window()
    {
        _window.show();
        press(Qt::Key_Space);
        shown();
        press(Qt::Key_V, {194, 285}); // the label
    }

    /// The window's picture once what has been done shows.
    QImage shown()
    {
        int const end = _window.frameCount() + 3;
        QDeadlineTimer const deadline(60000);
        while (_window.frameCount() < end && !deadline.hasExpired())
            QCoreApplication::processEvents();
        EXPECT_GE(_window.frameCount(), end);
        return _window.screen()->grabWindow(_window.winId()).toImage();
    }

    void mouse(QEvent::Type type, QPointF const& position, Qt::MouseButton button = Qt::NoButton)
    {
        QMouseEvent event(type, position, position, button, button, Qt::NoModifier);
        QCoreApplication::sendEvent(&_window, &event);
    }

    void press(Qt::Key key, QPointF const& pointer = {})
    {
        mouse(QEvent::MouseMove, pointer);
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&_window, &event);
    }

    ScreenOverlays _overlays{readOverlayFile("labels.json"), {"a", 1, 1}};
    ViewerWindow _window{createTrefoilKnot(), _overlays, parseViewerOptions({"overlay-viewer", "--size", "388x293"})};
};

TEST_F(Window, FollowsItsSizeAndSavesTheSameStampedAndTiled)
{
    std::vector<OverlayEntry> entries = readOverlayFile("labels.json");
    write("made.json", R"({"overlays":[{"text": "j", "padding": 3, "shadow": {}, "backgroundTransparency": 0.5},
                                       {"contentType": "guide", "guide": "grid", "color": [0, 1, 0, 0.5]}]})");
    for (OverlayEntry const& entry : readOverlayFile("made.json"))
        entries.push_back(entry);
    _overlays.load(entries, {"a"});
    press(Qt::Key_V, {194, 285}); // the label
    _window.resize(564, 194);     // of two tiles; their edges are beside single precision fractions
    QImage const before = shown();
    press(Qt::Key_S);
    press(Qt::Key_T);
    QStringList const names = QDir().entryList({"overlay-viewer-*x.png"}); // sorted: as they have come
    ASSERT_EQ(names.size(), 6);
    EXPECT_LE(difference(before, QImage(names[0])), 1);
    for (int i = 0; i < 3; ++i)
    {
        QImage const stamped(names[i]), tiled(names[i + 3]);
        EXPECT_EQ(stamped.size(), QSize(564, 194) * (1 << i));
        EXPECT_LE(difference(stamped, tiled), 1) << i;
    }
    EXPECT_EQ(difference(before, shown()), 0) << "the layout isn't restored";
}

TEST_F(Window, IsAsBeforeOnceAKeyIsPressedTwice)
{
    QImage const before = shown();
    QPoint const overlap(35, 293 - 1 - 35); // of red and blue
    for (auto const& [key, color] :
         {std::pair{Qt::Key_V, Qt::blue}, {Qt::Key_R, Qt::blue}, {Qt::Key_H, Qt::red}, {Qt::Key_C, Qt::red}})
    {
        press(key, overlap);
        QImage const changed = shown();
        EXPECT_EQ(changed.pixelColor(overlap), QColor(color)) << key;
        EXPECT_GT(difference(changed, before), 50) << key;
        press(key, overlap);
        EXPECT_EQ(difference(shown(), before), 0) << key;
    }
    press(Qt::Key_V, {200, 150}); // where the help is hidden
    EXPECT_EQ(difference(shown(), before), 0);
}

TEST_F(Window, DragsAnOverlayWithoutRenderingIt)
{
    shown();
    osg::OverlayPtr const label = overlayOf("label");
    osg::Pnt2f const before = label->foreground->positions[0];
    osg::TextureChunk const& texture = *osg::drawChunksOf(label->foreground->material).texture;
    osg::UInt64 const revision = texture.getImageRevision();
    QPointF const on(std::round(before.x) + 3, 293 - std::round(before.y) - 3);
    mouse(QEvent::MouseButtonPress, on, Qt::LeftButton);
    mouse(QEvent::MouseMove, on + QPointF(-70, 10), Qt::LeftButton);
    mouse(QEvent::MouseMove, on + QPointF(-59.5, 30), Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, on + QPointF(-59.5, 30), Qt::LeftButton);
    mouse(QEvent::MouseMove, {0, 0});
    shown();
    EXPECT_EQ(label->foreground->positions[0].x, before.x - 59.5f);
    EXPECT_EQ(label->foreground->positions[0].y, before.y - 30.0f);
    EXPECT_EQ(texture.getImageRevision(), revision);
}

TEST_F(Window, TurnsAndEnlargesTheMesh)
{
    QImage const before = shown();
    auto const drag = [this](QPointF const& from, QPointF const& to) {
        mouse(QEvent::MouseButtonPress, from, Qt::LeftButton);
        mouse(QEvent::MouseMove, to, Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, to, Qt::LeftButton);
        return shown();
    };
    EXPECT_GT(difference(drag({200, 150}, {260, 120}), before), 50);
    EXPECT_EQ(difference(drag({260, 120}, {200, 150}), before), 0);
    QWheelEvent wheel({200, 150}, {200, 150}, {}, {0, 240}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&_window, &wheel);
    EXPECT_GT(difference(shown(), before), 50);
    EXPECT_EQ(redPart(shown()), redPart(before)) << "overlays stay";
}

TEST_F(Window, ShowsWhatIsDroppedOntoIt)
{
    QImage const before = shown();
    auto const drop = [this](QString const& file) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath())});
        QDropEvent event({}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        testing::internal::CaptureStderr();
        QCoreApplication::sendEvent(&_window, &event);
        EXPECT_TRUE(event.isAccepted());
        return testing::internal::GetCapturedStderr();
    };
    write("triangle.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    write("other.json",
          R"({"overlays": [{"contentType": "image", "image": "red.png", "size": 20, "anchor": [1, 1]}]})");
    EXPECT_EQ(drop("triangle.obj"), "");
    EXPECT_GT(difference(shown(), before), 50);
    EXPECT_EQ(redPart(shown()), redPart(before));
    EXPECT_EQ(drop("other.json"), "");
    EXPECT_EQ(redPart(shown()), QRect(388 - 40, 0, 40, 20));
    EXPECT_EQ(_window.title(), "triangle.obj, other.json");
    EXPECT_NE(drop("red.png").find("red.png: expected a mesh (.obj, .stl or .ply), got a picture\n"),
              std::string::npos);
    write("huge.json", R"({"overlays": [{"text": "huge", "size": 99999}]})");
    EXPECT_NE(drop("huge.json").find("overlays[0]: can't draw"), std::string::npos);
    EXPECT_EQ(redPart(shown()), QRect(388 - 40, 0, 40, 20)) << "those of before stay";
    EXPECT_EQ(_window.title(), "triangle.obj, other.json");
}

TEST_F(Window, OutlivesItsContext)
{
    QImage const before = shown();
    ASSERT_TRUE(_window.context()->create()); // destroys what was there
    EXPECT_EQ(difference(shown(), before), 0);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    QGuiApplication const application(argumentCount, arguments);
    return RUN_ALL_TESTS();
}
