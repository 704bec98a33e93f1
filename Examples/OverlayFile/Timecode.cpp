#include "Timecode.h"

#include <QRegularExpression>

#include <map>

namespace ztExamples
{

namespace
{

constexpr int maxRate = 120;

qint64 framesOfTenMinutes(FrameRate const& rate)
{
    return qint64(rate.frames) * 600 - 9 * rate.dropped;
}

/// The number that a frame would have if none were dropped.
qint64 withDropped(qint64 frame, FrameRate const& rate)
{
    qint64 const tens = frame / framesOfTenMinutes(rate), rest = frame % framesOfTenMinutes(rate);
    qint64 const minutes = rest < rate.dropped ? 0 : (rest - rate.dropped) / (rate.frames * 60 - rate.dropped);
    return frame + rate.dropped * (9 * tens + minutes);
}

} // namespace

std::optional<FrameRate> parseFrameRate(QString const& text)
{
    static std::map<QString, FrameRate> const slower = {{"23.976", {24, 0}}, {"23.98", {24, 0}}, {"29.97", {30, 2}},
                                                        {"47.952", {48, 0}}, {"47.95", {48, 0}}, {"59.94", {60, 4}},
                                                        {"119.88", {120, 8}}};
    if (auto const found = slower.find(text); found != slower.end())
        return found->second;
    int const rate = text.toInt();
    return rate >= 1 && rate <= maxRate ? std::optional(FrameRate{rate, 0}) : std::nullopt;
}

QString toTimecode(qint64 frame, FrameRate const& rate)
{
    qint64 const day = 144 * framesOfTenMinutes(rate);
    qint64 const number = withDropped((frame % day + day) % day, rate);
    qint64 const seconds = number / rate.frames;
    return QString::asprintf("%02d:%02d:%02d%c%02d", int(seconds / 3600), int(seconds / 60 % 60), int(seconds % 60),
                             rate.dropped > 0 ? ';' : ':', int(number % rate.frames));
}

std::optional<qint64> parseTimecode(QString const& text, FrameRate const& rate)
{
    static QRegularExpression const form(R"(\A([01]\d|2[0-3]):([0-5]\d):([0-5]\d)[:;](\d\d\d?)\z)");
    auto const match = form.match(text);
    int const minutes = match.captured(1).toInt() * 60 + match.captured(2).toInt();
    int const seconds = minutes * 60 + match.captured(3).toInt();
    qint64 const frame =
        qint64(seconds) * rate.frames + match.captured(4).toInt() - rate.dropped * (minutes - minutes / 10);
    // What is out of range or dropped comes back as another one.
    bool const isIn = match.hasMatch() && toTimecode(frame, rate).replace(';', ':') == QString(text).replace(';', ':');
    bool const isForm = rate.dropped > 0 || !text.contains(';');
    return isIn && isForm ? std::optional(frame) : std::nullopt;
}

} // namespace ztExamples
