/// \file
/// The frame of a host's main function.
#pragma once

#include "Console.h"

#include <QGuiApplication>

#include <cstdio>
#include <stdexcept>

namespace ztExamples
{

enum ExitCode
{
    AllDone = 0,
    NotAllDone = 1,
    WrongInput = 2
};

/// Runs a host in an application of its own.
/// \param platforms  what Qt tries one after the other unless the environment says it
/// \param parseOptions  the options of the command line; their `information` is what to print instead of work
/// \param work  what the host is there for
/// \return the exit code of `work`, or WrongInput after a line on what one of the two has thrown
template <class Options>
int runHost(int argc, char** argv, char const* platforms, Options (*parseOptions)(QStringList const&),
            ExitCode (*work)(Options const&))
{
    quietenLibraries();
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", platforms);
    QGuiApplication const application(argc, argv);
    try
    {
        Options const options = parseOptions(QGuiApplication::arguments());
        if (options.information.isEmpty())
            return work(options);
        std::fputs(options.information.toLocal8Bit().constData(), stdout);
        return AllDone;
    }
    catch (std::exception const& error)
    {
        printError(QString::fromUtf8(error.what()));
        return WrongInput;
    }
}

} // namespace ztExamples
