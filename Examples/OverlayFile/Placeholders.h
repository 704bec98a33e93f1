/// \file
/// What stands in braces in an overlay's text.
#pragma once

#include "FrameInfo.h"

#include <QString>

#include <optional>

namespace ztExamples
{

/// Values for one frame.
struct Placeholders
{
    /// `{file}`: the frame's file name without folder.
    QString file;
    /// `{index}`: the frame's number, from 1.
    std::size_t index = 1;
    /// `{count}`: how many frames there are.
    std::size_t count = 1;
    /// Of the frame's file.
    FrameInfo info = {};
};

/// The text with its placeholders replaced, and `{{` and `}}` by single braces. Nothing if it has a lone
/// brace or an unknown placeholder, which doesn't depend on the values.
std::optional<QString> expand(QString const& text, Placeholders const& values);

} // namespace ztExamples
