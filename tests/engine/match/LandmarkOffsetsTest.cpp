#include "match/LandmarkOffsets.h"

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

TEST(LandmarkOffsets, AreSeveralWhereTheSoundRepeats)
{
    std::vector<float> loop;
    for (int turn = 0; turn < 3; ++turn) {
        const std::vector<float> once = events::eventFrom(0);
        loop.insert(loop.end(), once.begin(), once.end());
    }
    std::vector<Recording> recordings;
    recordings.push_back(recordingOf(loop));
    recordings.push_back(recordingOf(events::eventFrom(0)));

    const std::vector<LandmarkOffset> offsets = offsetsOf(recordings);

    // The turns stand 625 frames of 0.032 s apart.
    std::vector<double> turns;
    for (const LandmarkOffset& offset : offsets)
        turns.push_back(offset.offset);
    EXPECT_THAT(turns, testing::IsSupersetOf({testing::DoubleNear(0.0, 1e-6),
                                              testing::DoubleNear(20.0, 1e-6),
                                              testing::DoubleNear(40.0, 1e-6)}));
}

TEST(LandmarkOffsets, AreTheSameWhereVotesAreCountedInBlocks)
{
    // By their length, each is a block of its own.
    std::vector<Recording> recordings;
    for (int i = 0; i < 4; ++i) {
        recordings.push_back(recordingOf(events::eventFrom(i % 2 == 0 ? 0 : 75)));
        recordings.back().durationSeconds = 400000.0;
    }
    std::vector<Recording> together;
    for (int i = 0; i < 4; ++i)
        together.push_back(recordingOf(events::eventFrom(i % 2 == 0 ? 0 : 75)));

    const std::vector<LandmarkOffset> inBlocks = offsetsOf(recordings);
    const std::vector<LandmarkOffset> atOnce = offsetsOf(together);

    ASSERT_EQ(inBlocks.size(), atOnce.size());
    ASSERT_FALSE(atOnce.empty());
    for (std::size_t i = 0; i < atOnce.size(); ++i) {
        EXPECT_EQ(inBlocks[i].first, atOnce[i].first);
        EXPECT_EQ(inBlocks[i].second, atOnce[i].second);
        EXPECT_EQ(inBlocks[i].offset, atOnce[i].offset);
        EXPECT_EQ(inBlocks[i].standing, atOnce[i].standing);
    }
}

TEST(LandmarkOffsets, CanBeEndedWhileVotesAreCounted)
{
    vxlsync::Run run(1, measuring::plenty, measuring::cancelling());

    EXPECT_THROW(vxlsync::offsetsByLandmarks(std::vector<Recording>(2), run), vxlsync::Cancelled);
}

} // namespace
