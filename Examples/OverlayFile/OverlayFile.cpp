#include "OverlayFile.h"

#include "Json.h"
#include "Placeholders.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <map>

namespace ztExamples
{

char const overlayFileHelp[] = R"(
Each overlay is an object with these keys; what is left out has the value in parentheses:
  contentType             "text" or "image" ("text")
  text                    what a text shows, lines separated by \n; needed by a text
  image                   path of the picture, relative to the JSON file; needed by an image
  font                    font family of the system (its default)
  textColor               [red, green, blue, alpha], each from 0 to 1 ([1, 1, 1, 1])
  backgroundColor         [red, green, blue] behind a text ([0, 0, 0])
  backgroundTransparency  0 is opaque and 1 is clear, or [red, green, blue], whose luminance counts (1)
  sizeMode                "absolute" or "relative" ("absolute")
  size                    relative: the fraction of the frame's height that all the text's lines or the
                          picture take, needed then; absolute: points of a text's font, at least 1, or
                          DPI-independent pixels of a picture's height (12)
  anchor                  [x, y]: the point at this fraction of the overlay's size lies on the point at the
                          same fraction of the frame's; [0, 0] is lower left, [1, 1] upper right ([0, 0])
  offset                  [x, y]: shift from there in DPI-independent pixels, x right, y up ([0, 0])
  name                    a name for the overlay
  visible                 true or false (true)
)";

namespace
{

QString toTemplate(QJsonValue const& value)
{
    QString const text = toText(value);
    expect(text.size() <= maxTextLength, QString("%1 characters at most").arg(maxTextLength), value);
    expect(expand(text, {}).has_value(), "{file}, {index} or {count}, and {{ or }} for a brace", value);
    return text;
}

/// The number of the word that the value is.
osg::Int32 toChoice(QJsonValue const& value, QString const& word0, QString const& word1)
{
    expect(value == word0 || value == word1, QString("\"%1\" or \"%2\"").arg(word0, word1), value);
    return value == word0 ? 0 : 1;
}

/// Where an overlay file's pictures are and how many pixels they may have.
struct Source
{
    QDir folder;
    PixelLimit limit;
};

void readPicture(QJsonValue const& value, Source& source, OverlayEntry& entry)
{
    entry.imageFile = source.folder.filePath(toText(value));
    at("can't read " + shown(value),
       [&] { entry.image = toPixels(PictureFile(entry.imageFile, source.limit).read()); });
}

using ReadKey = void (*)(QJsonValue const& value, Source& source, OverlayEntry& entry);

std::map<QString, ReadKey> const& entryKeys()
{
    static_assert(osg::Overlay::ContentText == 0 && osg::Overlay::SizeAbsolute == 0);
    using Value = QJsonValue const&;
    using Entry = OverlayEntry&;
    static std::map<QString, ReadKey> const keys = {
        {"anchor", [](Value v, Source&, Entry e) { e.anchor = toVector(v); }},
        {"backgroundColor", [](Value v, Source&, Entry e) { e.backgroundColor = toColor3(v); }},
        {"backgroundTransparency", [](Value v, Source&, Entry e) { e.backgroundTransparency = toTransparency(v); }},
        {"contentType", [](Value v, Source&, Entry e) { e.contentType = toChoice(v, "text", "image"); }},
        {"font", [](Value v, Source&, Entry e) { e.font = toUtf8(v); }},
        {"image", readPicture},
        {"name", [](Value v, Source&, Entry e) { e.name = toUtf8(v); }},
        {"offset", [](Value v, Source&, Entry e) { e.offset = toVector(v); }},
        {"size", [](Value v, Source&, Entry e) { e.size = toSize(v); }},
        {"sizeMode", [](Value v, Source&, Entry e) { e.sizeMode = toChoice(v, "absolute", "relative"); }},
        {"text", [](Value v, Source&, Entry e) { e.text = toTemplate(v); }},
        {"textColor", [](Value v, Source&, Entry e) { e.textColor = toColor4(v); }},
        {"visible", [](Value v, Source&, Entry e) { e.visible = toBool(v); }},
    };
    return keys;
}

std::vector<std::string> entryKeyNames()
{
    std::vector<std::string> names;
    for (auto const& [name, read] : entryKeys())
        names.push_back(name.toStdString());
    return names;
}

/// What one key asks of another.
void checkWhole(OverlayEntry const& entry, QJsonObject const& object, QString const& place)
{
    bool const isText = entry.contentType.value_or(osg::Overlay::ContentText) == osg::Overlay::ContentText;
    bool const isRelative = entry.sizeMode == osg::Overlay::SizeRelative;
    at(place + (isText ? ".text" : ".image"), [&] {
        expect(!isText || entry.text, "a string", QJsonValue::Undefined);
        expect(isText || entry.image, "a path", QJsonValue::Undefined);
    });
    at(place + ".size", [&] {
        QJsonValue const size = object["size"];
        expect(!isRelative || entry.size, "a fraction of the frame's height", size);
        expect(isRelative || !isText || entry.size.value_or(1.0f) >= 1.0f, "at least 1 point", size);
    });
}

OverlayEntry toEntry(QJsonValue const& value, QString const& place, Source& source)
{
    at(place, [&] { expect(value.isObject(), "an object", value); });
    QJsonObject const object = value.toObject();
    OverlayEntry entry;
    entry.place = place;
    for (auto it = object.begin(); it != object.end(); ++it)
        at(place + "." + shownKey(it.key()), [&] {
            auto const key = entryKeys().find(it.key());
            if (key == entryKeys().end())
                complainOfKey(it.key(), entryKeyNames());
            key->second(it.value(), source, entry);
        });
    checkWhole(entry, object, place);
    return entry;
}

std::vector<OverlayEntry> toEntries(QJsonObject const& top, Source source)
{
    for (QString const& key : top.keys())
        if (key != "overlays")
            at(shownKey(key), [&] { complainOfKey(key, {"overlays"}); });
    QJsonValue const overlays = top["overlays"];
    at("overlays", [&] { expect(overlays.isArray(), "an array of objects", overlays); });

    QJsonArray const array = overlays.toArray();
    std::vector<OverlayEntry> entries;
    for (int i = 0; i < array.size(); ++i)
        entries.push_back(toEntry(array[i], QString("overlays[%1]").arg(i), source));
    return entries;
}

} // namespace

std::vector<OverlayEntry> readOverlayFile(QString const& path, qint64 maxPixels)
{
    std::vector<OverlayEntry> entries;
    at(path, [&] {
        QJsonValue const top = readJson(path);
        expect(top.isObject(), "an object with the key \"overlays\"", top);
        entries = toEntries(top.toObject(), {QFileInfo(path).dir(), PixelLimit(maxPixels)});
    });
    for (OverlayEntry& entry : entries)
        entry.place = path + ": " + entry.place;
    return entries;
}

} // namespace ztExamples
