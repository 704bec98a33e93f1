#include "OverlayFile.h"

#include "Placeholders.h"
#include "ztOverlayCheck.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <stdexcept>

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

/// Thrown with a line about a value, "expected …" for example. Whoever knows the value's place adds it.
using Complaint = std::runtime_error;

[[noreturn]] void complain(QString const& text)
{
    throw Complaint(text.toStdString());
}

/// As compact JSON, on one line and cut if it is long.
QString shown(QJsonValue const& value)
{
    constexpr int maxLength = 60;
    if (value.isUndefined())
        return "nothing";
    QString const array = QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact));
    QString const json = array.mid(1, array.size() - 2);
    return json.size() <= maxLength ? json : json.left(maxLength) + "...";
}

/// A key without quotes, and with escapes where it would break the line.
QString shownKey(QString const& key)
{
    QString const quoted = shown(key);
    return quoted.mid(1, quoted.size() - (quoted.endsWith('"') ? 2 : 1)); // one that is cut has none at its end
}

void expect(bool condition, QString const& expected, QJsonValue const& value)
{
    if (!condition)
        complain(QString("expected %1, got %2").arg(expected, shown(value)));
}

/// Runs a check and puts a place in front of what it complains about.
template <class Check>
void at(QString const& place, Check const& check)
{
    try
    {
        check();
    }
    catch (Complaint const& complaint)
    {
        complain(place + ": " + QString::fromUtf8(complaint.what()));
    }
}

[[noreturn]] void complainOfKey(QString const& key, std::vector<std::string> const& known)
{
    QString const nearest = QString::fromStdString(ztOverlayCheck::nearestName(key.toStdString(), known));
    complain(QString("unknown key, did you mean \"%1\"?").arg(nearest));
}

bool fitsFloat(double value)
{
    return std::abs(value) <= double(std::numeric_limits<float>::max());
}

bool isNumbers(QJsonValue const& value, int count)
{
    QJsonArray const array = value.toArray();
    return array.size() == count &&
           std::all_of(array.begin(), array.end(), [](QJsonValue const& number) { return number.isDouble(); });
}

template <std::size_t N>
std::array<float, N> toFloats(QJsonValue const& value, QString const& expected, bool (*isAllowed)(double))
{
    expect(isNumbers(value, int(N)), expected, value);
    std::array<float, N> result;
    for (std::size_t i = 0; i < N; ++i)
    {
        double const number = value.toArray()[int(i)].toDouble();
        expect(isAllowed(number), expected, value);
        result[i] = float(number);
    }
    return result;
}

bool isComponent(double value)
{
    return value >= 0.0 && value <= 1.0;
}

osg::Color3f toColor3(QJsonValue const& value, QString const& expected = "three numbers from 0 to 1")
{
    auto const [r, g, b] = toFloats<3>(value, expected, isComponent);
    return {r, g, b};
}

osg::Color4f toColor4(QJsonValue const& value)
{
    auto const [r, g, b, a] = toFloats<4>(value, "four numbers from 0 to 1", isComponent);
    return {r, g, b, a};
}

osg::Color3f toTransparency(QJsonValue const& value)
{
    QString const expected = "a number or three numbers from 0 to 1";
    if (!value.isDouble())
        return toColor3(value, expected);
    expect(isComponent(value.toDouble()), expected, value);
    float const transparency = float(value.toDouble());
    return {transparency, transparency, transparency};
}

osg::Vec2f toVector(QJsonValue const& value)
{
    expect(isNumbers(value, 2), "two numbers", value);
    auto const [x, y] = toFloats<2>(value, "two numbers in single precision's range", fitsFloat);
    return {x, y};
}

float toSize(QJsonValue const& value)
{
    expect(value.isDouble() && value.toDouble() > 0.0, "a number above 0", value);
    bool const fits = fitsFloat(value.toDouble()) && float(value.toDouble()) > 0.0f;
    expect(fits, "a number above 0 in single precision's range", value);
    return float(value.toDouble());
}

