#include "Recording.h"

#include <gmock/gmock.h>

namespace
{

using vxlsync::CompactSamples;
using vxlsync::Recording;

TEST(CompactSamples, KeepEightBitsAtAnyLevel)
{
    // Half a step of the eighth bit: 2 to the -8th of the leading one.
    constexpr float half = 1.0F / 256.0F;
    const float values[] = {0.7F, -0.3F, 1e-6F, -3e-9F, 0.0F};
    CompactSamples samples;

    samples.append(values, 5);

    ASSERT_EQ(samples.size(), 5u);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_LE(std::abs(samples[i] - values[i]), half * std::abs(values[i])) << i;
}

TEST(Recording, MeasuresItsLengthAndLoudnessWithoutAConstantPart)
{
    Recording recording;
    for (int i = 0; i < 16000; ++i)
        recording.samples.push_back(i % 2 == 0 ? 0.75F : 0.25F);

    recording.measure();

    EXPECT_DOUBLE_EQ(recording.durationSeconds, 2.0);
    // 0.25 on either side of 0.5.
    EXPECT_NEAR(recording.meanSquare, 0.0625, 1e-9);
}

TEST(Recording, IsSilentAndShortWithoutSamples)
{
    Recording recording;

    recording.measure();

    EXPECT_EQ(recording.durationSeconds, 0.0);
    EXPECT_EQ(recording.meanSquare, 0.0);
}

} // namespace
