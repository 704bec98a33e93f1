// Overlay files: what they say, what is wrong with them, and the nodes that come of them.

#include "OverlayFile.h"
#include "OverlayNodes.h"
#include "Placeholders.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace
{

using namespace ztExamples;

struct FileCase
{
    char const* name;
    QByteArray json;
    char const* complaint;
};

void PrintTo(FileCase const& row, std::ostream* stream)
{
    *stream << row.name;
}

QString writeFile(QTemporaryDir const& folder, QByteArray const& json)
{
    QFile file(folder.filePath("labels.json"));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(json);
    return file.fileName();
}

std::vector<OverlayEntry> read(QByteArray const& json)
{
    QTemporaryDir const folder;
    QImage picture(2, 1, QImage::Format_RGBA8888);
    picture.setPixelColor(0, 0, QColor(255, 0, 0, 51));
    picture.setPixelColor(1, 0, QColor(0, 0, 255, 255));
    EXPECT_TRUE(picture.save(folder.filePath("logo.png")));
    return readOverlayFile(writeFile(folder, json));
}

class WrongFile : public testing::TestWithParam<FileCase>
{
};

TEST_P(WrongFile, IsOneLineOfComplaint)
{
    QTemporaryDir const folder;
    QString const path = writeFile(folder, GetParam().json);
    try
    {
        readOverlayFile(path);
        FAIL() << "accepted";
    }
    catch (std::runtime_error const& error)
    {
        EXPECT_EQ(error.what(), path.toStdString() + ": " + GetParam().complaint);
    }
}

QByteArray const nested = "{\"overlays\":" + QByteArray(5000, '[') + QByteArray(5000, ']') + "}";

FileCase const wrongFiles[] = {
    {"Empty", "", "line 1, column 1: illegal value"},
    {"Array", "[1]", R"(expected an object with the key "overlays", got [1])"},
    {"Garbage", "{\"overlays\":[]}\n x", "line 2, column 2: garbage at the end of the document"},
    {"MissingComma", "{\n\"overlays\": [\n{\"text\": \"é\" 1}]}", "line 3, column 15: unterminated object"},
    {"TooDeep", nested, "line 1, column 1037: too deeply nested document"},
    {"NotUtf8", "{\"overlays\":[{\"text\":\"\xff\"}]}", "line 1, column 23: invalid UTF8 string"},
    {"BeyondDouble", R"({"overlays":[{"text":"a","size":1e400}]})", "line 1, column 38: illegal number"},
    {"NoList", "{}", "overlays: expected an array of objects, got nothing"},
    {"TopKey", R"({"overlay":[]})", R"(overlay: unknown key, did you mean "overlays"?)"},
    {"NoObject", R"({"overlays":[{"text":"a"},null]})", "overlays[1]: expected an object, got null"},
    {"NearKey", R"({"overlays":[{"anchr":[0,0]}]})", R"(overlays[0].anchr: unknown key, did you mean "anchor"?)"},
    {"NearLongKey", R"({"overlays":[{"text":"a","backgroundTransparancy":1}]})",
     R"(overlays[0].backgroundTransparancy: unknown key, did you mean "backgroundTransparency"?)"},
    {"KeyWithLineBreak", R"({"overlays":[{"si\nze":1}]})", R"(overlays[0].si\nze: unknown key, did you mean "size"?)"},
    {"NoText", R"({"overlays":[{}]})", "overlays[0].text: expected a string, got nothing"},
    {"NoImage", R"({"overlays":[{"contentType":"image","text":"a"}]})",
     "overlays[0].image: expected a path, got nothing"},
    {"ContentType", R"({"overlays":[{"contentType":"Text"}]})",
     R"(overlays[0].contentType: expected "text" or "image", got "Text")"},
    {"SizeMode", R"({"overlays":[{"sizeMode":1}]})",
     R"(overlays[0].sizeMode: expected "absolute" or "relative", got 1)"},
    {"Word", R"({"overlays":[{"text":"a","anchor":"top"}]})", R"(overlays[0].anchor: expected two numbers, got "top")"},
    {"TooMany", R"({"overlays":[{"text":"a","offset":[1,2,3]}]})",
     "overlays[0].offset: expected two numbers, got [1,2,3]"},
    {"BeyondFloat", R"({"overlays":[{"text":"a","anchor":[0,1e308]}]})",
     "overlays[0].anchor: expected two numbers in single precision's range, got [0,1e+308]"},
    {"Colour", R"({"overlays":[{"text":"a","textColor":[0,0,0,1.01]}]})",
     "overlays[0].textColor: expected four numbers from 0 to 1, got [0,0,0,1.01]"},
    {"ColourOfThree", R"({"overlays":[{"text":"a","backgroundColor":[0,0,-1]}]})",
     "overlays[0].backgroundColor: expected three numbers from 0 to 1, got [0,0,-1]"},
    {"Transparency", R"({"overlays":[{"text":"a","backgroundTransparency":2}]})",
     "overlays[0].backgroundTransparency: expected a number or three numbers from 0 to 1, got 2"},
    {"SizeOfNothing", R"({"overlays":[{"text":"a","size":0}]})", "overlays[0].size: expected a number above 0, got 0"},
    {"SizeBelowFloat", R"({"overlays":[{"text":"a","size":1e-320}]})",
     "overlays[0].size: expected a number above 0 in single precision's range, got 1e-320"},
    {"LessThanAPoint", R"({"overlays":[{"text":"a","size":0.5}]})",
     "overlays[0].size: expected at least 1 point, got 0.5"},
    {"RelativeToWhat", R"({"overlays":[{"text":"a","sizeMode":"relative"}]})",
     "overlays[0].size: expected a fraction of the frame's height, got nothing"},
    {"Visible", R"({"overlays":[{"text":"a","visible":0}]})", "overlays[0].visible: expected true or false, got 0"},
    {"ZeroByte", R"({"overlays":[{"text":"a\u0000b"}]})",
     R"(overlays[0].text: expected a string without zero bytes, got "a\u0000b")"},
    {"Placeholder", R"({"overlays":[{"text":"{frame}"}]})",
     R"(overlays[0].text: expected {file}, {index} or {count}, and {{ or }} for a brace, got "{frame}")"},
    {"LongValue", R"({"overlays":[{"text":["0123456789012345678901234567890123456789012345678901234567890"]}]})",
     R"(overlays[0].text: expected a string, got ["0123456789012345678901234567890123456789012345678901234567...)"},
    {"NoSuchPicture", R"({"overlays":[{"contentType":"image","image":"no.png"}]})",
     R"(overlays[0].image: can't read "no.png": File not found)"},
    {"PictureIsFolder", R"({"overlays":[{"contentType":"image","image":"."}]})",
     R"(overlays[0].image: can't read ".": Is a directory)"},
    {"NoPicture", R"({"overlays":[{"contentType":"image","image":"labels.json"}]})",
     R"(overlays[0].image: can't read "labels.json": Unsupported image format)"},
};

INSTANTIATE_TEST_SUITE_P(All, WrongFile, testing::ValuesIn(wrongFiles), [](auto const& row) { return row.param.name; });

TEST(Placeholders, AreReplacedOrRefused)
{
    struct
    {
        char const* text;
        std::optional<QString> expanded;
    } const rows[] = {
        {"", ""},
        {"{file}: {index}/{count}", "a {b}.png: 7/12"},
        {"{{file}}", "{file}"},
        {"{{{index}}}", "{7}"},
        {"}}{{", "}{"},
        {"{", std::nullopt},
        {"}", std::nullopt},
        {"{}", std::nullopt},
        {"{index", std::nullopt},
        {"{index}}", std::nullopt},
        {"{Index}", std::nullopt},
    };
    for (auto const& row : rows)
        EXPECT_EQ(expand(row.text, {"a {b}.png", 7, 12}), row.expanded) << row.text;
}

/// A scene's worth of nodes that goes with the test, and takes all containers along.
class Nodes : public testing::Test
{
  protected:
    Nodes() : root(osg::create<osg::Node>()) { osg::addRef(root); }
    ~Nodes() override
    {
        osg::subRef(root);
        EXPECT_EQ(osg::FieldContainerFactory::getNumContainers(), 0u);
    }

    osg::OverlayPtr create(QByteArray const& entry)
    {
        osg::NodePtr const node = createOverlayNode(root, read("{\"overlays\":[" + entry + "]}").front());
        return osg::dynamicCast<osg::Overlay>(node->core);
    }

    osg::NodePtr root;
};

TEST_F(Nodes, HaveWhatTheFileSays)
{
    osg::OverlayPtr const overlay = create(R"({"contentType": "image", "image": "logo.png", "font": "Noto Sans",
        "textColor": [0.1, 0.2, 0.3, 0.4], "backgroundColor": [0.5, 0.6, 0.7], "backgroundTransparency": 0.25,
        "sizeMode": "relative", "size": 0.5, "anchor": [0.25, 0.75], "offset": [-3, 4], "name": "sun",
        "visible": false})");
    EXPECT_EQ(overlay->contentType, osg::Overlay::ContentImage);
    EXPECT_EQ(overlay->font, "Noto Sans");
    EXPECT_FLOAT_EQ(overlay->textColor.a, 0.4f);
    EXPECT_FLOAT_EQ(overlay->backgroundColor.b, 0.7f);
    EXPECT_FLOAT_EQ(overlay->backgroundTransparency.g, 0.25f);
    EXPECT_EQ(overlay->sizeMode, osg::Overlay::SizeRelative);
    EXPECT_EQ(overlay->size, 0.5f);
    EXPECT_EQ(overlay->anchor.y, 0.75f);
    EXPECT_EQ(overlay->offset.x, -3.0f);
    EXPECT_EQ(overlay->image->pixels, (std::vector<osg::UInt8>{51, 0, 0, 51, 0, 0, 255, 255}));

    osg::NodePtr const node = root->children.front();
    EXPECT_EQ(node->travMask, 0u);
    EXPECT_FALSE(overlay->foreground->active);
    auto const name = osg::dynamicCast<osg::Name>(node->findAttachment(osg::Name::getClassType().getGroupId()));
    ASSERT_NE(name, osg::NullFC);
    EXPECT_EQ(name->name, "sun");
}

TEST_F(Nodes, HaveTheLibrarysDefaultsElse)
{
    osg::OverlayPtr const overlay = create(R"({"text": "a"})");
    auto const fresh = osg::create<osg::Overlay>();
    osg::addRef(fresh);
    EXPECT_EQ(overlay->contentType, fresh->contentType);
    EXPECT_EQ(overlay->size, fresh->size);
    EXPECT_EQ(overlay->textColor.a, fresh->textColor.a);
    EXPECT_EQ(overlay->backgroundTransparency.r, fresh->backgroundTransparency.r);
    EXPECT_EQ(root->children.front()->travMask, 0xFFFFFFFF);
    osg::subRef(fresh);
}

TEST_F(Nodes, AreRenderedAnewForANewTextOnly)
{
    osg::OverlayPtr const overlay = create(R"({"text": "a"})");
    setText(overlay, "frame 1");
    EXPECT_EQ(overlay->text, "frame 1");
    overlay->dirty = false;
    setText(overlay, "frame 1");
    EXPECT_FALSE(overlay->dirty);
    setText(overlay, "frame 2");
    EXPECT_TRUE(overlay->dirty);
}

} // namespace
