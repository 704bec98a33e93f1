#include "ztImage.h"

#include "ztNumeric.h"

#include <algorithm>
#include <cmath>

namespace ztImage
{

namespace
{

using osg::UInt8;

constexpr int channels = 4;
constexpr int maxSide = 1 << 24;
constexpr std::int64_t maxBytes = std::int64_t(1) << 31;

bool hasBytes(osg::ImagePtr const& image)
{
    return image != osg::NullFC && image->isComplete();
}

bool isPossible(int width, int height)
{
    return width > 0 && height > 0 && width <= maxSide && height <= maxSide &&
           std::int64_t(width) * height * channels <= maxBytes;
}

UInt8* rowOf(osg::Image& image, int row)
{
    return image.pixelBuffer() + std::size_t(row) * std::size_t(image.width) * channels;
}

UInt8 toChannel(double value)
{
    return UInt8(ztNumeric::truncate(std::clamp(value, 0.0, 255.0) + 0.5));
}

/// The source pixels that make up one new pixel, along one direction.
struct Taps
{
    int first;
    std::vector<double> weights;
};

Taps tapsOf(int pixel, int newSize, int sourceSize, ztImageGenericFilter const& filter)
{
    double const factor = double(sourceSize) / newSize;
    double const widening = std::max(factor, 1.0);
    double const centre = (pixel + 0.5) * factor - 0.5;
    double const radius = filter.support * widening;
    int const first = std::max(ztNumeric::truncate(std::ceil(centre - radius)), 0);
    int const last = std::min(ztNumeric::truncate(std::floor(centre + radius)), sourceSize - 1);

    std::vector<double> weights;
    double sum = 0.0;
    for (int i = first; i <= last; ++i)
    {
        weights.push_back(filter.filter((i - centre) / widening));
        sum += weights.back();
    }
    if (!(std::abs(sum) > 0.0 && std::isfinite(sum)))
        return {std::clamp(ztNumeric::truncate(std::floor(centre + 0.5)), 0, sourceSize - 1), {1.0}};

    for (double& weight : weights)
        weight /= sum;
    return {first, std::move(weights)};
}

std::vector<Taps> allTaps(int newSize, int sourceSize, ztImageGenericFilter const& filter)
{
    std::vector<Taps> taps;
    taps.reserve(std::size_t(newSize));
    for (int pixel = 0; pixel < newSize; ++pixel)
        taps.push_back(tapsOf(pixel, newSize, sourceSize, filter));
    return taps;
}

/// One row of sums over the rows that make up a new row.
void sumRows(osg::Image& source, Taps const& taps, std::vector<double>& sums)
{
    std::fill(sums.begin(), sums.end(), 0.0);
    for (std::size_t tap = 0; tap < taps.weights.size(); ++tap)
    {
        UInt8 const* const row = rowOf(source, taps.first + int(tap));
        double const weight = taps.weights[tap];
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] += weight * row[i];
    }
}

void resampleRow(std::vector<double> const& sums, std::vector<Taps> const& columns, UInt8* row)
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

void setSize(osg::ImagePtr const& image, int width, int height)
{
    image->set(osg::Image::FormatRGBA, width, height, 1, 1, 1, 0.0, nullptr, osg::Image::TypeUInt8, true, 1);
}

/// a × b / 255, rounded to the nearest; exact for 0 to 255.
unsigned multiply(unsigned a, unsigned b)
{
    unsigned const product = a * b + 128;
    return (product + (product >> 8)) >> 8;
}

void blendRow(UInt8* target, UInt8 const* source, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i, target += channels, source += channels)
        for (unsigned c = 0, uncovered = 255u - source[3]; c < channels; ++c)
            target[c] = UInt8(std::min(source[c] + multiply(target[c], uncovered), 255u));
}

/// What each channel of the source is multiplied by, and how much of the target a source alpha of 255 covers.
struct Modulation
{
    double factors[channels];
    double coverage;
};

Modulation modulationOf(osg::Color4f const& color, float opacity, float additive)
{
    double const alpha = double(color.a) * opacity;
    return {{color.r * alpha, color.g * alpha, color.b * alpha, alpha}, alpha * (1.0 - additive)};
}

