#include "read/Track.h"

#include <cmath>
#include <vector>

#include <gmock/gmock.h>

#include "Reading.h"
#include "Signals.h"

namespace
{

using reading::allOf;
using reading::samplesOf;
using vxlsync::Recording;
using vxlsync::Track;

void expectNear(const std::vector<float>& samples, const std::vector<float>& expected,
                float tolerance)
{
    ASSERT_EQ(samples.size(), expected.size());
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_NEAR(samples[i], expected[i], tolerance) << i;
}

TEST(Track, KeepsSamplesOfTheRightRateAsTheyAre)
{
    Recording recording;
    Track track(recording);
    const std::vector<float> in = signals::noise(1, 5000);

    track.setRate(8000);
    track.append(in.data(), in.size());
    track.finish();

    EXPECT_EQ(samplesOf(recording), in);
    EXPECT_EQ(recording.fine.size(), 0u);
    EXPECT_EQ(recording.fineRate, 8000);
}

TEST(Track, KeepsARateOfItsOwnForTheRefinement)
{
    EXPECT_EQ(vxlsync::fineRateOf(2000), 8000);
    EXPECT_EQ(vxlsync::fineRateOf(8000), 8000);
    EXPECT_EQ(vxlsync::fineRateOf(8001), 8001);
    EXPECT_EQ(vxlsync::fineRateOf(16000), 16000);
    EXPECT_EQ(vxlsync::fineRateOf(768000), 16000);
}

TEST(Track, IsAsLongAtBothRates)
{
    Recording recording;
    Track track(recording);
    const std::vector<float> in(44100, 0.25f);

    track.setRate(44100);
    track.append(in.data(), in.size());
    track.finish();

    EXPECT_EQ(recording.samples.size(), 8000u);
    EXPECT_EQ(recording.fineRate, 16000);
    EXPECT_EQ(recording.fine.size(), 16000u);
}

TEST(Track, BringsALaterRateToTheFirst)
{
    Recording recording;
    Track track(recording);
    const std::vector<float> in = signals::noise(2, 12000);

    track.setRate(12000);
    track.append(in.data(), 12000);
    track.setRate(6000);
    track.append(in.data(), 6000);
    track.setRate(12000);
    track.append(in.data(), 12000);
    track.finish();

    EXPECT_EQ(recording.fineRate, 12000);
    EXPECT_EQ(recording.fine.size(), 36000u);
    EXPECT_EQ(recording.samples.size(), 24000u);
}

// Each stretch is 1000 / 44100 s, which is 181.4 samples: rounded one by one, a thousand of them
// would be 405 samples short.
TEST(Track, AddsUpNoRounding)
{
    Recording recording;
    Track track(recording);
    const std::vector<float> in(1000, 0.25f);

    for (int i = 0; i < 100; ++i) {
        track.setRate(i % 2 == 0 ? 44100 : 44101);
        track.append(in.data(), in.size());
    }
    track.finish();

    const double seconds = 50000.0 / 44100.0 + 50000.0 / 44101.0;
    EXPECT_NEAR(static_cast<double>(recording.samples.size()), seconds * 8000.0, 1.0);
    EXPECT_NEAR(static_cast<double>(recording.fine.size()), seconds * 16000.0, 1.0);
}

TEST(Track, IsEmptyWithoutARate)
{
    Recording recording;
    Track track(recording);

    track.finish();

    EXPECT_EQ(recording.samples.size(), 0u);
}

// The silence of one track is skipped; the other hears it as sound, for its zeros come with a click
// far below.
class LongSilence : public testing::TestWithParam<int>
{
};

TEST_P(LongSilence, LeavesWhatFollowsInItsPlace)
{
    const int rate = GetParam();
    const std::vector<float> first = signals::noise(3, static_cast<std::size_t>(rate) + 123);
    const std::vector<float> second = signals::noise(4, static_cast<std::size_t>(rate));
    const std::int64_t silent = 7 * rate + rate / 3;
    Recording skipped;
    Track skipping(skipped);
    skipping.setRate(rate);
    skipping.append(first.data(), first.size());
    skipping.appendSilence(silent);
    skipping.append(second.data(), second.size());
    skipping.finish();

    std::vector<float> all = first;
    all.resize(all.size() + static_cast<std::size_t>(silent), 1e-20f);
    all.insert(all.end(), second.begin(), second.end());
    Recording fed;
    Track feeding(fed);
    feeding.setRate(rate);
    feeding.append(all.data(), all.size());
    feeding.finish();

    expectNear(samplesOf(skipped), samplesOf(fed), 1e-5f);
    expectNear(allOf(skipped.fine), allOf(fed.fine), 0.004f);
    EXPECT_FALSE(skipped.samples.hasSound(3 * 8000, 3 * 8000));
}

INSTANTIATE_TEST_SUITE_P(Rates, LongSilence,
                         testing::Values(8000, 8001, 11025, 16000, 22050, 44100, 47999));

TEST(Track, SkipsHoursAtTheStartAndTheEnd)
{
    Recording recording;
    Track track(recording);
    const float click = 0.5f;
    const std::int64_t hours = std::int64_t{5} * 3600 * 48000;

    track.setRate(48000);
    track.appendSilence(hours);
    track.append(&click, 1);
    track.appendSilence(hours);
    track.finish();

    EXPECT_EQ(recording.samples.size(), std::size_t{10} * 3600 * 8000);
    EXPECT_LT(recording.samples.bytes(), 2'000'000u);
    EXPECT_FALSE(recording.samples.hasSound(0, std::size_t{4} * 3600 * 8000));
    EXPECT_TRUE(recording.samples.hasSound(std::size_t{5} * 3600 * 8000 - 1, 2));
}

TEST(Track, SkipsSamplesThatAreZeroAsWell)
{
    Recording recording;
    Track track(recording);
    const std::vector<float> zeros(48000, 0.0f);

    track.setRate(48000);
    for (int second = 0; second < 60; ++second)
        track.append(zeros.data(), zeros.size());
    track.setRate(44100);
    track.finish();

    EXPECT_EQ(recording.samples.size(), 60u * 8000u);
    EXPECT_LT(recording.samples.bytes(), 100'000u);
}

} // namespace
