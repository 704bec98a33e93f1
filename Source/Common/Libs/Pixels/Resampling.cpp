#include "ztPixels.h"

#include "ztNumeric.h"

#include <algorithm>
#include <cmath>
#include <vector>

// This file is compiled once for each instruction set, into a namespace of its own.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Resampling.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef ZT_PIXELS_TAPS
#define ZT_PIXELS_TAPS
namespace ztPixels
{

/// What the new pixels are made of along one direction: each of `count` pixels of the source, from firsts[pixel] on,
/// with the weights from weightsOf(pixel) on. `firsts` never falls.
struct Taps
{
    int count = 1;
    std::vector<int> firsts;
    std::vector<float> weights;

    int first(int pixel) const { return firsts[std::size_t(pixel)]; }
    float const* weightsOf(int pixel) const { return weights.data() + std::size_t(pixel) * std::size_t(count); }
};

struct Picture
{
    std::uint8_t const* bytes;
    int width, height;
};

} // namespace ztPixels
#endif

HWY_BEFORE_NAMESPACE();
namespace ztPixels
{

namespace HWY_NAMESPACE
{

namespace
{

namespace hn = hwy::HWY_NAMESPACE;

template <class Lanes>
auto load(Lanes lanes, float const* from)
{
    return hn::LoadU(lanes, from);
}

template <class Lanes>
auto load(Lanes lanes, std::uint8_t const* from)
{
    hn::Rebind<std::uint8_t, Lanes> const bytes;
    hn::Rebind<std::int32_t, Lanes> const integers;
    return hn::ConvertTo(lanes, hn::PromoteTo(integers, hn::LoadU(bytes, from)));
}

template <class V>
void store(V values, float* to)
{
    hn::StoreU(values, hn::DFromV<V>(), to);
}

/// Adding 2^23 rounds to a whole number, which the lowest bits then hold.
template <class V>
void store(V values, std::uint8_t* to)
{
    hn::DFromV<V> const lanes;
    hn::Rebind<std::uint8_t, decltype(lanes)> const bytes;
    hn::Rebind<std::uint32_t, decltype(lanes)> const words;
    auto const clamped = hn::Min(hn::Max(values, hn::Zero(lanes)), hn::Set(lanes, 255.0f));
    auto const rounded = hn::BitCast(words, hn::Add(clamped, hn::Set(lanes, 8388608.0f)));
    hn::StoreU(hn::TruncateTo(bytes, rounded), bytes, to);
}

/// Each channel as another type.
template <class In, class Out>
void convert(In const* from, std::size_t length, Out* to)
{
    std::size_t i = 0;
    auto const repeat = [&](auto lanes) HWY_ATTR {
        for (; i + hn::Lanes(lanes) <= length; i += hn::Lanes(lanes))
            store(load(lanes, from + i), to + i);
    };
    repeat(hn::ScalableTag<float>());
    repeat(hn::FixedTag<float, channels>());
}

/// A row of sums over weighted rows.
template <class In, class Out>
void sumRows(In const* const* rows, float const* weights, int count, std::size_t length, Out* sums)
{
    std::size_t i = 0;
    hn::ScalableTag<float> const lanes;
    std::size_t const n = hn::Lanes(lanes);
    for (; i + 4 * n <= length; i += 4 * n)
    {
        auto a = hn::Zero(lanes), b = a, c = a, d = a;
        for (int tap = 0; tap < count; ++tap)
        {
            auto const weight = hn::Set(lanes, weights[tap]);
            In const* const row = rows[tap] + i;
            a = hn::Add(a, hn::Mul(weight, load(lanes, row)));
            b = hn::Add(b, hn::Mul(weight, load(lanes, row + n)));
            c = hn::Add(c, hn::Mul(weight, load(lanes, row + 2 * n)));
            d = hn::Add(d, hn::Mul(weight, load(lanes, row + 3 * n)));
        }
        store(a, sums + i);
        store(b, sums + i + n);
        store(c, sums + i + 2 * n);
        store(d, sums + i + 3 * n);
    }
    auto const repeat = [&](auto fewer) HWY_ATTR {
        for (; i + hn::Lanes(fewer) <= length; i += hn::Lanes(fewer))
        {
            auto sum = hn::Zero(fewer);
            for (int tap = 0; tap < count; ++tap)
                sum = hn::Add(sum, hn::Mul(hn::Set(fewer, weights[tap]), load(fewer, rows[tap] + i)));
            store(sum, sums + i);
        }
    };
    repeat(lanes);
    repeat(hn::FixedTag<float, channels>());
}

/// A row of new pixels from a row, four at a time.
void sumColumns(float const* row, Taps const& taps, int width, float* sums)
{
    hn::FixedTag<float, channels> const pixel;
    std::size_t const count = std::size_t(taps.count);
    auto const sampled = [=](int const* first, float const* weight, std::size_t tap) HWY_ATTR {
        return hn::Mul(hn::Set(pixel, *weight), hn::LoadU(pixel, row + (std::size_t(*first) + tap) * channels));
    };
    int const* first = taps.firsts.data();
    float const* weight = taps.weights.data();
    int x = 0;
    for (; x + 4 <= width; x += 4, first += 4, weight += 3 * count, sums += 4 * channels)
    {
        auto a = hn::Zero(pixel), b = a, c = a, d = a;
        for (std::size_t tap = 0; tap < count; ++tap, ++weight)
        {
            a = hn::Add(a, sampled(first, weight, tap));
            b = hn::Add(b, sampled(first + 1, weight + count, tap));
            c = hn::Add(c, sampled(first + 2, weight + 2 * count, tap));
            d = hn::Add(d, sampled(first + 3, weight + 3 * count, tap));
        }
        hn::StoreU(a, pixel, sums);
        hn::StoreU(b, pixel, sums + channels);
        hn::StoreU(c, pixel, sums + 2 * channels);
        hn::StoreU(d, pixel, sums + 3 * channels);
    }
    for (; x < width; ++x, ++first, sums += channels)
    {
        auto sum = hn::Zero(pixel);
        for (std::size_t tap = 0; tap < count; ++tap)
            sum = hn::Add(sum, sampled(first, weight++, tap));
        hn::StoreU(sum, pixel, sums);
    }
}

void resampleRowsFirst(Picture source, std::uint8_t* destination, int width, int height, Taps const& columns,
                       Taps const& rows)
{
    std::size_t const sourceLength = std::size_t(source.width) * channels;
    std::size_t const length = std::size_t(width) * channels;
    bool const copiesColumns = columns.count == 1 && width == source.width;
    std::vector<float> sums(sourceLength), resampled(length);
    std::vector<std::uint8_t const*> weighed(std::size_t(rows.count));
    for (int y = 0; y < height; ++y, destination += length)
    {
        for (std::size_t i = 0; i < weighed.size(); ++i)
            weighed[i] = source.bytes + (std::size_t(rows.firsts[std::size_t(y)]) + i) * sourceLength;
        if (copiesColumns)
        {
            sumRows(weighed.data(), rows.weightsOf(y), rows.count, length, destination);
            continue;
        }
        sumRows(weighed.data(), rows.weightsOf(y), rows.count, sourceLength, sums.data());
        sumColumns(sums.data(), columns, width, resampled.data());
        convert(resampled.data(), length, destination);
    }
}

/// Keeps the new columns of as many rows of the source as make up a new one.
void resampleColumnsFirst(Picture source, std::uint8_t* destination, int width, int height, Taps const& columns,
                          Taps const& rows)
{
    std::size_t const sourceLength = std::size_t(source.width) * channels;
    std::size_t const length = std::size_t(width) * channels;
    std::vector<float> unpacked(sourceLength), kept(std::size_t(rows.count) * length);
    auto const keptRow = [&](int row) { return kept.data() + std::size_t(row % rows.count) * length; };
    std::vector<float const*> weighed(std::size_t(rows.count));
    int next = 0;
    for (int y = 0; y < height; ++y, destination += length)
    {
        int const first = rows.firsts[std::size_t(y)];
        for (next = std::max(next, first); next < first + rows.count; ++next)
        {
            convert(source.bytes + std::size_t(next) * sourceLength, sourceLength, unpacked.data());
            sumColumns(unpacked.data(), columns, width, keptRow(next));
        }
        for (int i = 0; i < rows.count; ++i)
            weighed[std::size_t(i)] = keptRow(first + i);
        sumRows(weighed.data(), rows.weightsOf(y), rows.count, length, destination);
    }
}

} // namespace

} // namespace HWY_NAMESPACE

} // namespace ztPixels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ztPixels
{

namespace
{

HWY_EXPORT(resampleRowsFirst);
HWY_EXPORT(resampleColumnsFirst);

/// One direction of a picture.
struct Direction
{
    int newSize, sourceSize;
    Kernel const& kernel;

    double step() const { return double(sourceSize) / newSize; }
    double widening() const { return std::max(step(), 1.0); }
};

/// The pixels of the source that lie within the kernel's support, or the nearest if none does.
struct Window
{
    double centre;
    int first, last, nearest;
};

std::vector<Window> windowsOf(Direction const& direction)
{
    Kernel const& kernel = direction.kernel;
    double const radius = kernel.support * direction.widening();
    bool const isClosed = kernel.weight(kernel.support) != 0.0 || kernel.weight(-kernel.support) != 0.0;
    int const end = direction.sourceSize - 1;
    std::vector<Window> windows;
    windows.reserve(std::size_t(direction.newSize));
    for (int pixel = 0; pixel < direction.newSize; ++pixel)
    {
        double const centre = (pixel + 0.5) * direction.step() - 0.5;
        double const lowest = isClosed ? std::ceil(centre - radius) : std::floor(centre - radius) + 1.0;
        double const highest = isClosed ? std::floor(centre + radius) : std::ceil(centre + radius) - 1.0;
        int const first = std::max(ztNumeric::truncate(lowest), 0);
        int const last = std::min(ztNumeric::truncate(highest), end);
        int const nearest = std::clamp(ztNumeric::truncate(centre + 0.5), 0, end);
        windows.push_back(lowest <= highest && first <= last ? Window{centre, first, last, nearest}
                                                             : Window{centre, nearest, nearest, nearest});
    }
    return windows;
}

/// The weights of a window's pixels, which sum to 1.
void weigh(Window const& window, Direction const& direction, std::vector<double>& weights)
{
    double const scale = 1.0 / direction.widening();
    double sum = 0.0;
    weights.clear();
    for (int i = window.first; i <= window.last; ++i)
    {
        weights.push_back(direction.kernel.weight((i - window.centre) * scale));
        sum += weights.back();
    }
    if (std::abs(sum) > 0.0 && std::isfinite(sum))
        for (double& weight : weights)
            weight /= sum;
    else
        for (int i = window.first; i <= window.last; ++i)
            weights[std::size_t(i - window.first)] = i == window.nearest ? 1.0 : 0.0;
}

Taps tapsOf(Direction const& direction)
{
    Taps taps;
    std::vector<Window> const windows = windowsOf(direction);
    for (Window const& window : windows)
        taps.count = std::max(taps.count, window.last - window.first + 1);
    taps.firsts.reserve(windows.size());
    taps.weights.resize(windows.size() * std::size_t(taps.count));
    std::vector<double> weights;
    float* to = taps.weights.data();
    for (Window const& window : windows)
    {
        int const first = std::min(window.first, direction.sourceSize - taps.count);
        taps.firsts.push_back(first);
        weigh(window, direction, weights);
        std::transform(weights.begin(), weights.end(), to + (window.first - first), [](double w) { return float(w); });
        to += taps.count;
    }
    return taps;
}

} // namespace

Kernel triangle()
{
    return {1.0, [](double distance) { return std::max(1.0 - std::abs(distance), 0.0); }};
}

void resample(std::uint8_t const* source, int sourceWidth, int sourceHeight, std::uint8_t* destination, int width,
              int height, Kernel const& kernel)
{
    Taps const columns = tapsOf({width, sourceWidth, kernel});
    Taps const rows = tapsOf({height, sourceHeight, kernel});
    double const columnWork = 4.0;
    double const perRow = columnWork * columns.count * width;
    double const perColumn = double(rows.count) * height;
    bool const rowsFirst = perColumn * sourceWidth + perRow * height <= perRow * sourceHeight + perColumn * width;
    Picture const picture{source, sourceWidth, sourceHeight};
    if (rowsFirst)
        HWY_DYNAMIC_DISPATCH(resampleRowsFirst)(picture, destination, width, height, columns, rows);
    else
        HWY_DYNAMIC_DISPATCH(resampleColumnsFirst)(picture, destination, width, height, columns, rows);
}

} // namespace ztPixels
#endif
