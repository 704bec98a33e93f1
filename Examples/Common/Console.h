/// \file
/// Lines for the user.
#pragma once

#include <QString>

#include <cstdio>

namespace ztExamples
{

/// A line on the standard output stream, at once.
void printLine(QString const& message);

/// A line on the standard error stream.
void printError(QString const& message);

/// The standard error stream.
std::FILE* errorStream();

/// Leaves out the libraries' notes on their surroundings and on broken files, which aren't the user's concern: what
/// fails is in the host's own messages. Qt's severe ones are errors. `stderr` leads nowhere from then on.
void quietenLibraries();

} // namespace ztExamples
