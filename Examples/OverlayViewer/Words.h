/// \file
/// Words and numbers of text files, and complaints about them.
#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ztExamples
{

/// Thrown with what was expected and what is there instead. Whoever knows the place adds it.
using Complaint = std::runtime_error;

[[noreturn]] inline void complain(std::string const& expected, std::string_view found)
{
    constexpr std::size_t maxLength = 60;
    std::string const shown(found.substr(0, maxLength));
    throw Complaint("expected " + expected + ", got \"" + shown + (found.size() > maxLength ? "..." : "") + '"');
}

inline void requireAtMost(std::size_t most, std::size_t count, char const* what)
{
    if (count > most)
        throw Complaint("expected " + std::to_string(most) + " " + what + " at most");
}

/// Takes the text up to a separator, and that too, off the front.
inline std::string_view takeUntil(char const* separators, std::string_view& text)
{
    std::size_t const end = std::min(text.find_first_of(separators), text.size());
    std::string_view const part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

/// Empty at the end.
inline std::string_view takeWord(std::string_view& text, char const* blanks = " \t\r")
{
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return takeUntil(blanks, text);
}

/// The number, from 1, of the line that ends before the rest of a text, or in which the rest begins.
inline std::size_t lineBefore(std::string_view text, std::string_view rest)
{
    std::string_view const read = text.substr(0, std::max(text.size() - rest.size(), std::size_t(1)) - 1);
    return std::size_t(std::count(read.begin(), read.end(), '\n')) + 1;
}

template <class T>
std::optional<T> toNumber(std::string_view word)
{
    if (word.substr(0, 1) == "+")
        word.remove_prefix(1);
    T value;
    auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    return error == std::errc() && end == word.data() + word.size() ? std::optional(value) : std::nullopt;
}

/// False too for what is no number.
inline bool fitsFloat(double value)
{
    return std::abs(value) <= double(std::numeric_limits<float>::max());
}

} // namespace ztExamples
