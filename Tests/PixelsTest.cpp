// Plain pixels on every instruction set that this processor has, against slow references.
#include "WeightedSum.h"
#include "ztPixels.h"

#include <hwy/targets.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{

using Bytes = std::vector<std::uint8_t>;

/// Runs a test once for each instruction set, the emulated one included.
template <class Test>
void onEveryTarget(Test const& test)
{
    std::int64_t const all = hwy::SupportedTargets();
    for (std::int64_t left = all; left != 0; left &= left - 1)
    {
        SCOPED_TRACE(hwy::TargetName(left & -left));
        hwy::GetChosenTarget().Update(left & -left);
        test();
        if (testing::Test::HasFatalFailure())
            break;
    }
    hwy::GetChosenTarget().Update(all);
}

Bytes randomBytes(std::size_t count)
{
    static std::mt19937 random(1);
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes)
        byte = std::uint8_t(random());
    return bytes;
}

/// Pixels at random between runs of opaque ones, of clear ones, and of clear ones that add light.
Bytes pixelsInRuns(std::size_t pixels)
{
    Bytes bytes = randomBytes(pixels * 4);
    for (std::size_t i = 0; i < pixels; ++i)
    {
        std::size_t const run = i / 40 % 5;
        bytes[4 * i + 3] = run == 1 ? 255 : run == 2 || run == 3 ? 0 : bytes[4 * i + 3];
        if (run == 2)
            std::fill_n(&bytes[4 * i], 3, std::uint8_t(0));
    }
    return bytes;
}

int blended(int below, int above, int alpha)
{
    return int(std::min(above + std::lround(below * (255 - alpha) / 255.0), 255l));
}

} // namespace

// So many that every pair of bytes is met.
TEST(PixelsTest, BytesAreBlendedAndMultipliedExactly)
{
    std::size_t const pixels = 512 * 512;
    Bytes const above = pixelsInRuns(pixels), below = randomBytes(pixels * 4), straight = randomBytes(pixels * 4);
    onEveryTarget([&] {
        Bytes target = below, multiplied = straight;
        ztPixels::blend(target.data(), 0, above.data(), 0, pixels, 1);
        ztPixels::premultiply(multiplied.data(), pixels);
        for (std::size_t i = 0; i < below.size(); ++i)
        {
            ASSERT_EQ(target[i], blended(below[i], above[i], above[i | 3])) << i;
            ASSERT_EQ(multiplied[i], i % 4 == 3 ? straight[i] : std::lround(straight[i] * straight[i | 3] / 255.0));
        }
    });
}

// Every row begins and ends where its memory does, so that the sanitizer sees whoever leaves it.
TEST(PixelsTest, RowsOfAnyLengthAndAlignmentAreKeptTo)
{
    onEveryTarget([&] {
        for (std::size_t pixels : {0u, 1u, 2u, 3u, 5u, 8u, 15u, 16u, 17u, 31u, 63u, 64u, 100u, 1023u, 1024u, 1031u})
            for (std::size_t offset : {0u, 1u, 4u, 20u})
            {
                Bytes const above = pixelsInRuns(pixels);
                Bytes below = randomBytes(offset + pixels * 4), row(offset + pixels * 4), expected = below;
                for (std::size_t i = 0; i < pixels * 4; ++i)
                    expected[offset + i] = std::uint8_t(blended(below[offset + i], above[i], above[i / 4 * 4 + 3]));
                ztPixels::blend(below.data() + offset, 0, above.data(), 0, pixels, 1);
                ASSERT_EQ(below, expected) << pixels << " pixels, offset " << offset;

                std::vector<std::uint32_t> words(pixels);
                for (std::size_t i = 0; i < pixels; ++i)
                    words[i] = above[4 * i] * 0x10000u + above[4 * i + 1] * 0x100u + above[4 * i + 2] +
                               above[4 * i + 3] * 0x1000000u;
                ztPixels::fromWords(words.data(), row.data() + offset, pixels);
                ASSERT_TRUE(std::equal(above.begin(), above.end(), row.begin() + std::ptrdiff_t(offset)));
            }
    });
}

