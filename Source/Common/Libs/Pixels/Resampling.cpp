#include "ztPixels.h"

#include "ztNumeric.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
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

/// What the new pixels are made of along one direction: each of `count` pixels of the source, from first(pixel) on,
/// with the weights from weightsOf(pixel) on. `firsts` never falls.
struct Taps
{
    int count = 1;
    std::vector<int> firsts;
    std::vector<float> weights;

    int size() const { return int(firsts.size()); }
    int first(int pixel) const { return firsts[std::size_t(pixel)]; }
    float const* weightsOf(int pixel) const { return weights.data() + std::size_t(pixel) * std::size_t(count); }
};

struct Picture
{
    std::uint8_t const* bytes;
    int width, height;

    std::uint8_t const* row(int y) const { return bytes + std::size_t(y) * std::size_t(width) * channels; }
};

/// Columns are resampled in strips of four rows side by side: the first pixel of each row, then the second of each.
constexpr int stripRows = 4;

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

/// Adding 2^23 rounds to a whole number, which the lowest bits then hold. A little more goes before, so that halves are
/// rounded up whatever the last bits of a sum.
template <class V>
void store(V values, std::uint8_t* to)
{
    hn::DFromV<V> const lanes;
    hn::Rebind<std::uint8_t, decltype(lanes)> const bytes;
    hn::Rebind<std::uint32_t, decltype(lanes)> const words;
    auto const raised = hn::Add(values, hn::Set(lanes, 1.0f / 1024.0f));
    auto const clamped = hn::Min(hn::Max(raised, hn::Zero(lanes)), hn::Set(lanes, 255.0f));
    auto const rounded = hn::BitCast(words, hn::Add(clamped, hn::Set(lanes, 8388608.0f)));
    hn::StoreU(hn::TruncateTo(bytes, rounded), bytes, to);
}

/// Stores pixels of one row into a strip.
template <class V>
void storeApart(V pixels, float* to)
{
    hn::DFromV<V> const lanes;
    if constexpr (hn::MaxLanes(lanes) <= channels)
        hn::StoreU(pixels, lanes, to);
    else
    {
        hn::Half<decltype(lanes)> const half;
        storeApart(hn::LowerHalf(half, pixels), to);
        storeApart(hn::UpperHalf(half, pixels), to + hn::Lanes(half) * stripRows);
    }
}

/// Sums over weighted rows, which put(values, first channel) takes.
template <class Sample, class Put>
void sumRows(Sample const* const* rows, float const* weights, int count, std::size_t length, Put const& put)
{
    hn::ScalableTag<float> const lanes;
    std::size_t const n = hn::Lanes(lanes);
    std::size_t i = 0;
    for (; i + 4 * n <= length; i += 4 * n)
    {
        auto a = hn::Zero(lanes), b = a, c = a, d = a;
        for (int tap = 0; tap < count; ++tap)
        {
            auto const weight = hn::Set(lanes, weights[tap]);
            Sample const* const row = rows[tap] + i;
            a = hn::Add(a, hn::Mul(weight, load(lanes, row)));
            b = hn::Add(b, hn::Mul(weight, load(lanes, row + n)));
            c = hn::Add(c, hn::Mul(weight, load(lanes, row + 2 * n)));
            d = hn::Add(d, hn::Mul(weight, load(lanes, row + 3 * n)));
        }
        put(a, i);
        put(b, i + n);
        put(c, i + 2 * n);
        put(d, i + 3 * n);
    }
    auto const repeat = [&](auto fewer) HWY_ATTR {
        for (; i + hn::Lanes(fewer) <= length; i += hn::Lanes(fewer))
        {
            auto sum = hn::Zero(fewer);
            for (int tap = 0; tap < count; ++tap)
                sum = hn::Add(sum, hn::Mul(hn::Set(fewer, weights[tap]), load(fewer, rows[tap] + i)));
            put(sum, i);
        }
    };
    repeat(lanes);
    repeat(hn::FixedTag<float, channels>());
}

/// The rows of new pixels that a strip makes.
template <class Sample, class Channel>
void sumColumns(Sample const* strip, Taps const& taps, std::array<Channel*, stripRows> const& rows)
{
    hn::CappedTag<float, stripRows * channels> const lanes;
    float const* weights = taps.weights.data();
    for (std::size_t x = 0; x < taps.firsts.size(); ++x, weights += taps.count)
    {
        Channel pixels[stripRows * channels];
        for (std::size_t i = 0; i < stripRows * channels; i += hn::Lanes(lanes))
        {
            Sample const* from = strip + std::size_t(taps.firsts[x]) * stripRows * channels + i;
            auto sum = hn::Zero(lanes);
            for (int tap = 0; tap < taps.count; ++tap, from += stripRows * channels)
                sum = hn::Add(sum, hn::Mul(hn::Set(lanes, weights[tap]), load(lanes, from)));
            store(sum, pixels + i);
        }
        for (std::size_t row = 0; row < stripRows; ++row)
            std::memcpy(rows[row] + x * channels, pixels + row * channels, channels * sizeof(Channel));
    }
}

