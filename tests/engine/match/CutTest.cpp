#include "match/Cut.h"

#include <cmath>

#include <gmock/gmock.h>

#include "Signals.h"

namespace
{

using signals::stored;
using testing::ElementsAre;
using vxlsync::Cutter;

std::vector<float> cut(const std::vector<float>& samples, std::int64_t start, std::size_t length,
                       const std::vector<float>& fade = {})
{
    std::vector<float> out(length, 9.0f);
    EXPECT_TRUE(Cutter().cut(stored(samples), start, length, fade, out.data()));
    return out;
}

TEST(Cut, TakesThePartAskedFor)
{
    EXPECT_THAT(cut({1, 2, 3, 4, 5}, 1, 3), ElementsAre(2, 3, 4));
}

TEST(Cut, TakesSilenceFromOutside)
{
    EXPECT_THAT(cut({1, 2, 3}, -2, 7), ElementsAre(0, 0, 1, 2, 3, 0, 0));
}

TEST(Cut, FadesBothEnds)
{
    EXPECT_THAT(cut({4, 4, 4, 4, 4}, 0, 5, {0.25f, 0.5f}), ElementsAre(1, 2, 4, 2, 1));
}

TEST(Cut, SaysWhereNothingIsHeard)
{
    vxlsync::SampleStore<float> samples;
    samples.appendSilence(10000);
    float out = 9.0f;

    EXPECT_FALSE(Cutter().cut(samples, 100, 1, {}, &out));
    EXPECT_FALSE(Cutter().cut(stored({1, 2, 3}), 3, 1, {}, &out));
    EXPECT_FALSE(Cutter().cut(stored({1, 2, 3}), -1, 1, {}, &out));
    EXPECT_FALSE(Cutter().cutStretched(samples, 100.0, 1.0001, 1, {}, &out));
    EXPECT_FALSE(Cutter().cutStretched(stored({1, 2, 3}), 50.0, 1.0001, 1, {}, &out));
    EXPECT_EQ(out, 9.0f);
}

TEST(Cut, FollowsAClockBetweenTheSamples)
{
    // A tone of 1 kHz read at steps of 1.0001 from 1000.25 on.
    const std::vector<float> samples = signals::tone(1000.0, 4000);
    std::vector<float> out(2000);

    ASSERT_TRUE(Cutter().cutStretched(stored(samples), 1000.25, 1.0001, 2000, {}, out.data()));

    for (std::size_t i = 0; i < out.size(); ++i) {
        const double position = 1000.25 + 1.0001 * static_cast<double>(i);
        const double expected = 0.3 * std::sin(2.0 * std::acos(-1.0) * position / 8.0);
        // What the interpolation is good for: 50 dB below the tone.
        ASSERT_NEAR(out[i], expected, 0.001) << i;
    }
}

TEST(Cut, TakesSilenceFromOutsideWhereItFollowsAClock)
{
    const std::vector<float> samples = signals::tone(1000.0, 100);
    std::vector<float> out(200);

    ASSERT_TRUE(Cutter().cutStretched(stored(samples), -50.0, 1.0001, 200, {0.0f}, out.data()));

    EXPECT_EQ(out[0], 0.0f);
    EXPECT_EQ(out[30], 0.0f);
    EXPECT_NEAR(out[52], samples[2], 0.05f);
    EXPECT_EQ(out[180], 0.0f);
}

TEST(Cut, HasFadesOfAHalfCosine)
{
    const std::vector<float> fade = vxlsync::cosineFade(2);

    // Quarters of the way: (1 - cos 45 degrees) / 2 and (1 - cos 135 degrees) / 2.
    EXPECT_NEAR(fade[0], 0.14645f, 1e-5f);
    EXPECT_NEAR(fade[1], 0.85355f, 1e-5f);
    EXPECT_TRUE(vxlsync::cosineFade(0).empty());
}

} // namespace
