#include "Json.h"

#include "ztOverlayCheck.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace ztExamples
{

namespace
{

bool fitsFloat(double value)
{
    return std::abs(value) <= double(std::numeric_limits<float>::max());
}

bool isComponent(double value)
{
    return value >= 0.0 && value <= 1.0;
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
            complain(placeOf(int(json.left(match.capturedStart()).toUtf8().size()), bytes) + ": the key " + shown(key) +
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

[[noreturn]] void complain(QString const& text)
{
    throw Complaint(text.toStdString());
}

QString shown(QJsonValue const& value)
{
    constexpr int maxLength = 60;
    if (value.isUndefined())
        return "nothing";
    QString const array = QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact));
    QString const json = array.mid(1, array.size() - 2);
    return json.size() <= maxLength ? json : json.left(maxLength) + "...";
}

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

[[noreturn]] void complainOfKey(QString const& key, std::vector<std::string> const& known)
{
    QString const nearest = QString::fromStdString(ztOverlayCheck::nearestName(key.toStdString(), known));
    complain(QString("unknown key, did you mean \"%1\"?").arg(nearest));
}

QJsonValue readJson(QString const& path)
{
    QJsonDocument const document = parse(readBytes(path));
    return document.isArray() ? QJsonValue(document.array()) : document.object();
}

float toFraction(QJsonValue const& value)
{
    expect(value.isDouble() && value.toDouble() > 0.0 && value.toDouble() <= 1.0, "a number above 0, up to 1", value);
    return toSize(value);
}

std::array<float, 4> toFractions(QJsonValue const& value)
{
    return toFloats<4>(value, "four numbers from 0 to 1", isComponent);
}

int toWhole(QJsonValue const& value, int least, int most)
{
    int const number = value.toInt(least - 1);
    expect(number >= least && number <= most, QString("a whole number from %1 to %2").arg(least).arg(most), value);
    return number;
}

osg::Color3f toColor3(QJsonValue const& value, QString const& expected)
{
    auto const [r, g, b] = toFloats<3>(value, expected, isComponent);
    return {r, g, b};
}

osg::Color4f toColor4(QJsonValue const& value)
{
    auto const [r, g, b, a] = toFractions(value);
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

osg::Vec2f toPadding(QJsonValue const& value)
{
    osg::Vec2f const padding = toVector(value.isDouble() ? QJsonArray{value, value} : value);
    expect(padding.x >= 0.0f && padding.y >= 0.0f, "one or two numbers from 0 on", value);
    return padding;
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

bool toBool(QJsonValue const& value)
{
    expect(value.isBool(), "true or false", value);
    return value.toBool();
}

int toChoice(QJsonValue const& value, QStringList const& words)
{
    QString const last = "\"" + words.back() + "\"";
    QString const others = "\"" + QStringList(words.mid(0, words.size() - 1)).join("\", \"") + "\"";
    expect(value.isString() && words.contains(value.toString()), others + " or " + last, value);
    return int(words.indexOf(value.toString()));
}

} // namespace ztExamples
