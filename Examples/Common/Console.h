/// \file
/// Lines for the user.
#pragma once

#include <QString>

namespace ztExamples
{

/// A line on the standard output stream, at once.
void printLine(QString const& message);

/// A line on the standard error stream.
void printError(QString const& message);

/// Leaves out Qt's notes on its surroundings, which aren't the user's concern: what fails is in the host's
/// own messages. Severe ones are errors.
void quietenQt();

} // namespace ztExamples
