/// \file
/// Resampling in the words of its definition, slowly.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

/// The weight of each pixel of a row or column in one that is made of it: the nearest has all of it if the sum of the
/// weights is 0 or none.
template <class Weight>
std::vector<double> weightsOf(int sourceSize, int size, int pixel, double support, Weight const& weight)
{
    double const step = double(sourceSize) / size, centre = (pixel + 0.5) * step;
    std::vector<double> weights(std::size_t(sourceSize), 0.0);
    double sum = 0.0;
    for (int i = 0; i < sourceSize; ++i)
    {
        double const distance = (i + 0.5 - centre) / std::max(step, 1.0);
        sum += weights[std::size_t(i)] = std::abs(distance) <= support ? weight(distance) : 0.0;
    }
    int const nearest = std::min(int(centre), sourceSize - 1);
    for (int i = 0; i < sourceSize; ++i)
        weights[std::size_t(i)] = sum != 0.0 && std::isfinite(sum) ? weights[std::size_t(i)] / sum : i == nearest;
    return weights;
}

/// A channel of the new pixel.
inline double weightedSum(std::vector<std::uint8_t> const& source, std::vector<double> const& columns,
                          std::vector<double> const& rows, std::size_t channel)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < source.size() / 4; ++i)
        sum += columns[i % columns.size()] * rows[i / columns.size()] * source[4 * i + channel];
    return std::clamp(sum, 0.0, 255.0);
}
