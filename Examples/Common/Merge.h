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

/// Of 255 * most.
template <int colors>
quint32 colorOf(uchar const* above, int i, quint32 most)
{
    return colors == 1 ? quint32(luma(above) * most / 10000) : above[i] * most;
}

template <int colors, class Sample>
void mergeOpaque(uchar const* above, Sample* pixel, quint32 most)
{
    for (int i = 0; i < colors; ++i)
    {
        quint32 const sum = colorOf<colors>(above, i, most) + pixel[i] * (255u - above[3]);
        pixel[i] = Sample(quint16(std::min(most, (sum + 127) / 255)));
    }
}

template <int colors, class Sample>
void mergeTranslucent(uchar const* above, Sample* pixel, quint32 most)
{
    // Of 255 * most.
    quint64 const free = pixel[colors] * (255u - above[3]), alpha = above[3] * most + free;
    for (int i = 0; i < colors && alpha > 0; ++i)
    {
        quint64 const sum = quint64(colorOf<colors>(above, i, most)) * most + pixel[i] * free;
        pixel[i] = Sample(quint16(std::min<quint64>(most, (sum + alpha / 2) / alpha)));
    }
    pixel[colors] = Sample(quint16(std::min<quint64>(most, (alpha + 127) / 255)));
}

/// Whether a layer leaves so many pixels free.
template <int count>
bool isFree(uchar const* layer)
{
    quint32 pixels[count], all = 0;
    std::memcpy(pixels, layer, sizeof pixels);
    for (quint32 const pixel : pixels)
        all |= pixel;
    return all == 0;
}

/// Merges a row of a layer over a row of a picture, rounded to the nearest. What the layer leaves free stays as it is.
/// \param layer  red, green, blue, alpha of 8 bits, premultiplied
/// \param row  of samples from 0 to `maxval`: gray or red, green, blue, and straight alpha if `channels` is even
template <int channels, class Sample>
void mergeRow(uchar const* layer, Sample* row, int width, int maxval)
{
    constexpr int many = 32;
    constexpr auto merge = channels % 2 == 0 ? mergeTranslucent<channels - 1, Sample> : mergeOpaque<channels, Sample>;
    for (int x = 0; x < width;)
        if (width - x >= many && isFree<many>(layer + 4 * x))
            x += many;
        else
            for (int const end = std::min(x + many, width); x < end; ++x)
                if (!isFree<1>(layer + 4 * x))
                    merge(layer + 4 * x, row + channels * x, quint32(maxval));
}

} // namespace ztExamples
