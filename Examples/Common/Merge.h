/// \file
/// A transparent layer over samples of whole numbers.
#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cstring>

namespace ztExamples
{

/// Ten thousand times what is a colour's part in gray: Rec. 709.
inline quint64 luma(uchar const* color)
{
    return 2126u * color[0] + 7152u * color[1] + 722u * color[2];
}

/// Merges a row of a layer over a row of a picture, rounded to the nearest. What the layer leaves free stays as it is.
/// \param layer  red, green, blue, alpha of 8 bits, premultiplied
/// \param row  of samples from 0 to `maxval`: gray or red, green, blue, and straight alpha if `channels` is even
template <int channels, class Sample>
void mergeRow(uchar const* layer, Sample* row, int width, int maxval)
{
    constexpr bool hasAlpha = channels % 2 == 0;
    constexpr int colors = channels - int(hasAlpha);
    for (int x = 0; x < width; ++x, layer += 4, row += channels)
    {
        quint32 pixel;
        std::memcpy(&pixel, layer, sizeof pixel);
        if (pixel == 0)
            continue;
        quint64 const most = quint64(maxval), below = hasAlpha ? quint64(row[channels - 1]) : most;
        // Of 255 * maxval.
        quint64 const free = below * (255u - layer[3]), alpha = hasAlpha ? layer[3] * most + free : 255 * most;
        for (int i = 0; i < colors && alpha > 0; ++i)
        {
            quint64 const above = colors == 1 ? luma(layer) * most * most / 10000 : layer[i] * most * most;
            row[i] = Sample(quint16(std::min(most, (above + row[i] * free + alpha / 2) / alpha)));
        }
        if (hasAlpha)
            row[channels - 1] = Sample(quint16(std::min(most, (alpha + 127) / 255)));
    }
}

} // namespace ztExamples
