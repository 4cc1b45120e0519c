#include "match/LandmarkOffsets.h"

#include <cmath>
#include <set>

#include <gmock/gmock.h>

#include "Events.h"
#include "Measuring.h"
#include "Signals.h"

namespace
{

using events::recordingOf;
using testing::Gt;
using testing::IsEmpty;
using vxlsync::LandmarkOffset;
using vxlsync::Recording;

std::vector<LandmarkOffset> offsetsOf(const std::vector<Recording>& recordings)
{
    vxlsync::Run run(1, measuring::plenty, {});
    return vxlsync::offsetsByLandmarks(recordings, run);
}

TEST(LandmarkOffsets, TellWhereASoundOfTheFirstStandsInTheSecond)
{
    std::vector<Recording> recordings(3);
    recordings[0] = recordingOf(events::eventFrom(0));
    recordings[2] = recordingOf(events::eventFrom(75));

    const std::vector<LandmarkOffset> offsets = offsetsOf(recordings);

    ASSERT_FALSE(offsets.empty());
    EXPECT_EQ(offsets[0].first, 0u);
    EXPECT_EQ(offsets[0].second, 2u);
    // 75 frames of 0.032 s.
    EXPECT_NEAR(offsets[0].offset, 2.4, 1e-6);
    EXPECT_THAT(offsets[0].standing, Gt(10.0));
}

TEST(LandmarkOffsets, OfOneRecordingAreNone)
{
    std::vector<Recording> recordings(2);
    recordings[0] = recordingOf(events::eventFrom(0));

    EXPECT_THAT(offsetsOf(recordings), IsEmpty());
}

// Of a loop of so many turns and one turn by itself.
std::vector<LandmarkOffset> offsetsOfLoop(int turns)
{
    const std::vector<float> once = events::eventFrom(0);
    std::vector<float> loop;
    for (int turn = 0; turn < turns; ++turn)
        loop.insert(loop.end(), once.begin(), once.end());
    std::vector<Recording> recordings;
    recordings.push_back(recordingOf(loop));
    recordings.push_back(recordingOf(once));
    return offsetsOf(recordings);
}

TEST(LandmarkOffsets, AreSeveralWhereTheSoundRepeats)
{
    const std::vector<LandmarkOffset> offsets = offsetsOfLoop(3);

    // The turns stand 625 frames of 0.032 s apart.
    std::vector<double> turns;
    for (const LandmarkOffset& offset : offsets)
        turns.push_back(offset.offset);
    EXPECT_THAT(turns, testing::IsSupersetOf({testing::DoubleNear(0.0, 1e-6),
                                              testing::DoubleNear(20.0, 1e-6),
                                              testing::DoubleNear(40.0, 1e-6)}));
}

TEST(LandmarkOffsets, AreTheFiveHighestOfALongLoop)
{
    std::set<long> turns;
    for (const LandmarkOffset& offset : offsetsOfLoop(7)) {
        EXPECT_NEAR(std::remainder(offset.offset, 20.0), 0.0, 1e-6);
        turns.insert(std::lround(offset.offset / 20.0));
    }

    EXPECT_EQ(turns.size(), 5u);
}

// Of recordings of one event that begin at two places in turn.
std::vector<LandmarkOffset> offsetsOfMany(std::size_t count, double statedSeconds)
{
    std::vector<Recording> recordings;
    for (std::size_t i = 0; i < count; ++i) {
        recordings.push_back(recordingOf(events::eventFrom(i % 2 == 0 ? 0 : 75)));
        recordings.back().durationSeconds = statedSeconds;
    }
    return offsetsOf(recordings);
}

// Stated lengths, in seconds, by which each recording is counted as a block of its own, and by
// which two are: a block takes 4 bytes for each frame of all its recordings, times their number,
// and may take 96 MB.
class LandmarkOffsetsOfBlocks : public testing::TestWithParam<double>
{
};

TEST_P(LandmarkOffsetsOfBlocks, AreTheSameAsCountedAtOnce)
{
    // Three blocks of two, or six.
    const std::vector<LandmarkOffset> inBlocks = offsetsOfMany(6, GetParam());
    const std::vector<LandmarkOffset> atOnce = offsetsOfMany(6, 20.0);

    ASSERT_EQ(inBlocks.size(), atOnce.size());
    // Each pair has one at least.
    ASSERT_GE(atOnce.size(), 15u);
    for (std::size_t i = 0; i < atOnce.size(); ++i) {
        EXPECT_EQ(inBlocks[i].first, atOnce[i].first);
        EXPECT_EQ(inBlocks[i].second, atOnce[i].second);
        EXPECT_EQ(inBlocks[i].offset, atOnce[i].offset);
        EXPECT_EQ(inBlocks[i].standing, atOnce[i].standing);
    }
}

INSTANTIATE_TEST_SUITE_P(OfTwoLengths, LandmarkOffsetsOfBlocks,
                         testing::Values(400000.0, 150000.0));

TEST(LandmarkOffsets, CanBeEndedWhileVotesAreCounted)
{
    vxlsync::Run run(1, measuring::plenty, measuring::cancelling());

    EXPECT_THROW(vxlsync::offsetsByLandmarks(std::vector<Recording>(2), run), vxlsync::Cancelled);
}

} // namespace
