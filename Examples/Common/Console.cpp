#include "Console.h"

#include <cstdio>

namespace ztExamples
{

namespace
{

std::FILE* const errors = stderr;

/// Whatever a file name or a message holds, it takes one line and doesn't steer the terminal.
void print(std::FILE* stream, QString message)
{
    for (QChar& c : message)
        if (c.category() == QChar::Other_Control)
            c = ' ';
    std::fputs(message.append('\n').toLocal8Bit().constData(), stream);
    std::fflush(stream);
}

void printSevere(QtMsgType type, QMessageLogContext const&, QString const& message)
{
    if (type == QtCriticalMsg || type == QtFatalMsg)
        printError(message);
}

} // namespace

void printLine(QString const& message)
{
    print(stdout, message);
}

void printError(QString const& message)
{
    print(errors, message);
}

std::FILE* errorStream()
{
    return errors;
}

void quietenLibraries()
{
    qInstallMessageHandler(printSevere);
#ifdef __GLIBC__
    // libpng writes what is wrong with a picture, which Qt reports too, to a stream that is a variable here.
    if (std::FILE* const nowhere = std::fopen("/dev/null", "w"))
        stderr = nowhere;
#endif
}

} // namespace ztExamples
