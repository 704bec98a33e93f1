/// \file
/// What stands in braces in an overlay's text or in the path of its picture.
///
/// \code
/// Template const label = parseTemplate("{stem} {frame+1000:05} {date:%d.%m.%Y}");
/// QString const text = expand(label, {"shot.0017.exr"}); // "shot.0017 01017 24.12.2026"
/// \endcode
#pragma once

#include "FrameInfo.h"
#include "Timecode.h"

#include <QDateTime>

#include <functional>
#include <optional>
#include <vector>

namespace ztExamples
{

/// The placeholders, for --help.
extern char const placeholdersHelp[];

/// Values for one frame.
struct Placeholders
{
    /// Of the frame's file: `{file}`, `{stem}`, `{ext}`, `{folder}`.
    QString path;
    /// `{index}`: the frame's number, from 1.
    std::size_t index = 1;
    /// `{count}`: how many frames there are.
    std::size_t count = 1;
    /// Of the frame's file.
    FrameInfo info = {};
    /// `{frame}`. If it is empty, that is the last number in the file's name.
    std::optional<qint64> frame = {};
};

/// What is the same in all frames.
struct RunValues
{
    /// `{date}` and `{time}`.
    QDateTime now = QDateTime::currentDateTime();
    /// `{set:NAME}` and `{env:NAME}`: values by their names.
    std::map<QString, QString> settings = {};
    std::map<QString, QString> environment = {};
    /// `{timecode}`; without a rate it is the file's own.
    std::optional<FrameRate> rate = {};
    /// Whether there is a `{count}`, which nobody knows of a stream.
    bool isCounted = true;
    /// The timecode of frame 0, as a frame.
    qint64 start = 0;
};

/// A text that may differ from frame to frame.
struct TemplatePart
{
    QString text;
    /// What follows the text, if it isn't empty.
    std::function<QString(Placeholders const&)> value;
};
using Template = std::vector<TemplatePart>;

/// \throw std::runtime_error if the text has a lone brace or a placeholder that is unknown, malformed or without a
///     value for the run; what() is a line about it
Template parseTemplate(QString const& text, RunValues const& run = {});

/// Whether it is the same text in all frames.
bool isConstant(Template const& text);

/// The text for a frame.
/// \throw std::runtime_error if there is no value for a placeholder; what() is a line about it
QString expand(Template const& text, Placeholders const& values);

/// The last number in the name of a file, its suffix apart.
std::optional<qint64> frameNumber(QString const& path);

} // namespace ztExamples
