/// \file
/// Guides: lines and areas for any frame's shape.
#pragma once

#include "OSGBase.h"

#include <QRect>
#include <QStringList>

#include <array>
#include <optional>
#include <vector>

namespace ztExamples
{

struct Guide
{
    enum Kind
    {
        /// Covers what a picture of another shape leaves of the frame.
        Letterbox,
        /// The edges of parts of the frame, in its middle.
        Safe,
        Grid,
        /// In the middle of the frame.
        Cross,
        /// A rectangle.
        Bar
    };

    std::optional<Kind> kind;
    std::optional<osg::Color4f> color;
    /// Width divided by height.
    std::optional<float> aspect;
    std::vector<float> fractions = {0.9f};
    int columns = 3;
    int rows = 3;
    /// As a fraction of the frame's height.
    float length = 0.1f;
    /// Left and lower edge, width and height as fractions of the frame's.
    std::optional<std::array<float, 4>> rectangle;
    /// In DPI-independent pixels.
    float lineWidth = 1.0f;
};

/// In the order of the kinds.
QStringList const& guideNames();

/// What is given, or white for lines and black for areas.
osg::Color4f colorOf(Guide const& guide);

/// The pixels that a guide covers, each in one rectangle, y up from the frame's lower edge. How many rectangles there
/// are depends on the guide alone; some may be empty.
/// \param guide  complete
/// \param scale  pixels for each DPI-independent pixel
std::vector<QRect> layOut(Guide const& guide, QSize const& frame, QSizeF const& scale);

} // namespace ztExamples
