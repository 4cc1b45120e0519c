#include "read/Resampler.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>

namespace
{

using vxlsync::Resampler;

std::vector<float> resampled(Resampler& resampler, const std::vector<float>& samples,
                             std::size_t block)
{
    std::vector<float> out;
    const auto sink = [&out](const float* made, std::size_t count) {
        out.insert(out.end(), made, made + count);
    };
    for (std::size_t at = 0; at < samples.size(); at += block)
        resampler.run(samples.data() + at, std::min(block, samples.size() - at), sink);
    resampler.drain(sink);
    return out;
}

std::vector<float> resampled(int from, int to, const std::vector<float>& samples,
                             std::size_t block = 5000)
{
    Resampler resampler(from, to);
    return resampled(resampler, samples, block);
}

std::vector<float> tone(int rate, double frequency, std::size_t count)
{
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double turns = frequency * static_cast<double>(i) / rate;
        samples[i] = static_cast<float>(std::sin(2.0 * std::acos(-1.0) * turns));
    }
    return samples;
}

// Of the middle half, in decibels of a full tone.
double levelOf(const std::vector<float>& samples)
{
    double sum = 0.0;
    const std::size_t quarter = samples.size() / 4;
    for (std::size_t i = quarter; i < 3 * quarter; ++i)
        sum += static_cast<double>(samples[i]) * static_cast<double>(samples[i]);
    return 10.0 * std::log10(2.0 * sum / static_cast<double>(2 * quarter) + 1e-30);
}

struct Rates {
    int from;
    int to;
};

class Aliases : public testing::TestWithParam<Rates>
{
};

TEST_P(Aliases, LieBelowAHundredDecibels)
{
    const int from = GetParam().from;
    const double half = GetParam().to / 2.0;

    for (const double frequency :
         {half * 1.01, half * 1.2, (half + from / 2.0) / 2.0, from * 0.49}) {
        const std::vector<float> out =
            resampled(from, GetParam().to, tone(from, frequency, static_cast<std::size_t>(from)));
        EXPECT_LT(levelOf(out), -100.0) << frequency << " Hz";
    }
}

TEST_P(Aliases, LeaveWhatIsBelowAsItIs)
{
    const int from = GetParam().from;
    const double frequency = GetParam().to * 0.44;

    const std::vector<float> out =
        resampled(from, GetParam().to, tone(from, frequency, static_cast<std::size_t>(from)));

    EXPECT_NEAR(levelOf(out), 0.0, 0.01);
}

constexpr Rates reduced[] = {{48000, 8000}, {44100, 16000},  {96000, 8000}, {22050, 8000},
                             {11025, 8000}, {768000, 16000}, {16000, 8000}, {47999, 8000}};

INSTANTIATE_TEST_SUITE_P(All, Aliases, testing::ValuesIn(reduced),
                         [](const testing::TestParamInfo<Rates>& rates) {
                             return std::to_string(rates.param.from) + "To" +
                                    std::to_string(rates.param.to);
                         });

TEST(Resampler, KeepsTheLengthForAnyRateAndAnyBlock)
{
    std::uint32_t state = 7;
    const auto below = [&state](std::uint32_t count) {
        state = state * 1664525u + 1013904223u;
        return (state >> 8u) % count;
    };
    for (int round = 0; round < 60; ++round) {
        const int from = 2000 + static_cast<int>(below(766001));
        const int to = round % 2 == 0 ? 8000 : std::max(8001, std::min(from, 16000));
        const std::size_t count = 1 + below(60000);
        const std::size_t block = 1 + below(round % 3 == 0 ? 50 : 100000);

        const std::vector<float> out = resampled(from, to, std::vector<float>(count, 0.25f), block);

        const double expected = std::round(static_cast<double>(count) * to / from);
        EXPECT_NEAR(static_cast<double>(out.size()), expected, 1.0)
            << from << " to " << to << ", " << count << " in blocks of " << block;
    }
}

TEST(Resampler, GivesTheSameInBlocksOfAnySize)
{
    const std::vector<float> in = tone(44100, 700.0, 30000);

    const std::vector<float> whole = resampled(44100, 16000, in, in.size());

    EXPECT_EQ(resampled(44100, 16000, in, 1), whole);
    EXPECT_EQ(resampled(44100, 16000, in, 4097), whole);
}

TEST(Resampler, KeepsSampleZeroInItsPlace)
{
    // The middle of a pulse at sample 24000 of 48000 lies at 4000 of 8000.
    std::vector<float> in(48000, 0.0f);
    in[24000] = 1.0f;

    const std::vector<float> out = resampled(48000, 8000, in);

    const auto highest = std::max_element(out.begin(), out.end());
    EXPECT_EQ(highest - out.begin(), 4000);
    EXPECT_NEAR(out[3999], out[4001], 1e-5f);
}

TEST(Resampler, PassesOnWhatHasTheRightRate)
{
    EXPECT_THAT(resampled(8000, 8000, {0.5f, -0.25f}), testing::ElementsAre(0.5f, -0.25f));
}

TEST(Resampler, BeginsAnewAfterItWasDrained)
{
    const std::vector<float> in = tone(44100, 700.0, 20000);
    Resampler resampler(44100, 8000);
    const std::vector<float> first = resampled(resampler, in, 5000);

    EXPECT_EQ(resampled(resampler, in, 5000), first);
}

TEST(Resampler, RefusesRatesThatAreNone)
{
    EXPECT_THROW(Resampler(0, 8000), std::runtime_error);
    EXPECT_THROW(Resampler(-5, 8000), std::runtime_error);
}

} // namespace