/// A strip of four rows of the source from one on; its last row stands for those beyond.
void fillStrip(Picture source, int firstRow, std::vector<std::uint32_t>& strip)
{
    std::array<std::uint8_t const*, stripRows> rows;
    for (int r = 0; r < stripRows; ++r)
        rows[std::size_t(r)] = source.row(std::min(firstRow + r, source.height - 1));
    hn::ScalableTag<std::uint32_t> const words;
    hn::Repartition<std::uint8_t, decltype(words)> const bytes;
    std::size_t const width = std::size_t(source.width);
    std::size_t x = 0;
    for (; x + hn::Lanes(words) <= width; x += hn::Lanes(words))
    {
        auto const pixels = [&](int r) HWY_ATTR {
            return hn::BitCast(words, hn::LoadU(bytes, rows[std::size_t(r)] + x * channels));
        };
        hn::StoreInterleaved4(pixels(0), pixels(1), pixels(2), pixels(3), words, &strip[x * stripRows]);
    }
    for (; x < width; ++x)
        for (std::size_t r = 0; r < stripRows; ++r)
            std::memcpy(&strip[x * stripRows + r], rows[r] + x * channels, channels);
}

/// Where a picture's rows stay as they are.
void resampleColumns(Picture source, std::uint8_t* destination, Taps const& columns)
{
    std::vector<std::uint32_t> strip(std::size_t(source.width) * stripRows);
    std::array<std::uint8_t*, stripRows> resampled;
    for (int y = 0; y < source.height; y += stripRows)
    {
        fillStrip(source, y, strip);
        for (int r = 0; r < stripRows; ++r)
            resampled[std::size_t(r)] =
                destination + std::size_t(std::min(y + r, source.height - 1)) * columns.firsts.size() * channels;
        sumColumns(reinterpret_cast<std::uint8_t const*>(strip.data()), columns, resampled);
    }
}

/// Where a picture's columns stay as they are.
void resampleRows(Picture source, std::uint8_t* destination, Taps const& rows)
{
    std::size_t const length = std::size_t(source.width) * channels;
    std::vector<std::uint8_t const*> weighed(std::size_t(rows.count));
    for (int y = 0; y < rows.size(); ++y, destination += length)
    {
        for (int i = 0; i < rows.count; ++i)
            weighed[std::size_t(i)] = source.row(rows.first(y) + i);
        sumRows(weighed.data(), rows.weightsOf(y), rows.count, length,
                [=](auto sums, std::size_t i) HWY_ATTR { store(sums, destination + i); });
    }
}

void resampleRowsFirst(Picture source, std::uint8_t* destination, Taps const& columns, Taps const& rows)
{
    std::size_t const sourceLength = std::size_t(source.width) * channels;
    std::size_t const length = columns.firsts.size() * channels;
    std::vector<float> strip(sourceLength * stripRows);
    std::vector<std::uint8_t const*> weighed(std::size_t(rows.count));
    std::array<std::uint8_t*, stripRows> resampled;
    for (int y = 0; y < rows.size(); y += stripRows)
    {
        for (int r = 0; r < stripRows; ++r)
        {
            int const row = std::min(y + r, rows.size() - 1);
            float* const to = strip.data() + r * channels;
            for (int i = 0; i < rows.count; ++i)
                weighed[std::size_t(i)] = source.row(rows.first(row) + i);
            sumRows(weighed.data(), rows.weightsOf(row), rows.count, sourceLength,
                    [=](auto sums, std::size_t i) HWY_ATTR { storeApart(sums, to + i * stripRows); });
            resampled[std::size_t(r)] = destination + std::size_t(row) * length;
        }
        sumColumns(strip.data(), columns, resampled);
    }
}

/// Keeps the new columns of the source's rows for as long as new rows need them.
void resampleColumnsFirst(Picture source, std::uint8_t* destination, Taps const& columns, Taps const& rows)
{
    std::size_t const length = columns.firsts.size() * channels;
    int const keptRows = rows.count + stripRows - 1;
    std::vector<std::uint32_t> strip(std::size_t(source.width) * stripRows);
    std::vector<float> kept(std::size_t(keptRows) * length);
    auto const keptRow = [&](int row) { return kept.data() + std::size_t(row % keptRows) * length; };
    std::vector<float const*> weighed(std::size_t(rows.count));
    std::array<float*, stripRows> resampled;
    int next = 0;
    for (int y = 0; y < rows.size(); ++y, destination += length)
    {
        int const first = rows.first(y);
        for (next = std::max(next, first); next < first + rows.count; next += stripRows)
        {
            fillStrip(source, next, strip);
            for (int r = 0; r < stripRows; ++r)
                resampled[std::size_t(r)] = keptRow(std::min(next + r, source.height - 1));
            sumColumns(reinterpret_cast<std::uint8_t const*>(strip.data()), columns, resampled);
        }
        for (int i = 0; i < rows.count; ++i)
            weighed[std::size_t(i)] = keptRow(first + i);
        sumRows(weighed.data(), rows.weightsOf(y), rows.count, length,
                [=](auto sums, std::size_t i) HWY_ATTR { store(sums, destination + i); });
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

HWY_EXPORT(resampleRows);
HWY_EXPORT(resampleColumns);
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
    Picture const picture{source, sourceWidth, sourceHeight};
    if (columns.count == 1 && width == sourceWidth)
        return HWY_DYNAMIC_DISPATCH(resampleRows)(picture, destination, rows);
    if (rows.count == 1 && height == sourceHeight)
        return HWY_DYNAMIC_DISPATCH(resampleColumns)(picture, destination, columns);

    // In sums of a channel; those along a row cost twice as much.
    double const perRow = 2.0 * columns.count * width;
    double const perColumn = double(rows.count) * height;
    double const rowsFirst = perColumn * sourceWidth + perRow * height;
    double const columnsFirst = perRow * sourceHeight + perColumn * width;
    if (rowsFirst <= columnsFirst)
        HWY_DYNAMIC_DISPATCH(resampleRowsFirst)(picture, destination, columns, rows);
    else
        HWY_DYNAMIC_DISPATCH(resampleColumnsFirst)(picture, destination, columns, rows);
}

} // namespace ztPixels
#endif
