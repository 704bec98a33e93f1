/// \file
/// Lines for the user.
#pragma once

#include <QString>

#include <exception>

namespace ztExamples
{

/// A text on the standard output stream.
void printText(QString const& text);

/// A line on the standard output stream, at once.
void printLine(QString const& message);

/// \throw std::system_error if not all of that has arrived
void requireOutput();

/// A line on the standard error stream.
void printError(QString const& message);

/// What an exception says.
QString reasonOf(std::exception const& error);

/// Leaves out the libraries' notes on their surroundings and on broken files, which aren't the user's concern: what
/// fails is in the host's own messages. Qt's severe ones are errors, and where it can't go on the process ends with the
/// exit code 1.
void quietenLibraries();

} // namespace ztExamples
