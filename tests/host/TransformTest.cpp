#include "Transform.h"

#include <gmock/gmock.h>

#include "Signals.h"

namespace
{

using vxlsync::fastLength;
using vxlsync::Spectrum;
using vxlsync::Transform;

TEST(Transform, TakesTheNextEvenLengthOfSmallFactors)
{
    EXPECT_EQ(fastLength(0), 2u);
    EXPECT_EQ(fastLength(8), 8u);
    // 14 and 22 hold 7 and 11.
    EXPECT_EQ(fastLength(13), 16u);
    EXPECT_EQ(fastLength(21), 24u);
    // 45 is 9 * 5 but odd; 46 is 2 * 23.
    EXPECT_EQ(fastLength(45), 48u);
}

TEST(Transform, GivesTheSumOfTheSamplesInBinZero)
{
    Transform transform(8);
    const std::vector<float> samples{1, 2, 3, 4, 5, 6, 7, 8};
    Spectrum spectrum(transform.bins());

    transform.forward(samples.data(), spectrum.data());

    EXPECT_FLOAT_EQ(spectrum[0].real(), 36.0F);
    // Alternating signs: 1 - 2 + 3 - 4 + 5 - 6 + 7 - 8.
    EXPECT_FLOAT_EQ(spectrum[4].real(), -4.0F);
}

TEST(Transform, InvertsItselfTimesTheLength)
{
    Transform transform(30);
    const std::vector<float> samples = signals::noise(1, 30);
    Spectrum spectrum(transform.bins());
    std::vector<float> back(30);

    transform.forward(samples.data(), spectrum.data());
    transform.inverse(spectrum.data(), back.data());

    for (std::size_t i = 0; i < samples.size(); ++i)
        EXPECT_NEAR(back[i], 30.0F * samples[i], 1e-4F);
}

} // namespace
