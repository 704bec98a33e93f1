#include "ztPixels.h"

#include "ztNumeric.h"

#include <algorithm>

// This file is compiled once for each instruction set, into a namespace of its own.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Blending.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace ztPixels
{

namespace HWY_NAMESPACE
{

namespace
{

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<std::uint8_t>;

/// Calls work(lanes, first byte) for all bytes of a row of pixels: whole vectors, then what is left in smaller ones.
template <class Work>
void forEachVector(std::size_t pixels, Work const& work)
{
    std::size_t const bytes = pixels * channels;
    std::size_t i = 0;
    auto const repeat = [&](auto lanes) HWY_ATTR {
        for (; i + hn::Lanes(lanes) <= bytes; i += hn::Lanes(lanes))
            work(lanes, i);
    };
    repeat(Bytes());
    repeat(hn::CappedTag<std::uint8_t, 32>());
    repeat(hn::CappedTag<std::uint8_t, 16>());
    repeat(hn::CappedTag<std::uint8_t, 8>());
    repeat(hn::CappedTag<std::uint8_t, 4>());
}

template <class V>
using Pairs = hn::Repartition<std::uint16_t, hn::DFromV<V>>;

/// The alpha of each pixel, in both its 16-bit lanes.
template <class V>
auto alphas(V pixels)
{
    constexpr std::uint8_t none = 0x80;
    alignas(16) static constexpr std::uint8_t sources[16] = {3,  none, 3,  none, 7,  none, 7,  none,
                                                             11, none, 11, none, 15, none, 15, none};
    return hn::BitCast(Pairs<V>(), hn::TableLookupBytesOr0(pixels, hn::LoadDup128(hn::DFromV<V>(), sources)));
}

/// Products of two bytes, divided by 255 and rounded to the nearest: exact.
template <class V>
V dividedBy255(V products)
{
    hn::DFromV<V> const lanes;
    return hn::MulHigh(hn::Add(products, hn::Set(lanes, 128)), hn::Set(lanes, 257));
}

/// Red and blue × a / 255, green and alpha × b / 255, all rounded to the nearest.
template <class V, class V16>
V multiplied(V pixels, V16 a, V16 b)
{
    Pairs<V> const lanes;
    auto const even = hn::And(hn::BitCast(lanes, pixels), hn::Set(lanes, 0xFF));
    auto const odd = hn::ShiftRight<8>(hn::BitCast(lanes, pixels));
    auto const evenResult = dividedBy255(hn::Mul(even, a));
    auto const oddResult = dividedBy255(hn::Mul(odd, b));
    return hn::BitCast(hn::DFromV<V>(), hn::Or(evenResult, hn::ShiftLeft<8>(oddResult)));
}

template <class V>
V blended(V below, V above)
{
    Pairs<V> const lanes;
    auto const uncovered = hn::Sub(hn::Set(lanes, 255), alphas(above));
    return hn::SaturatedAdd(above, multiplied(below, uncovered, uncovered));
}

void blendAll(std::uint8_t* target, std::uint8_t const* source, std::size_t pixels)
{
    forEachVector(pixels, [=](auto lanes, std::size_t i) HWY_ATTR {
        hn::StoreU(blended(hn::LoadU(lanes, target + i), hn::LoadU(lanes, source + i)), lanes, target + i);
    });
}

/// Two vectors, which are skipped if they hold no colour and no alpha, and copied if they are opaque.
void blendTwo(std::uint8_t* target, std::uint8_t const* source)
{
    Bytes const lanes;
    hn::Repartition<std::uint32_t, Bytes> const words;
    std::size_t const n = hn::Lanes(lanes);
    auto const a = hn::LoadU(lanes, source);
    auto const b = hn::LoadU(lanes, source + n);
    if (hn::AllTrue(lanes, hn::Eq(hn::Or(a, b), hn::Zero(lanes))))
        return;
    auto const both = hn::BitCast(words, hn::And(a, b));
    if (hn::AllTrue(words, hn::Eq(hn::ShiftRight<24>(both), hn::Set(words, 255))))
    {
        hn::StoreU(a, lanes, target);
        hn::StoreU(b, lanes, target + n);
        return;
    }
    hn::StoreU(blended(hn::LoadU(lanes, target), a), lanes, target);
    hn::StoreU(blended(hn::LoadU(lanes, target + n), b), lanes, target + n);
}

void blendRow(std::uint8_t* target, std::uint8_t const* source, std::size_t pixels)
{
    constexpr std::size_t longRow = 1024; // where it pays to begin at a multiple of the vector's size
    std::size_t const vector = hn::Lanes(Bytes()) / channels;
    std::size_t const misaligned = reinterpret_cast<std::uintptr_t>(target) / channels % vector;
    std::size_t i = 0;
    if (pixels >= longRow && misaligned)
        blendAll(target, source, i = vector - misaligned);
    for (; i + 2 * vector <= pixels; i += 2 * vector)
        blendTwo(target + i * channels, source + i * channels);
    blendAll(target + i * channels, source + i * channels, pixels - i);
}

void blend(std::uint8_t* target, std::size_t targetStep, std::uint8_t const* source, std::size_t sourceStep,
           std::size_t width, std::size_t height)
{
    if (targetStep == width * channels && sourceStep == targetStep)
        return blendRow(target, source, width * height);
    for (std::size_t row = 0; row < height; ++row)
        blendRow(target + row * targetStep, source + row * sourceStep, width);
}

void premultiply(std::uint8_t* row, std::size_t pixels)
{
    forEachVector(pixels, [=](auto lanes, std::size_t i) HWY_ATTR {
        hn::Repartition<std::uint32_t, decltype(lanes)> const words;
        hn::Repartition<std::uint16_t, decltype(lanes)> const pairs;
        auto const straight = hn::LoadU(lanes, row + i);
        auto const alpha = alphas(straight);
        auto const keepAlpha = hn::BitCast(pairs, hn::Set(words, 255u << 16));
        hn::StoreU(multiplied(straight, alpha, hn::Or(alpha, keepAlpha)), lanes, row + i);
    });
}

void fromWords(std::uint32_t const* source, std::uint8_t* row, std::size_t pixels)
{
    forEachVector(pixels, [=](auto lanes, std::size_t i) HWY_ATTR {
        hn::Repartition<std::uint32_t, decltype(lanes)> const words;
        auto const argb = hn::LoadU(words, source + i / channels);
        auto const greenAndAlpha = hn::And(argb, hn::Set(words, 0xFF00FF00));
        auto const redAndBlue = hn::AndNot(hn::Set(words, 0xFF00FF00), argb);
        auto const swapped = hn::Or(hn::ShiftLeft<16>(redAndBlue), hn::ShiftRight<16>(redAndBlue));
        hn::StoreU(hn::BitCast(lanes, hn::Or(greenAndAlpha, swapped)), lanes, row + i);
    });
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

HWY_EXPORT(blend);
HWY_EXPORT(premultiply);
HWY_EXPORT(fromWords);

std::uint8_t toChannel(double value)
{
    return std::uint8_t(ztNumeric::truncate(std::clamp(value, 0.0, 255.0) + 0.5));
}

void blendModulatedRow(std::uint8_t* target, std::uint8_t const* source, std::size_t pixels,
                       Modulation const& modulation)
{
    for (std::size_t i = 0; i < pixels; ++i, target += channels, source += channels)
    {
        double const uncovered = 1.0 - modulation.coverage * source[3] / 255.0;
        for (int c = 0; c < channels; ++c)
            target[c] = toChannel(source[c] * modulation.factors[c] + target[c] * uncovered);
    }
}

} // namespace

void blend(std::uint8_t* target, std::size_t targetStep, std::uint8_t const* source, std::size_t sourceStep,
           std::size_t width, std::size_t height)
{
    HWY_DYNAMIC_DISPATCH(blend)(target, targetStep, source, sourceStep, width, height);
}

void blendModulated(std::uint8_t* target, std::size_t targetStep, std::uint8_t const* source, std::size_t sourceStep,
                    std::size_t width, std::size_t height, Modulation const& modulation)
{
    for (std::size_t row = 0; row < height; ++row)
        blendModulatedRow(target + row * targetStep, source + row * sourceStep, width, modulation);
}

void premultiply(std::uint8_t* row, std::size_t pixels)
{
    HWY_DYNAMIC_DISPATCH(premultiply)(row, pixels);
}

void fromWords(std::uint32_t const* words, std::uint8_t* row, std::size_t pixels)
{
    HWY_DYNAMIC_DISPATCH(fromWords)(words, row, pixels);
}

} // namespace ztPixels
#endif