void blendModulatedRow(UInt8* target, UInt8 const* source, std::size_t pixels, Modulation const& modulation)
{
    for (std::size_t i = 0; i < pixels; ++i, target += channels, source += channels)
    {
        double const uncovered = 1.0 - modulation.coverage * source[3] / 255.0;
        for (int c = 0; c < channels; ++c)
            target[c] = toChannel(source[c] * modulation.factors[c] + target[c] * uncovered);
    }
}

/// The part of a row or a column that lies within the target.
struct Span
{
    std::size_t source, target, length;
};

Span clip(int position, int sourceSize, int targetSize)
{
    std::int64_t const begin = std::max<std::int64_t>(position, 0);
    std::int64_t const end = std::min<std::int64_t>(std::int64_t(position) + sourceSize, targetSize);
    if (begin >= end)
        return {0, 0, 0};
    return {std::size_t(begin - position), std::size_t(begin), std::size_t(end - begin)};
}

} // namespace

bool scale(osg::ImagePtr const& source, int width, int height, osg::ImagePtr& destination,
           ztImageGenericFilter const& filter)
{
    if (destination == osg::NullFC)
        return false;
    bool const possible = hasBytes(source) && isPossible(width, height);
    std::vector<UInt8> bytes;
    if (possible)
    {
        std::vector<Taps> const columns = allTaps(width, source->width, filter);
        std::vector<double> sums(std::size_t(source->width) * channels);
        bytes.resize(std::size_t(width) * std::size_t(height) * channels);
        for (int row = 0; row < height; ++row)
        {
            sumRows(*source, tapsOf(row, height, source->height, filter), sums);
            resampleRow(sums, columns, bytes.data() + std::size_t(row) * std::size_t(width) * channels);
        }
    }
    destination->pixels.swap(bytes);
    setSize(destination, possible ? width : 0, possible ? height : 0);
    osg::markChanged(destination, osg::AllFieldsMask);
    return possible;
}

bool blendImage(osg::ImagePtr const& target, osg::ImagePtr const& source, osg::Vector<float, 3u> position,
                osg::Color4<float> color, float opacity, float additive)
{
    if (!hasBytes(target) || !hasBytes(source))
        return false;
    Span const x = clip(ztNumeric::truncate(position.x), source->width, target->width);
    Span const y = clip(ztNumeric::truncate(position.y), source->height, target->height);
    if (x.length == 0 || y.length == 0)
        return false;

    UInt8 const* sourceBytes = source->pixelBuffer();
    std::vector<UInt8> copy;
    if (sourceBytes == target->pixelBuffer())
    {
        copy.assign(sourceBytes, sourceBytes + std::size_t(source->width) * std::size_t(source->height) * channels);
        sourceBytes = copy.data();
    }
    bool const asItIs =
        color.r == 1.0f && color.g == 1.0f && color.b == 1.0f && color.a == 1.0f && opacity == 1.0f && additive == 0.0f;
    Modulation const modulation = modulationOf(color, opacity, additive);
    for (std::size_t row = 0; row < y.length; ++row)
    {
        UInt8* const targetRow = rowOf(*target, int(y.target + row)) + x.target * channels;
        UInt8 const* const sourceRow =
            sourceBytes + ((y.source + row) * std::size_t(source->width) + x.source) * channels;
        if (asItIs)
            blendRow(targetRow, sourceRow, x.length);
        else
            blendModulatedRow(targetRow, sourceRow, x.length, modulation);
    }
    osg::markChanged(target, osg::Image::PixelsFieldMask);
    return true;
}

void premultiply(osg::ImagePtr const& image)
{
    if (!hasBytes(image))
        return;
    UInt8* const end = rowOf(*image, image->height);
    for (UInt8* pixel = image->pixelBuffer(); pixel != end; pixel += channels)
        for (int c = 0; c < 3; ++c)
            pixel[c] = UInt8(multiply(pixel[c], pixel[3]));
    osg::markChanged(image, osg::Image::PixelsFieldMask);
}

} // namespace ztImage
