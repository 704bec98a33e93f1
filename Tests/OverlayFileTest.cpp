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

std::vector<OverlayEntry> read(QByteArray const& json)
{
    QTemporaryDir const folder;
    QImage picture(2, 1, QImage::Format_RGBA8888);
    picture.setPixelColor(0, 0, QColor(255, 0, 0, 51));
    picture.setPixelColor(1, 0, QColor(0, 0, 255, 255));
    EXPECT_TRUE(picture.save(folder.filePath("logo.png")));
    QFile file(folder.filePath("labels.json"));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(json);
    file.close();
    return readOverlayFile(file.fileName());
}

/// What is said of a file that is refused, behind its path.
std::string complaintOf(QByteArray const& json)
try
{
    return read(json).empty() ? "accepted without entries" : "accepted";
}
catch (std::runtime_error const& error)
{
    std::string const text = error.what(), name = "/labels.json: ";
    return text.substr(text.find(name) + name.size());
}

TEST(OverlayFile, WrongFilesAreOneLineOfComplaint)
{
    std::pair<QByteArray, char const*> const rows[] = {
        {"", "line 1, column 1: illegal value"},
        {"[1]", R"(expected an object with the key "overlays", got [1])"},
        {"{\n\"overlays\": [\n{\"text\": \"é\" 1}]}", "line 3, column 15: unterminated object"},
        {QByteArray(5000, '['), "line 1, column 1026: too deeply nested document"},
        {"{\"overlays\":[{\"text\":\"\xff\"}]}", "line 1, column 23: invalid UTF8 string"},
        {R"({"overlays":[{"text":"a","size":1e400}]})", "line 1, column 38: illegal number"},
        {"{}", "overlays: expected an array of objects, got nothing"},
        {R"({"overlay":[]})", R"(overlay: unknown key, did you mean "overlays"?)"},
        {R"({"overlays":[{"text":"a"},null]})", "overlays[1]: expected an object, got null"},
    };
    for (auto const& [json, complaint] : rows)
        EXPECT_EQ(complaintOf(json), complaint) << json.left(100).data();
}

TEST(OverlayFile, WrongEntriesAreOneLineOfComplaint)
{
    std::pair<QByteArray, std::string> const rows[] = {
        {R"("anchr":[0,0])", R"(anchr: unknown key, did you mean "anchor"?)"},
        {R"("contentTipe":1)", R"(contentTipe: unknown key, did you mean "contentType"?)"},
        {R"("si\nze":1)", R"(si\nze: unknown key, did you mean "size"?)"},
        {"", "text: expected a string, got nothing"},
        {R"("contentType":"image","text":"a")", "image: expected a path, got nothing"},
        {R"("contentType":"Text")", R"(contentType: expected "text" or "image", got "Text")"},
        {R"("sizeMode":1)", R"(sizeMode: expected "absolute" or "relative", got 1)"},
        {R"("anchor":"top")", R"(anchor: expected two numbers, got "top")"},
        {R"("offset":[1,2,3])", "offset: expected two numbers, got [1,2,3]"},
        {R"("anchor":[0,1e308])", "anchor: expected two numbers in single precision's range, got [0,1e+308]"},
        {R"("textColor":[0,0,0,1.01])", "textColor: expected four numbers from 0 to 1, got [0,0,0,1.01]"},
        {R"("backgroundColor":[0,0,-1])", "backgroundColor: expected three numbers from 0 to 1, got [0,0,-1]"},
        {R"("backgroundTransparency":2)",
         "backgroundTransparency: expected a number or three numbers from 0 to 1, got 2"},
        {R"("size":0)", "size: expected a number above 0, got 0"},
        {R"("size":1e-320)", "size: expected a number above 0 in single precision's range, got 1e-320"},
        {R"("text":"a","size":0.5)", "size: expected at least 1 point, got 0.5"},
        {R"("text":"a","sizeMode":"relative")", "size: expected a fraction of the frame's height, got nothing"},
        {R"("visible":0)", "visible: expected true or false, got 0"},
        {R"("text":"a\u0000b")", R"(text: expected a string without zero bytes, got "a\u0000b")"},
        {R"("text":"{f}")", R"(text: expected {file}, {index} or {count}, and {{ or }} for a brace, got "{f}")"},
        {"\"size\":\"" + QByteArray(61, '1') + '"',
         "size: expected a number above 0, got \"" + std::string(59, '1') + "..."},
        {R"("contentType":"image","image":"no.png")", R"(image: can't read "no.png": File not found)"},
    };
    for (auto const& [keys, complaint] : rows)
        EXPECT_EQ(complaintOf("{\"overlays\":[{" + keys + "}]}"), "overlays[0]." + complaint);
}

