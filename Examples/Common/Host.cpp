#include "Host.h"

#include "Ending.h"
#include "FileNames.h"
#include "Resources.h"

#include <QFileInfo>

#include <new>
#include <system_error>

namespace ztExamples
{

namespace
{

ExitCode runApplication(int argc, char** argv, std::function<ExitCode()> const& work)
{
    endOnSignals();
    requireFiles();
    QGuiApplication const application(argc, argv);
    ExitCode const exitCode = work();
    requireOutput();
    return exitCode;
}

ExitCode fail(char const* program, std::exception const& error)
{
    printError(QFileInfo(QFile::decodeName(program)).fileName() + ": " + reasonOf(error));
    return NotAllDone;
}

} // namespace

int runHost(int argc, char** argv, char const* platforms, std::function<ExitCode()> const& work)
{
    holdStandardStreams();
    quietenLibraries();
    keepAnyFileName();
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", platforms);
    try
    {
        return runApplication(argc, argv, work);
    }
    catch (std::bad_alloc const& error)
    {
        return fail(argv[0], error);
    }
    catch (std::system_error const& error)
    {
        return fail(argv[0], error);
    }
    catch (std::exception const& error)
    {
        printError(reasonOf(error));
        return WrongInput;
    }
}

} // namespace ztExamples
