#include "Console.h"

#include "Ending.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <new>
#include <system_error>

namespace ztExamples
{

namespace
{

/// Why something printed on the standard output stream hasn't arrived.
std::atomic<int> outputError = 0;

/// Whether a character steers the terminal: it controls, ends a line or turns the direction of what follows.
bool isUnprintable(QChar c)
{
    static QString const directions = QString::fromUtf8("\u061c\u200e\u200f\u202a\u202b\u202c\u202d\u202e"
                                                        "\u2066\u2067\u2068\u2069");
    switch (c.category())
    {
    case QChar::Other_Control:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return directions.contains(c);
    }
}

/// Whatever a file name or a message holds, it takes one line.
QByteArray toLine(QString message)
{
    for (QChar& c : message)
        if (isUnprintable(c))
            c = ' ';
    return message.append('\n').toUtf8();
}

void printOutput(QByteArray const& text)
{
    if (std::fputs(text.constData(), stdout) < 0 || std::fflush(stdout) != 0)
        outputError = errno;
}

void handle(QtMsgType type, QMessageLogContext const&, QString const& message)
{
    // It would wait for ever for what the thread was to do.
    bool const lacksThread = message.startsWith("QThread::start:");
    if (type == QtCriticalMsg || type == QtFatalMsg || lacksThread)
        printError(message);
    if (type == QtFatalMsg || lacksThread)
        endProcess(1);
}

} // namespace

void printText(QString const& text)
{
    printOutput(text.toUtf8());
}

void printLine(QString const& message)
{
    printOutput(toLine(message));
}

void requireOutput()
{
    if (outputError != 0)
        throw std::system_error(outputError, std::system_category(), "can't write to the standard output stream");
}

void printError(QString const& message)
{
    std::fputs(toLine(message).constData(), stderr);
}

QString reasonOf(std::exception const& error)
{
    bool const isMemory = dynamic_cast<std::bad_alloc const*>(&error);
    return isMemory ? "Not enough memory" : QString::fromUtf8(error.what());
}

void quietenLibraries()
{
    qInstallMessageHandler(handle);
}

} // namespace ztExamples
