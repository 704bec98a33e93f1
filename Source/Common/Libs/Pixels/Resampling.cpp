#include "ztPixels.h"

#include "ztNumeric.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace ztPixels
{

namespace
{

/// The source pixels that make up one new pixel, along one direction.
struct Taps
{
    int first;
    std::vector<double> weights;
};

Taps tapsOf(int pixel, int newSize, int sourceSize, Kernel const& kernel)
{
    double const factor = double(sourceSize) / newSize;
    double const widening = std::max(factor, 1.0);
    double const centre = (pixel + 0.5) * factor - 0.5;
    double const radius = kernel.support * widening;
    int const first = std::max(ztNumeric::truncate(std::ceil(centre - radius)), 0);
    int const last = std::min(ztNumeric::truncate(std::floor(centre + radius)), sourceSize - 1);

    std::vector<double> weights;
    double sum = 0.0;
    for (int i = first; i <= last; ++i)
    {
        weights.push_back(kernel.weight((i - centre) / widening));
        sum += weights.back();
    }
    if (!(std::abs(sum) > 0.0 && std::isfinite(sum)))
        return {std::clamp(ztNumeric::truncate(std::floor(centre + 0.5)), 0, sourceSize - 1), {1.0}};

    for (double& weight : weights)
        weight /= sum;
    return {first, std::move(weights)};
}

std::vector<Taps> allTaps(int newSize, int sourceSize, Kernel const& kernel)
{
    std::vector<Taps> taps;
    taps.reserve(std::size_t(newSize));
    for (int pixel = 0; pixel < newSize; ++pixel)
        taps.push_back(tapsOf(pixel, newSize, sourceSize, kernel));
    return taps;
}

std::uint8_t toChannel(double value)
{
    return std::uint8_t(ztNumeric::truncate(std::clamp(value, 0.0, 255.0) + 0.5));
}

/// One row of sums over the rows that make up a new row.
void sumRows(std::uint8_t const* source, Taps const& taps, std::vector<double>& sums)
{
    std::fill(sums.begin(), sums.end(), 0.0);
    for (std::size_t tap = 0; tap < taps.weights.size(); ++tap)
    {
        std::uint8_t const* const row = source + (std::size_t(taps.first) + tap) * sums.size();
        double const weight = taps.weights[tap];
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] += weight * row[i];
    }
}

void resampleRow(std::vector<double> const& sums, std::vector<Taps> const& columns, std::uint8_t* row)
{
    for (Taps const& taps : columns)
    {
        double pixel[channels] = {};
        double const* sample = sums.data() + std::size_t(taps.first) * channels;
        for (double weight : taps.weights)
            for (int c = 0; c < channels; ++c)
                pixel[c] += weight * *sample++;
        for (int c = 0; c < channels; ++c)
            *row++ = toChannel(pixel[c]);
    }
}

} // namespace

Kernel triangle()
{
    return {1.0, [](double distance) { return std::max(1.0 - std::abs(distance), 0.0); }};
}

void resample(std::uint8_t const* source, int sourceWidth, int sourceHeight, std::uint8_t* destination, int width,
              int height, Kernel const& kernel)
{
    std::vector<Taps> const columns = allTaps(width, sourceWidth, kernel);
    std::vector<double> sums(std::size_t(sourceWidth) * channels);
    for (int row = 0; row < height; ++row, destination += std::size_t(width) * channels)
    {
        sumRows(source, tapsOf(row, height, sourceHeight, kernel), sums);
        resampleRow(sums, columns, destination);
    }
}

} // namespace ztPixels
