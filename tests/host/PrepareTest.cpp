#include "Prepare.h"

#include <gmock/gmock.h>

#include "Signals.h"

namespace
{

using signals::rate;

double loudnessOf(const std::vector<float>& samples)
{
    double sum = 0.0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return sum / static_cast<double>(samples.size());
}

TEST(Prepare, TakesOutAConstant)
{
    const std::vector<float> samples(4 * rate, 0.5F);

    const std::vector<float> passed = vxlsync::highPassed(samples, rate);

    EXPECT_LT(loudnessOf(signals::part(passed, rate, rate)), 1e-10);
}

TEST(Prepare, KeepsAToneInTheBand)
{
    const std::vector<float> samples = signals::tone(1000.0, 4 * rate);

    const std::vector<float> passed = vxlsync::highPassed(samples, rate);

    const double before = loudnessOf(signals::part(samples, rate, rate));
    EXPECT_NEAR(loudnessOf(signals::part(passed, rate, rate)) / before, 1.0, 0.01);
}

TEST(Prepare, WeakensHumByMoreThanTwelveDecibels)
{
    const std::vector<float> samples = signals::tone(50.0, 4 * rate);

    const std::vector<float> passed = vxlsync::highPassed(samples, rate);

    // Fourth order at 50 of 80 Hz: 1 / (1 + 1.6^8), which is 16 dB.
    const double before = loudnessOf(signals::part(samples, rate, rate));
    EXPECT_NEAR(loudnessOf(signals::part(passed, rate, rate)) / before, 1.0 / 43.95, 0.003);
}

TEST(Prepare, FadesBothEnds)
{
    const std::vector<float> passed = vxlsync::highPassed(signals::noise(3, 2 * rate), rate);

    EXPECT_EQ(passed.front(), 0.0F);
    EXPECT_EQ(passed.back(), 0.0F);
}

TEST(Prepare, GivesEveryBinOfTheBandTheSameSize)
{
    vxlsync::Transform transform(16384);

    const vxlsync::Phases phases = vxlsync::phasesOf(signals::noise(5, rate), rate, transform);

    // 100 Hz at 16384 samples of 8 kHz: bin 204.8, so 205 is the first.
    EXPECT_EQ(phases.firstBin, 205u);
    for (std::size_t i = 0; i + 1 < phases.parts.size(); i += 2)
        EXPECT_NEAR(std::hypot(phases.parts[i], phases.parts[i + 1]), 127.0, 1.0);
}

TEST(Prepare, GivesSilenceNoPhases)
{
    vxlsync::Transform transform(16384);

    const vxlsync::Phases phases =
        vxlsync::phasesOf(std::vector<float>(rate, 0.0F), rate, transform);

    EXPECT_THAT(phases.parts, testing::Each(0));
}

} // namespace