static ztPixels::Kernel tent(double support)
{
    return {support, [=](double x) { return std::max(support - std::abs(x), 0.0); }};
}

// Catmull and Rom's, negative beyond 1.
static double cubic(double x)
{
    double const t = std::abs(x);
    return t < 1 ? (1.5 * t - 2.5) * t * t + 1 : t < 2 ? ((2.5 - 0.5 * t) * t - 4) * t + 2 : 0;
}

static std::pair<char const*, ztPixels::Kernel> const kernels[] = {
    {"triangle", ztPixels::triangle()},
    {"wide", tent(2.5)},
    {"to one side", {0.7, [](double x) { return double(x < 0); }}},
    {"with gaps", tent(0.1)},
    {"nothing", tent(0)},
    {"below nothing", tent(-1)},
    {"no number", tent(std::nan(""))},
    {"negative weights", {2, cubic}},
    {"steps at its support", {1.2, [](double) { return 1; }}},
    {"weights that cancel out", {1.5, [](double x) { return (x > 0) - (x < 0); }}},
    {"infinite weights", {1, [](double) { return std::numeric_limits<double>::infinity(); }}},
};

TEST(PixelsTest, ResamplingAgreesWithTheReference)
{
    for (auto const& [name, kernel] : kernels)
        for (auto const& [from, to] : {std::pair{std::pair{17, 11}, std::pair{17, 11}},
                                       {{17, 11}, {34, 22}},
                                       {{17, 11}, {17, 5}},
                                       {{17, 11}, {5, 11}},
                                       {{17, 11}, {1, 1}},
                                       {{17, 11}, {3, 29}},
                                       {{70, 3}, {40, 7}},
                                       {{1, 1}, {9, 2}},
                                       {{3, 40}, {70, 6}}})
        {
            SCOPED_TRACE(name);
            Bytes const source = randomBytes(std::size_t(from.first * from.second * 4));
            Bytes scaled(std::size_t(to.first * to.second * 4)), first;
            onEveryTarget([&, from = from, to = to, &kernel = kernel] {
                ztPixels::resample(source.data(), from.first, from.second, scaled.data(), to.first, to.second, kernel);
                first = first.empty() ? scaled : first;
                ASSERT_EQ(scaled, first);
            });
            auto const weigh = [&kernel = kernel](int sourceSize, int size, std::size_t pixel) {
                return weightsOf(sourceSize, size, int(pixel), kernel.support, kernel.weight);
            };
            for (std::size_t i = 0, width = std::size_t(to.first); i < scaled.size(); ++i)
                ASSERT_NEAR(scaled[i],
                            weightedSum(source, weigh(from.first, to.first, i / 4 % width),
                                        weigh(from.second, to.second, i / 4 / width), i % 4),
                            0.501)
                    << from.first << 'x' << from.second << " to " << to.first << 'x' << to.second << ", byte " << i;
        }
}

TEST(PixelsTest, HalvesAreRoundedUp)
{
    Bytes const source{0, 1, 2, 255, 1, 2, 5, 254};
    onEveryTarget([&] {
        Bytes mean(4);
        ztPixels::resample(source.data(), 2, 1, mean.data(), 1, 1, ztPixels::triangle());
        ASSERT_EQ(mean, (Bytes{1, 2, 4, 255}));
        ztPixels::resample(source.data(), 1, 2, mean.data(), 1, 1, ztPixels::triangle());
        ASSERT_EQ(mean, (Bytes{1, 2, 4, 255}));
    });
}

TEST(PixelsTest, PixelsAtTheSupportCount)
{
    Bytes const source{0, 0, 0, 0, 30, 60, 90, 255, 0, 0, 0, 0};
    Bytes blurred(source.size());
    ztPixels::resample(source.data(), 3, 1, blurred.data(), 3, 1, {1.0, [](double) { return 1.0; }});
    EXPECT_EQ(blurred, (Bytes{15, 30, 45, 128, 10, 20, 30, 85, 15, 30, 45, 128}));
}
