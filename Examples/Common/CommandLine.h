/// \file
/// What the hosts' command lines have in common.
#pragma once

#include <QCommandLineParser>

namespace ztExamples
{

/// \throw std::runtime_error with a line about a usage error, the application's name first
[[noreturn]] void failUsage(QString const& message);

/// failUsage() unless the condition holds.
void require(bool condition, QString const& message);

/// Parses the arguments, the program's name first, and knows --help and --version besides the parser's own
/// options.
/// \param details  what --help says below the options
/// \return what is asked for instead of work, or nothing
/// \throw std::runtime_error for a usage error
QString parse(QCommandLineParser& parser, QStringList const& arguments, QString const& details);

/// The value of an option, empty if it isn't given.
/// \throw std::runtime_error if it is given twice or empty
QString valueOf(QCommandLineParser const& parser, QString const& option);

/// Requires that the suffix of a path that an option names is that of a format which can be written.
void requireFormat(QString const& option, QString const& path);

} // namespace ztExamples