QString toText(QJsonValue const& value)
{
    expect(value.isString(), "a string", value);
    expect(!value.toString().contains(QChar(0)), "a string without zero bytes", value);
    return value.toString();
}

std::string toUtf8(QJsonValue const& value)
{
    return toText(value).toStdString();
}

QString toTemplate(QJsonValue const& value)
{
    QString const text = toText(value);
    expect(text.size() <= maxTextLength, QString("%1 characters at most").arg(maxTextLength), value);
    expect(expand(text, {}).has_value(), "{file}, {index} or {count}, and {{ or }} for a brace", value);
    return text;
}

bool toBool(QJsonValue const& value)
{
    expect(value.isBool(), "true or false", value);
    return value.toBool();
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

/// "line 3, column 5" for an offset in bytes, which is where the parser stopped: often just behind the
/// culprit.
QString placeOf(int offset, QByteArray const& bytes)
{
    QByteArray const before = bytes.left(offset);
    int const lineStart = int(before.lastIndexOf('\n')) + 1;
    int const column = int(QString::fromUtf8(before.mid(lineStart)).size()) + 1;
    return QString("line %1, column %2").arg(before.count('\n') + 1).arg(column);
}

QString unescaped(QString const& string)
{
    return QJsonDocument::fromJson("[" + string.toUtf8() + "]").array()[0].toString();
}

/// The parser takes the last value of a key that stands twice.
void requireSingleKeys(QByteArray const& bytes)
{
    static QRegularExpression const part(R"((?s)[{}]|("(?:[^"\\]++|\\.)*+")\s*+(:)?)");
    QString const json = QString::fromUtf8(bytes.constData(), bytes.size()); // with the zeros that a name may hold
    std::vector<QSet<QString>> objects(1);
    for (auto parts = part.globalMatch(json); parts.hasNext();)
    {
        auto const match = parts.next();
        if (match.captured() == "{")
            objects.emplace_back();
        if (match.captured() == "}")
            objects.pop_back();
        if (match.captured(2).isEmpty())
            continue;
        QString const key = unescaped(match.captured(1));
        if (objects.back().contains(key))
            complain(placeOf(json.left(match.capturedStart()).toUtf8().size(), bytes) + ": the key " + shown(key) +
                     " is there already");
        objects.back() << key;
    }
}

QJsonDocument parse(QByteArray const& bytes)
{
    QJsonParseError error;
    QJsonDocument const document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError)
        complain(placeOf(error.offset, bytes) + ": " + error.errorString());
    requireSingleKeys(bytes);
    return document;
}

QByteArray readBytes(QString const& path)
{
    constexpr int maxSize = 4 << 20;
    QFile file(path);
    QByteArray bytes;
    bool isMore = file.open(QIODevice::ReadOnly);
    while (isMore)
    {
        QByteArray const part = file.read(maxSize + 1 - bytes.size()); // a pipe gives what it has
        bytes += part;
        isMore = !part.isEmpty();
    }
    if (file.error() != QFileDevice::NoError)
        complain("can't read it: " + file.errorString());
    if (bytes.size() > maxSize)
        complain(QString("expected %1 bytes at most").arg(maxSize));
    return bytes;
}

} // namespace

std::vector<OverlayEntry> readOverlayFile(QString const& path, qint64 maxPixels)
{
    std::vector<OverlayEntry> entries;
    at(path, [&] {
        QJsonDocument const document = parse(readBytes(path));
        QJsonValue const top = document.isArray() ? QJsonValue(document.array()) : document.object();
        expect(top.isObject(), "an object with the key \"overlays\"", top);
        entries = toEntries(top.toObject(), {QFileInfo(path).dir(), PixelLimit(maxPixels)});
    });
    for (OverlayEntry& entry : entries)
        entry.place = path + ": " + entry.place;
    return entries;
}

} // namespace ztExamples
