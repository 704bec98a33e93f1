/// \file
/// What a picture file tells besides its pixels.
#pragma once

#include <QSize>
#include <QString>

#include <map>

namespace ztExamples
{

struct FrameInfo
{
    QSize size;
    /// By name, as text.
    std::map<QString, QString> metadata;
};

} // namespace ztExamples
