/// \file
/// The frame of a host's main function.
#pragma once

#include "Console.h"

#include <QGuiApplication>

#include <functional>

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
/// \param work  what the host is there for
/// \return the exit code of `work`, or after a line on what it has thrown: NotAllDone where the system hasn't given
///     enough, else WrongInput
int runHost(int argc, char** argv, char const* platforms, std::function<ExitCode()> const& work);

/// \param parseOptions  the options of the command line; their `information` is what to print instead of work
template <class Options>
int runHost(int argc, char** argv, char const* platforms, Options (*parseOptions)(QStringList const&),
            ExitCode (*work)(Options const&))
{
    return runHost(argc, argv, platforms, [parseOptions, work] {
        Options const options = parseOptions(QGuiApplication::arguments());
        if (options.information.isEmpty())
            return work(options);
        printText(options.information);
        return AllDone;
    });
}

} // namespace ztExamples
