#include "Report.h"

#include "Console.h"
#include "Ending.h"
#include "ztNumeric.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace ztExamples
{

namespace
{

QString toClock(double seconds)
{
    int const whole = ztNumeric::truncate(std::min(seconds, 359999.0));
    return QString::asprintf("%d:%02d:%02d", whole / 3600, whole / 60 % 60, whole % 60);
}

QString toBar(std::size_t part, std::size_t whole)
{
    constexpr int width = 30;
    int const filled = int(width * part / whole);
    return "[" + QString(filled, '#') + QString(width - filled, '.') + "]";
}

} // namespace

Report::Report(StampOptions const& options)
    : _frameCount(countFrames(options)), _hasBar(!options.isQuiet && _frameCount > 1 && isatty(STDERR_FILENO)),
      _hasLines(!options.isQuiet && !_hasBar && !options.writesPipe)
{
    setLastWords([this] {
        hideProgress();
        QString const all = _frameCount > 0 ? QString(" of %1").arg(_frameCount) : QString();
        return QString("overlay-stamp: ended early, %1%2 frames are done").arg(_done).arg(all);
    });
}

Report::~Report()
{
    setLastWords(nullptr);
}

void Report::done(FramePaths const& frame)
{
    ++_done;
    if (_hasLines)
        printLine(frame.input + " -> " + frame.output);
    showProgress();
}

void Report::failed(FramePaths const& frame, QString const& reason)
{
    ++_failed;
    hideProgress();
    printError(frame.input + ": " + reason);
    showProgress();
}

bool Report::finish()
{
    hideProgress();
    if (_failed > 0)
        printError(QString("%1 of %2 frames failed").arg(_failed).arg(_reported));
    return _failed == 0;
}

void Report::showProgress()
{
    ++_reported;
    if (!_hasBar)
        return;
    std::chrono::duration<double> const elapsed = std::chrono::steady_clock::now() - _start;
    double const rate = double(_reported) / elapsed.count();
    QString const line = QString("\r%1 %2/%3 frames, %4/s, %5 left\x1b[K")
                             .arg(toBar(_reported, _frameCount))
                             .arg(_reported)
                             .arg(_frameCount)
                             .arg(rate, 0, 'f', 1)
                             .arg(toClock(double(_frameCount - _reported) / rate));
    std::fputs(line.toUtf8().constData(), stderr);
}

void Report::hideProgress() const
{
    if (_hasBar)
        std::fputs("\r\x1b[K", stderr);
}

} // namespace ztExamples
