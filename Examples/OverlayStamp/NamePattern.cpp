#include "NamePattern.h"

#include "CommandLine.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <cstdlib>

namespace ztExamples
{

namespace
{

constexpr int maxWidth = 18;

struct Range
{
    qint64 first;
    qint64 last;
    qint64 step;

    std::size_t count() const { return std::size_t(std::abs(last - first) / step) + 1; }
    qint64 at(std::size_t i) const { return first < last ? first + qint64(i) * step : first - qint64(i) * step; }
};

Range parseRange(QString const& text, QString const& list)
{
    static QRegularExpression const form(R"(\A(-?\d{1,9})(?:-(-?\d{1,9})(?:x(\d{1,9}))?)?\z)");
    auto const match = form.match(text);
    qint64 const step = match.captured(3).isEmpty() ? 1 : match.captured(3).toLongLong();
    require(match.hasMatch() && step > 0,
            "--frames: expected numbers of 9 digits at most such as 1001-1100,1120,1200-1300x10, got \"" + list + "\"");
    qint64 const first = match.captured(1).toLongLong();
    return {first, match.captured(2).isEmpty() ? first : match.captured(2).toLongLong(), step};
}

/// That the pattern has for a file's name.
std::optional<qint64> numberIn(QString const& name, NamePattern const& pattern)
{
    auto const length = name.size() - pattern.before.size() - pattern.after.size();
    bool isNumber = false;
    qint64 const number = length > 0 ? name.mid(pattern.before.size(), length).toLongLong(&isNumber) : 0;
    return isNumber && nameOf(pattern, number) == name ? std::optional(number) : std::nullopt;
}

QString folderOf(NamePattern const& pattern)
{
    return QFileInfo(pattern.before + "0").path();
}

NamePattern withoutFolder(NamePattern const& pattern)
{
    return {pattern.before.mid(pattern.before.lastIndexOf('/') + 1), pattern.width, pattern.after};
}

} // namespace

std::optional<NamePattern> parsePattern(QString const& path)
{
    static QRegularExpression const place(R"(%(?:0(\d{1,2}))?d|#+|@+)");
    int const nameStart = int(path.lastIndexOf('/')) + 1;
    auto const match = place.match(path, nameStart);
    if (!match.hasMatch())
        return std::nullopt;
    int const width = path[match.capturedStart()] == '%' ? match.captured(1).toInt() : int(match.capturedLength());
    require(
        width <= maxWidth && !place.match(path, match.capturedEnd()).hasMatch(),
        QString("\"%1\": expected one place of %2 digits at most for a number").arg(path, QString::number(maxWidth)));
    return NamePattern{path.left(match.capturedStart()), width, path.mid(match.capturedEnd())};
}

QString nameOf(NamePattern const& pattern, qint64 number)
{
    return pattern.before + QString::asprintf("%0*lld", pattern.width, static_cast<long long>(number)) + pattern.after;
}

bool matches(NamePattern const& pattern, QString const& file)
{
    return QFileInfo(file).dir() == QDir(folderOf(pattern)) &&
           numberIn(QFileInfo(file).fileName(), withoutFolder(pattern));
}

std::vector<qint64> findNumbers(NamePattern const& pattern)
{
    NamePattern const name = withoutFolder(pattern);
    std::vector<qint64> numbers;
    for (QDirIterator files(folderOf(pattern), QDir::Files | QDir::Hidden | QDir::System); files.hasNext();)
    {
        files.next();
        if (auto const number = numberIn(files.fileName(), name))
            numbers.push_back(*number);
        require(numbers.size() <= maxFrameCount, QString("expected %1 frames at most").arg(maxFrameCount));
    }
    require(!numbers.empty(), "no file matches \"" + nameOf(pattern, 1) + "\" with any number");
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::vector<qint64> parseNumbers(QString const& list)
{
    std::vector<qint64> numbers;
    QSet<qint64> seen;
    for (QString const& text : list.split(','))
    {
        Range const range = parseRange(text, list);
        require(numbers.size() + range.count() <= maxFrameCount,
                QString("--frames: expected %1 frames at most, got \"%2\"").arg(maxFrameCount).arg(list));
        for (std::size_t i = 0; i < range.count(); ++i)
        {
            numbers.push_back(range.at(i));
            require(!seen.contains(numbers.back()), QString("--frames: %1 is there twice").arg(numbers.back()));
            seen << numbers.back();
        }
    }
    return numbers;
}

} // namespace ztExamples
