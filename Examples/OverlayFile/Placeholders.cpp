#include "Placeholders.h"

#include "Json.h"
#include "ztOverlayCheck.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <ctime>
#include <iomanip>
#include <locale>
#include <sstream>

namespace ztExamples
{

char const placeholdersHelp[] = R"(
In a text and in the path of a picture, placeholders stand for what differs from frame to frame or run to run;
{{ and }} are braces:
  {file} {stem} {ext} {folder}  name of the frame's file: a.0017.png; a.0017; png; the name of its folder
  {frame}                       the last number in that name, 17; in a stream the first picture has 0
  {index} {count}               the frame's number among the inputs, from 1, and how many they are
  {width} {height}              the frame's size in pixels
  {timecode}                    of {frame} with --fps and --start, which is that of frame 0; or the file's own
  {date} {time}                 when the run began: 2026-01-31, 12:00:00; {date:%d.%m.%Y} has a format of strftime's
  {meta:NAME} {meta:NAME|TEXT}  what the file says under that name, or the text if it doesn't
  {set:NAME}                    what --set gives
  {env:NAME}                    an environment variable that --allow-env names
A number may be shifted and filled up with zeros: {frame+1000}, {index:03}, {frame-1:05}. {timecode-1001} is shifted,
too, so that frame 1001 has the timecode of --start.
)";

namespace
{

/// A placeholder as it is written: its name, and what follows that in the braces.
struct Written
{
    QString name;
    QString rest;

