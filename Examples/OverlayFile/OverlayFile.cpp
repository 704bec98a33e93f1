#include "OverlayFile.h"

#include "Fonts.h"
#include "Json.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <map>

namespace ztExamples
{

char const overlayFileHelp[] = R"(
Beside "overlays" the file may have "fontFiles", an array of paths of font files, relative to it as all its
paths, and "$schema" for an editor. Each overlay is an object with these keys; what is left out has the value in parentheses:
  contentType             "text", "image" or "guide" ("text")
  text                    what a text shows, lines separated by \n; needed by a text
  image                   path of the picture, relative to the file; needed by an image
  font                    font family of the system or of "fontFiles" (the system's default)
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
  padding                 a number or [x, y]: how far the background reaches beyond a text, in DPI-independent
                          pixels; the anchor holds for the padded box (0)
  shadow                  {"offset": [x, y], "color": [red, green, blue, alpha]} beneath a text, offset as
                          above, which is placed as if it had none ({"offset": [1, -1], "color": [0, 0, 0, 1]})
  name                    a name for the overlay
  visible                 true or false (true)
Pictures of shapes (SVG without pictures inside, where Qt has its plugin) are drawn at the size that they are shown at.

A guide follows the frame's shape in whole pixels. It has a name, visible and these keys:
  guide                   "letterbox", "safe", "grid", "cross" or "bar"; needed
  color                   [red, green, blue, alpha] (lines: [1, 1, 1, 1]; letterbox and bar: [0, 0, 0, 1])
  lineWidth               of safe, grid and cross in DPI-independent pixels (1)
  aspect                  letterbox: width divided by height of what it leaves free; needed
  fractions               safe: of the frame's size that each rectangle encloses ([0.9])
  columns, rows           grid: into how many parts it divides the frame, up to 100 (3)
  length                  cross: as a fraction of the frame's height (0.1)
  rectangle               bar: [x, y, width, height] as fractions of the frame, y up; needed
)";

namespace
{

/// Where an overlay file's pictures are, how many pixels they may have, and what placeholders stand for.
struct Source
{
    QDir folder;
    PixelLimit limit;
    RunValues const& run;
    /// How many rectangles the guides may still have.
    int rectanglesLeft = 20000;
};

Template toTemplate(QJsonValue const& value, RunValues const& run)
{
    QString const text = toText(value);
    expect(text.size() <= maxTextLength, QString("%1 characters at most").arg(maxTextLength), value);
    return parseTemplate(text, run);
}

void readText(QJsonValue const& value, Source& source, OverlayEntry& entry)
{
    entry.text = toTemplate(value, source.run);
    entry.writtenText = value.toString();
}

void readPicture(QString const& path, OverlayEntry& entry, PixelLimit& limit)
{
    QString const file = QDir(entry.folder).filePath(path);
    std::optional<VectorPicture> shapes;
    std::optional<QImage> pixels;
    at("can't read " + shown(path), [&] {
        if (VectorPicture::isOne(file))
            shapes.emplace(file);
        else
            pixels = toPixels(PictureFile(file, limit).read());
    });
    entry.imageFile = file;
    entry.vectorPicture = std::move(shapes);
    entry.image = std::move(pixels);
}

void readImage(QJsonValue const& value, Source& source, OverlayEntry& entry)
{
    entry.folder = source.folder.path();
    Template const path = toTemplate(value, source.run);
    if (isConstant(path))
        readPicture(expand(path, {}), entry, source.limit);
    else
        entry.imagePath = path;
}

std::vector<float> toManyFractions(QJsonValue const& value)
{
    constexpr int most = 16;
    QJsonArray const array = value.toArray();
    expect(!array.isEmpty() && array.size() <= most, QString("an array of 1 to %1 fractions").arg(most), value);
    std::vector<float> fractions;
    for (QJsonValue const& fraction : array)
        fractions.push_back(toFraction(fraction));
    return fractions;
}

Shadow toShadow(QJsonValue const& value)
{
    expect(value.isObject(), "an object with \"offset\" and \"color\"", value);
    QJsonObject const object = value.toObject();
    for (QString const& key : object.keys())
        if (key != "offset" && key != "color")
            at(shownKey(key), [&] { complainOfKey(key, {"offset", "color"}); });
    Shadow shadow;
    if (object.contains("offset"))
        at("offset", [&] { shadow.offset = toVector(object["offset"]); });
    if (object.contains("color"))
        at("color", [&] { shadow.color = toColor4(object["color"]); });
    return shadow;
}

using ReadKey = void (*)(QJsonValue const& value, Source& source, OverlayEntry& entry);

/// Kinds of overlays.
enum Users : unsigned
{
    Text = 1,
    Picture = 2,
    FirstGuide = 4,
    Letterbox = FirstGuide << Guide::Letterbox,
    Safe = FirstGuide << Guide::Safe,
    Grid = FirstGuide << Guide::Grid,
    Cross = FirstGuide << Guide::Cross,
    Bar = FirstGuide << Guide::Bar,
    Lines = Safe | Grid | Cross,
    AnyGuide = Lines | Letterbox | Bar,
    Placed = Text | Picture,
    Any = Placed | AnyGuide
};

struct Key
{
    unsigned users;
    ReadKey read;
};

std::map<QString, Key> const& entryKeys()
{
    static_assert(osg::Overlay::ContentText == 0 && osg::Overlay::ContentImage == 1 && contentGuide == 2);
    static_assert(osg::Overlay::SizeAbsolute == 0 && osg::Overlay::SizeRelative == 1);
    constexpr int maxParts = 100;
    using Value = QJsonValue const&;
    using Entry = OverlayEntry&;
    static std::map<QString, Key> const keys = {
        {"anchor", {Placed, [](Value v, Source&, Entry e) { e.anchor = toVector(v); }}},
        {"aspect", {Letterbox, [](Value v, Source&, Entry e) { e.guide.aspect = toSize(v); }}},
        {"backgroundColor", {Placed, [](Value v, Source&, Entry e) { e.backgroundColor = toColor3(v); }}},
        {"backgroundTransparency",
         {Placed, [](Value v, Source&, Entry e) { e.backgroundTransparency = toTransparency(v); }}},
        {"color", {AnyGuide, [](Value v, Source&, Entry e) { e.guide.color = toColor4(v); }}},
        {"columns", {Grid, [](Value v, Source&, Entry e) { e.guide.columns = toWhole(v, 1, maxParts); }}},
        {"contentType",
         {Any,
          [](Value v, Source&, Entry e) {
              e.contentType = toChoice(v, {"text", "image", "guide"});
          }}},
        {"font", {Placed, [](Value v, Source&, Entry e) { e.font = toUtf8(v); }}},
        {"fractions", {Safe, [](Value v, Source&, Entry e) { e.guide.fractions = toManyFractions(v); }}},
        {"guide", {AnyGuide, [](Value v, Source&, Entry e) { e.guide.kind = Guide::Kind(toChoice(v, guideNames())); }}},
        {"image", {Placed, readImage}},
        {"length", {Cross, [](Value v, Source&, Entry e) { e.guide.length = toFraction(v); }}},
        {"lineWidth", {Lines, [](Value v, Source&, Entry e) { e.guide.lineWidth = toSize(v); }}},
        {"name", {Any, [](Value v, Source&, Entry e) { e.name = toUtf8(v); }}},
        {"offset", {Placed, [](Value v, Source&, Entry e) { e.offset = toVector(v); }}},
        {"padding", {Text, [](Value v, Source&, Entry e) { e.padding = toPadding(v); }}},
        {"rectangle", {Bar, [](Value v, Source&, Entry e) { e.guide.rectangle = toFractions(v); }}},
        {"rows", {Grid, [](Value v, Source&, Entry e) { e.guide.rows = toWhole(v, 1, maxParts); }}},
        {"shadow", {Text, [](Value v, Source&, Entry e) { e.shadow = toShadow(v); }}},
        {"size", {Placed, [](Value v, Source&, Entry e) { e.size = toSize(v); }}},
        {"sizeMode", {Placed, [](Value v, Source&, Entry e) { e.sizeMode = toChoice(v, {"absolute", "relative"}); }}},
        {"text", {Placed, readText}},
        {"textColor", {Placed, [](Value v, Source&, Entry e) { e.textColor = toColor4(v); }}},
        {"visible", {Any, [](Value v, Source&, Entry e) { e.visible = toBool(v); }}},
    };
    return keys;
}

std::vector<std::string> entryKeyNames()
{
    std::vector<std::string> names;
    for (auto const& [name, key] : entryKeys())
        names.push_back(name.toStdString());
    return names;
}

/// That each key belongs to the kind of overlay.
void checkKeys(OverlayEntry const& entry, QJsonObject const& object, QString const& place)
{
    QString const contents[] = {"a text", "an image", "a guide"};
    osg::Int32 const type = entry.contentType.value_or(osg::Overlay::ContentText);
    bool const isGuide = type == contentGuide;
    unsigned const user = isGuide ? unsigned(FirstGuide) << *entry.guide.kind : unsigned(Text) << type;
    QString const kind = contents[type] + (isGuide ? " \"" + guideNames()[*entry.guide.kind] + "\"" : "");
    for (QString const& key : object.keys())
        at(place + "." + key, [&] {
            if (!(entryKeys().at(key).users & user))
                complain("no key of " + kind);
        });
}

void checkGuide(Guide const& guide, QString const& place, Source& source)
{
    auto const expectKey = [&place](bool isThere, QString const& key, QString const& expected) {
        at(place + "." + key, [&] { expect(isThere, expected, QJsonValue::Undefined); });
    };
    expectKey(guide.kind != Guide::Letterbox || guide.aspect, "aspect", "a number above 0");
    expectKey(guide.kind != Guide::Bar || guide.rectangle, "rectangle", "four numbers from 0 to 1");
    source.rectanglesLeft -= int(layOut(guide, {1, 1}, {1.0, 1.0}).size());
    if (source.rectanglesLeft < 0)
        complain(place + ": the guides of a file may not have so many lines");
}

/// What one key asks of another.
void checkWhole(OverlayEntry const& entry, QJsonObject const& object, QString const& place, Source& source)
{
    osg::Int32 const type = entry.contentType.value_or(osg::Overlay::ContentText);
    bool const isText = type == osg::Overlay::ContentText, isPicture = type == osg::Overlay::ContentImage;
    bool const isRelative = entry.sizeMode == osg::Overlay::SizeRelative;
    bool const isGuide = type == contentGuide;
    at(place + ".guide", [&] { expect(!isGuide || entry.guide.kind, "a guide's name", QJsonValue::Undefined); });
    checkKeys(entry, object, place);
    if (isGuide)
        checkGuide(entry.guide, place, source);
    at(place + (isText ? ".text" : ".image"), [&] {
        expect(!isText || entry.text, "a string", QJsonValue::Undefined);
        expect(!isPicture || entry.image || entry.vectorPicture || entry.imagePath, "a path", QJsonValue::Undefined);
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
            key->second.read(it.value(), source, entry);
        });
    checkWhole(entry, object, place, source);
    return entry;
}

/// \param value  paths, or nothing
void addFonts(QJsonValue const& value, Source const& source)
{
    at("fontFiles", [&] { expect(value.isUndefined() || value.isArray(), "an array of paths", value); });
    QJsonArray const files = value.toArray();
    for (int i = 0; i < files.size(); ++i)
        at(QString("fontFiles[%1]").arg(i), [&] {
            QString const path = source.folder.filePath(toText(files[i]));
            at("can't read " + shown(files[i]), [&] { addFont(path); });
        });
}

std::vector<OverlayEntry> toEntries(QJsonObject const& top, Source source)
{
    std::vector<std::string> const known = {"$schema", "fontFiles", "overlays"};
    for (QString const& key : top.keys())
        if (std::find(known.begin(), known.end(), key.toStdString()) == known.end())
            at(shownKey(key), [&] { complainOfKey(key, known); });
    at("$schema", [&] { toText(top.value("$schema").isUndefined() ? "" : top["$schema"]); });
    addFonts(top["fontFiles"], source);
    QJsonValue const overlays = top["overlays"];
    at("overlays", [&] { expect(overlays.isArray(), "an array of objects", overlays); });

    QJsonArray const array = overlays.toArray();
    std::vector<OverlayEntry> entries;
    for (int i = 0; i < array.size(); ++i)
        entries.push_back(toEntry(array[i], QString("overlays[%1]").arg(i), source));
    return entries;
}

} // namespace

std::vector<OverlayEntry> readOverlayFile(QString const& path, qint64 maxPixels, RunValues const& run)
{
    std::vector<OverlayEntry> entries;
    at(path, [&] {
        QJsonValue const top = readJson(path);
        expect(top.isObject(), "an object with the key \"overlays\"", top);
        entries = toEntries(top.toObject(), {QFileInfo(path).dir(), PixelLimit(maxPixels), run});
    });
    for (OverlayEntry& entry : entries)
        entry.place = path + ": " + entry.place;
    return entries;
}

bool readPicture(OverlayEntry& entry, Placeholders const& values, PixelLimit& limit)
{
    QString const path = expand(*entry.imagePath, values);
    bool const isOther = entry.imageFile != QDir(entry.folder).filePath(path);
    if (isOther)
        readPicture(path, entry, limit);
    else if (entry.image)
        limit.add(entry.image->width(), entry.image->height());
    return isOther;
}

} // namespace ztExamples