TEST(Placeholders, AreReplacedOrRefused)
{
    std::pair<char const*, char const*> const rows[] = {
        {"", ""},
        {"{file}: {index}/{count}", "a {b}.png: 7/12"},
        {"}}{{", "}{"},
        {"{{file}}", "{file}"},
        {"{{{index}}}", "{7}"},
    };
    for (auto const& [text, expanded] : rows)
        EXPECT_EQ(expand(text, {"a {b}.png", 7, 12}), QString(expanded));
    for (char const* text : {"{", "}", "{}", "{index", "{index}}", "{Index}"})
        EXPECT_EQ(expand(text, {"a {b}.png", 7, 12}), std::nullopt) << text;
}

TEST(OverlayNodes, HaveWhatTheFileSays)
{
    osg::NodePtr const root = osg::create<osg::Node>();
    osg::addRef(root);
    auto const create = [&root](QByteArray const& entry) {
        createOverlayNode(root, read("{\"overlays\":[" + entry + "]}").at(0));
        return osg::dynamicCast<osg::Overlay>(root->children.back()->core);
    };
    osg::OverlayPtr overlay = create(R"({"contentType": "image", "image": "logo.png", "font": "Noto Sans",
        "textColor": [0.1, 0.2, 0.3, 0.4], "backgroundColor": [0.5, 0.6, 0.7], "backgroundTransparency": 0.25,
        "sizeMode": "relative", "size": 0.5, "anchor": [0.25, 0.75], "offset": [-3, 4], "name": "sun",
        "visible": false})");
    EXPECT_EQ(overlay->contentType, osg::Overlay::ContentImage);
    EXPECT_EQ(overlay->font, "Noto Sans");
    EXPECT_FLOAT_EQ(overlay->textColor.a, 0.4f);
    EXPECT_FLOAT_EQ(overlay->backgroundColor.b, 0.7f);
    EXPECT_FLOAT_EQ(overlay->backgroundTransparency.b, 0.25f);
    EXPECT_EQ(overlay->sizeMode, osg::Overlay::SizeRelative);
    EXPECT_EQ(overlay->size, 0.5f);
    EXPECT_EQ(overlay->anchor.y, 0.75f);
    EXPECT_EQ(overlay->offset.x, -3.0f);
    EXPECT_EQ(overlay->image->pixels, (std::vector<osg::UInt8>{51, 0, 0, 51, 0, 0, 255, 255}));
    EXPECT_EQ(root->children[0]->travMask, 0u);
    EXPECT_FALSE(overlay->foreground->active);
    osg::UInt32 const group = osg::Name::getClassType().getGroupId();
    EXPECT_EQ(osg::dynamicCast<osg::Name>(root->children[0]->findAttachment(group))->name, "sun");

    overlay = create(R"({"text": "a"})");
    EXPECT_EQ(root->children[1]->travMask, 0xFFFFFFFF);
    EXPECT_EQ(overlay->size, 12.0f) << "the library's default";
    for (auto const& [text, rendersAnew] : {std::pair{"frame 1", true}, {"frame 1", false}, {"frame 2", true}})
    {
        overlay->dirty = false;
        setText(overlay, text);
        EXPECT_EQ(overlay->text, text);
        EXPECT_EQ(overlay->dirty, rendersAnew) << text;
    }
    osg::subRef(root);
    EXPECT_EQ(osg::FieldContainerFactory::getNumContainers(), 0u);
}

} // namespace
