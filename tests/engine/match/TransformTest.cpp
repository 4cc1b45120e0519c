#include "match/Transform.h"

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"

namespace
{

using vxlsync::fastLength;
using vxlsync::Spectrum;
using vxlsync::Transform;

// The first length that is transformed by rows and columns.
constexpr std::size_t longLength = std::size_t{1} << 22u;

TEST(Transform, TakesTheNextPowerOfTwo)
{
    EXPECT_EQ(fastLength(0), 8u);
    EXPECT_EQ(fastLength(8), 8u);
    EXPECT_EQ(fastLength(9), 16u);
    EXPECT_EQ(fastLength(1025), 2048u);
}

TEST(Transform, GivesTheSumOfTheSamplesInBinZero)
{
    Transform transform(8);
    const std::vector<float> samples{1, 2, 3, 4, 5, 6, 7, 8};
    Spectrum spectrum(transform.bins());

    transform.forward(samples.data(), spectrum.data());

    EXPECT_FLOAT_EQ(spectrum[0].real(), 36.0f);
    // Alternating signs: 1 - 2 + 3 - 4 + 5 - 6 + 7 - 8.
    EXPECT_FLOAT_EQ(spectrum[4].real(), -4.0f);
}

TEST(Transform, InvertsItselfTimesTheLength)
{
    for (const std::size_t length : {std::size_t{32}, longLength}) {
        Transform transform(length);
        const std::vector<float> samples = signals::noise(1, length);
        Spectrum spectrum(transform.bins());
        std::vector<float> back(length);

        transform.forward(samples.data(), spectrum.data());
        transform.inverse(spectrum.data(), back.data());

        for (std::size_t i = 0; i < length; ++i)
            ASSERT_NEAR(back[i] / static_cast<float>(length), samples[i], 5e-7f) << i;
    }
}

TEST(Transform, CanBeEndedIfItIsLong)
{
    const vxlsync::Interrupt now(measuring::endingAt(1));
    const std::vector<float> samples(longLength, 0.0f);
    Transform transform(longLength, now);
    Spectrum spectrum(transform.bins());

    EXPECT_THROW(transform.forward(samples.data(), spectrum.data()), vxlsync::Cancelled);
}

} // namespace