    QString whole() const { return shownKey("{" + name + rest + "}"); }
};

[[noreturn]] void complainOf(Written const& written, QString const& expected)
{
    complain(written.whole() + ": expected " + expected);
}

QString nearest(QString const& name, std::map<QString, QString> const& known, QString const& kind)
{
    std::vector<std::string> names;
    for (auto const& [key, value] : known)
        names.push_back(key.toStdString());
    QString const found = QString::fromStdString(ztOverlayCheck::nearestName(name.toStdString(), names));
    return found.isEmpty() ? QString() : ", did you mean " + shownKey("{" + kind + ":" + found + "}") + "?";
}

TemplatePart constant(QString const& text)
{
    return {text, nullptr};
}

TemplatePart nameOf(Written const& written, QString (*name)(QFileInfo const&))
{
    if (!written.rest.isEmpty())
        complainOf(written, "nothing behind the name");
    return {"", [name](Placeholders const& values) { return name(QFileInfo(values.path)); }};
}

qint64 knownSide(int side)
{
    if (side <= 0)
        complain("the frame's size isn't known");
    return side;
}

qint64 requireFrame(Placeholders const& values, QString const& placeholder)
{
    auto const frame = values.frame ? values.frame : frameNumber(values.path);
    if (!frame)
        complain(placeholder + " needs a number in the file's name");
    return *frame;
}

using Number = qint64 (*)(Placeholders const&);

TemplatePart number(Written const& written, Number value)
{
    static QRegularExpression const form(R"(\A([+-]\d{1,9})?(?::0(\d|1\d|20))?\z)");
    auto const match = form.match(written.rest);
    if (!match.hasMatch())
        complainOf(written, QString("a shift, a width in zeros or both, as in {%1+1000:04}").arg(written.name));
    qint64 const shift = match.captured(1).toLongLong();
    int const width = match.captured(2).toInt();
    return {"", [value, shift, width](Placeholders const& values) {
                return QString::asprintf("%0*lld", width, static_cast<long long>(value(values) + shift));
            }};
}

TemplatePart counted(Written const& written, RunValues const& run)
{
    if (!run.isCounted)
        complain(written.whole() + ": nobody knows how many pictures a stream has");
    return number(written, [](Placeholders const& values) { return qint64(values.count); });
}

std::optional<QString> ownTimecode(FrameInfo const& info)
{
    static QRegularExpression const name(R"((\A|:)timecode\z)", QRegularExpression::CaseInsensitiveOption);
    for (auto const& [key, value] : info.metadata)
        if (name.match(key).hasMatch())
            return value;
    return std::nullopt;
}

TemplatePart timecode(Written const& written, RunValues const& run)
{
    static QRegularExpression const form(R"(\A([+-]\d{1,9})?\z)");
    if (!form.match(written.rest).hasMatch())
        complainOf(written, "a shift at most, as in {timecode-1001}");
    qint64 const shift = run.start + written.rest.toLongLong();
    return {"", [rate = run.rate, shift, written](Placeholders const& values) {
                if (rate)
                    return toTimecode(requireFrame(values, written.whole()) + shift, *rate);
                std::optional<QString> const own = ownTimecode(values.info);
                if (!own || !written.rest.isEmpty())
                    complain(written.whole() + " needs --fps" +
                             (written.rest.isEmpty() ? ", or a file with a timecode" : ""));
                return *own;
            }};
}

std::tm toTime(QDateTime const& time)
{
    std::tm result = {};
    result.tm_year = time.date().year() - 1900;
    result.tm_mon = time.date().month() - 1;
    result.tm_mday = time.date().day();
    result.tm_yday = time.date().dayOfYear() - 1;
    result.tm_wday = time.date().dayOfWeek() % 7;
    result.tm_hour = time.time().hour();
    result.tm_min = time.time().minute();
    result.tm_sec = time.time().second();
    return result;
}

/// The same in every locale.
TemplatePart time(Written const& written, QString const& otherwise, RunValues const& run)
{
    static QRegularExpression const form(R"(\A:(?:[^%]|%[aAbBdeFGHIjmMpRSTuVyY%])++\z)");
    if (!written.rest.isEmpty() && !form.match(written.rest).hasMatch())
        complainOf(written, "a format of %a %A %b %B %d %e %F %G %H %I %j %m %M %p %R %S %T %u %V %y %Y %%, as in {" +
                                written.name + ":" + otherwise + "}");
    std::tm const now = toTime(run.now);
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::put_time(&now, (written.rest.isEmpty() ? otherwise : written.rest.mid(1)).toUtf8().constData());
    return constant(QString::fromStdString(text.str()));
}

TemplatePart metadata(Written const& written)
{
    static QRegularExpression const form(R"(\A:([^|]+)(?:\|(.*))?\z)", QRegularExpression::DotMatchesEverythingOption);
    auto const match = form.match(written.rest);
    if (!match.hasMatch())
        complainOf(written, "a name, as in {meta:Camera} or {meta:Camera|unknown}");
    bool const hasDefault = match.lastCapturedIndex() == 2;
    return {"", [name = match.captured(1), otherwise = match.captured(2), hasDefault](Placeholders const& values) {
                auto const found = values.info.metadata.find(name);
                if (found == values.info.metadata.end() && !hasDefault)
                    complain(shownKey("{meta:" + name + "}") + ": the file has no such entry" +
                             nearest(name, values.info.metadata, "meta"));
                return found == values.info.metadata.end() ? otherwise : QString(found->second).remove(QChar(0));
            }};
}

/// \param advice  how to give the value of a name, "%1"
TemplatePart given(Written const& written, std::map<QString, QString> const& values, QString const& advice)
{
    QString const name = written.rest.mid(1);
    if (!written.rest.startsWith(':') || name.isEmpty())
        complainOf(written, "a name, as in {" + written.name + ":NAME}");
    auto const found = values.find(name);
    if (found == values.end())
        complain(written.whole() + " needs " + advice.arg(name) + nearest(name, values, written.name));
    return constant(found->second);
}

using Make = TemplatePart (*)(Written const&, RunValues const&);

std::map<std::string, Make> const& placeholders()
{
    using W = Written const&;
    using R = RunValues const&;
    using P = Placeholders const&;
    static std::map<std::string, Make> const all = {
        {"count", counted},
        {"date", [](W w, R run) { return time(w, "%Y-%m-%d", run); }},
        {"env", [](W w, R run) { return given(w, run.environment, "--allow-env %1"); }},
        {"ext", [](W w, R) { return nameOf(w, [](QFileInfo const& file) { return file.suffix(); }); }},
        {"file", [](W w, R) { return nameOf(w, [](QFileInfo const& file) { return file.fileName(); }); }},
        {"folder",
         [](W w, R) { return nameOf(w, [](QFileInfo const& file) { return file.absoluteDir().dirName(); }); }},
        {"frame", [](W w, R) { return number(w, [](P values) { return requireFrame(values, "{frame}"); }); }},
        {"height", [](W w, R) { return number(w, [](P values) { return knownSide(values.info.size.height()); }); }},
        {"index", [](W w, R) { return number(w, [](P values) { return qint64(values.index); }); }},
        {"meta", [](W w, R) { return metadata(w); }},
        {"set", [](W w, R run) { return given(w, run.settings, "--set %1=VALUE"); }},
        {"stem", [](W w, R) { return nameOf(w, [](QFileInfo const& file) { return file.completeBaseName(); }); }},
        {"time", [](W w, R run) { return time(w, "%H:%M:%S", run); }},
        {"timecode", timecode},
        {"width", [](W w, R) { return number(w, [](P values) { return knownSide(values.info.size.width()); }); }},
    };
    return all;
}

TemplatePart parsePlaceholder(QString const& inside, RunValues const& run)
{
    static QRegularExpression const nameAndRest(R"(\A([^-+:|]*)(.*)\z)",
                                                QRegularExpression::DotMatchesEverythingOption);
    auto const match = nameAndRest.match(inside);
    std::string const name = match.captured(1).toStdString();
    if (auto const found = placeholders().find(name); found != placeholders().end())
        return found->second({match.captured(1), match.captured(2)}, run);
    std::vector<std::string> names;
    for (auto const& [known, make] : placeholders())
        names.push_back(known);
    complain("unknown placeholder " + shown("{" + inside + "}") + ", did you mean {" +
             QString::fromStdString(ztOverlayCheck::nearestName(name, names)) + "}?");
}

} // namespace

Template parseTemplate(QString const& text, RunValues const& run)
{
    static QRegularExpression const piece(R"(\{\{|\}\}|\{([^{}]*+)\}|[^{}]++|[{}])");
    Template result;
    for (auto pieces = piece.globalMatch(text); pieces.hasNext();)
    {
        auto const match = pieces.next();
        QString const written = match.captured();
        bool const isBrace = written.startsWith('{') || written.startsWith('}');
        if (isBrace && written.size() == 1)
            complain("expected {{ or }} for a brace, got " + shown(text));
        if (match.lastCapturedIndex() == 1)
            result.push_back(parsePlaceholder(match.captured(1), run));
        else
            result.push_back(constant(isBrace ? written.left(1) : written));
    }
    return result;
}

bool isConstant(Template const& text)
{
    return std::none_of(text.begin(), text.end(), [](TemplatePart const& part) { return bool(part.value); });
}

QString expand(Template const& text, Placeholders const& values)
{
    QString result;
    for (auto const& [constant, value] : text)
        result += value ? constant + value(values) : constant;
    return result;
}

std::optional<qint64> frameNumber(QString const& path)
{
    static QRegularExpression const last(R"((?<!\d)(\d{1,18})\D*\z)");
    auto const match = last.match(QFileInfo(path).completeBaseName());
    return match.hasMatch() ? std::optional(match.captured(1).toLongLong()) : std::nullopt;
}

} // namespace ztExamples
