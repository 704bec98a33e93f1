/// \file
/// Names of the files of a sequence.
#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace ztExamples
{

constexpr std::size_t maxFrameCount = 1000000;

/// A path in whose file name a number stands in the place of `%04d`, `####` or `@@@@`.
struct NamePattern
{
    QString before;
    /// How many digits the number has at least; a minus counts as one.
    int width;
    QString after;
};

/// Nothing if the path has no such place.
/// \throw std::runtime_error for a usage error: several such places, or one that is too wide
std::optional<NamePattern> parsePattern(QString const& path);

QString nameOf(NamePattern const& pattern, qint64 number);

/// Whether a file, by whatever path, has a name of the pattern.
bool matches(NamePattern const& pattern, QString const& file);

/// The numbers of the files that are there, in their order.
/// \throw std::runtime_error for a usage error: no files or too many
std::vector<qint64> findNumbers(NamePattern const& pattern);

/// The numbers of a list such as "1001-1100,1120,1200-1300x10,5--5", in its order.
/// \throw std::runtime_error for a usage error: not such a list, a number twice, or too many
std::vector<qint64> parseNumbers(QString const& list);

} // namespace ztExamples
