/// \file
/// Frames counted as hours, minutes, seconds and frames (SMPTE ST 12-1).
#pragma once

#include <QString>

#include <optional>

namespace ztExamples
{

struct FrameRate
{
    /// How many frames a second of timecode counts: the next whole number from the rate on.
    int frames;
    /// How many numbers are left out as each minute begins but every tenth, so that 30 a second keep up with 29.97.
    int dropped;
};

/// A whole number from 1 to 120, or one of the rates of television, which is a thousandth slower than a whole one:
/// 23.976, 29.97 and their doubles. Multiples of 29.97 drop numbers.
std::optional<FrameRate> parseFrameRate(QString const& text);

/// "01:00:00:00", with a semicolon in place of the last colon if the rate drops numbers. A day has 24 hours: the next
/// one begins anew, and a negative frame is in the one before.
QString toTimecode(qint64 frame, FrameRate const& rate);

/// The frame of a timecode, which has a number that the rate has. The last colon may be a semicolon if the rate drops
/// numbers.
std::optional<qint64> parseTimecode(QString const& text, FrameRate const& rate);

} // namespace ztExamples
