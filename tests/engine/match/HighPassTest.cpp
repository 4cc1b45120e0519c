#include "match/HighPass.h"

#include <gmock/gmock.h>

#include "Signals.h"
#include "vxl_sync/Sync.h"

namespace
{

using signals::rate;
using signals::samplesOf;
using signals::stored;

std::vector<float> highPassed(const std::vector<float>& samples)
{
    const vxlsync::Interrupt never;
    return samplesOf(vxlsync::highPassed(stored(samples), rate, never));
}

double loudnessOf(const std::vector<float>& samples)
{
    double sum = 0.0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return sum / static_cast<double>(samples.size());
}

TEST(HighPass, TakesOutAConstant)
{
    const std::vector<float> samples(4 * rate, 0.5f);

    const std::vector<float> passed = highPassed(samples);

    EXPECT_LT(loudnessOf(signals::part(passed, rate, rate)), 1e-10);
}

TEST(HighPass, KeepsAToneInTheBand)
{
    const std::vector<float> samples = signals::tone(1000.0, 4 * rate);

    const std::vector<float> passed = highPassed(samples);

    const double before = loudnessOf(signals::part(samples, rate, rate));
    EXPECT_NEAR(loudnessOf(signals::part(passed, rate, rate)) / before, 1.0, 0.01);
}

TEST(HighPass, WeakensHumByMoreThanTwelveDecibels)
{
    const std::vector<float> samples = signals::tone(50.0, 4 * rate);

    const std::vector<float> passed = highPassed(samples);

    // Fourth order at 50 of 80 Hz: 1 / (1 + 1.6^8), which is 16 dB.
    const double before = loudnessOf(signals::part(samples, rate, rate));
    EXPECT_NEAR(loudnessOf(signals::part(passed, rate, rate)) / before, 1.0 / 43.95, 0.003);
}

TEST(HighPass, FadesBothEndsOverAQuarterOfASecond)
{
    const std::vector<float> samples = signals::tone(1000.0, 4 * rate);

    const std::vector<float> passed = highPassed(samples);

    EXPECT_EQ(passed.front(), 0.0f);
    EXPECT_EQ(passed.back(), 0.0f);
    // An eighth of a second from either end gains are about a half, and a quarter of the energy.
    const double whole = loudnessOf(signals::part(passed, rate, rate));
    const std::size_t eighth = rate / 8;
    EXPECT_NEAR(loudnessOf(signals::part(passed, eighth - 40, 80)) / whole, 0.25, 0.01);
    EXPECT_NEAR(loudnessOf(signals::part(passed, passed.size() - eighth - 40, 80)) / whole, 0.25,
                0.01);
    EXPECT_NEAR(loudnessOf(signals::part(passed, rate / 4, 80)) / whole, 1.0, 0.01);
}

TEST(HighPass, FadesWhatIsShorterThanItsFades)
{
    const std::vector<float> samples = signals::tone(1000.0, 80);

    const std::vector<float> passed = highPassed(samples);

    ASSERT_EQ(passed.size(), 80u);
    EXPECT_EQ(passed.front(), 0.0f);
    EXPECT_NE(passed[40], 0.0f);
    EXPECT_EQ(passed.back(), 0.0f);
}

TEST(HighPass, HasNothingToSayOfNothing)
{
    EXPECT_TRUE(highPassed({}).empty());
}

TEST(HighPass, LeavesSilenceSilent)
{
    // A second of sound, then ten hours in which nothing is heard, then a second of sound.
    const std::vector<float> sound = signals::noise(1, rate);
    vxlsync::SampleStore<float> samples = stored(sound);
    samples.appendSilence(36000u * rate);
    samples.append(sound.data(), sound.size());
    const vxlsync::Interrupt never;

    const vxlsync::SampleStore<float> passed = vxlsync::highPassed(samples, rate, never);

    EXPECT_EQ(passed.size(), samples.size());
    // Room for what rings on.
    EXPECT_LT(passed.bytes(), samples.bytes() + 4 * 4 * samples.blockSize);
    EXPECT_FALSE(passed.hasSound(3u * rate, 35000u * rate));
    EXPECT_TRUE(passed.hasSound(passed.size() - rate, rate));
}

TEST(HighPass, RingsOnToNothingAndNotToTheLeastOfNumbers)
{
    std::vector<float> samples(4 * rate, 0.0f);
    samples[0] = samples[rate] = 1.0f;

    const std::vector<float> passed = highPassed(samples);

    for (const float sample : passed)
        EXPECT_TRUE(sample == 0.0f || std::fabs(sample) > 1e-30f) << sample;
    EXPECT_NE(passed[rate + 20], 0.0f);
    EXPECT_EQ(passed[2 * rate], 0.0f);
}

TEST(HighPass, TakesHalfFloatsAsWell)
{
    const std::vector<float> samples = signals::tone(1000.0, rate);
    vxlsync::SampleStore<std::uint16_t> halves;
    halves.append(samples.data(), samples.size());
    const vxlsync::Interrupt never;

    const std::vector<float> passed = samplesOf(vxlsync::highPassed(halves, rate, never));

    const std::vector<float> expected = highPassed(samples);
    // Eight bits of 0.3.
    for (std::size_t i = 0; i < passed.size(); ++i)
        EXPECT_NEAR(passed[i], expected[i], 0.3f / 128.0f);
}

TEST(HighPass, CanBeEnded)
{
    const vxlsync::Interrupt now([] { return true; });

    EXPECT_THROW(vxlsync::highPassed(stored(signals::noise(1, rate)), rate, now),
                 vxlsync::Cancelled);
}

} // namespace
