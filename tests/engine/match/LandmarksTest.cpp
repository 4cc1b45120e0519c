#include "match/Landmarks.h"

#include <gmock/gmock.h>

#include "Events.h"
#include "Measuring.h"
#include "Signals.h"

namespace
{

using events::recordingOf;
using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::Recording;

TEST(Landmarks, TellWholeFramesBetweenTwoRecordings)
{
    std::vector<Recording> recordings(3);
    recordings[0] = recordingOf(events::eventFrom(75));
    recordings[2] = recordingOf(events::eventFrom(0));
    vxlsync::Run run(2, measuring::plenty, {});

    const auto groups = vxlsync::groupByLandmarks(recordings, run);

    ASSERT_EQ(groups.size(), 1u);
    EXPECT_THAT(groups[0].members, ElementsAre(0, 2));
    // 75 frames of 0.032 s.
    EXPECT_THAT(groups[0].starts, ElementsAre(testing::DoubleEq(static_cast<double>(2.4f)), 0.0));
}

TEST(Landmarks, GiveGroupsInTheOrderOfTheirFirstMembers)
{
    std::vector<Recording> recordings;
    std::vector<std::vector<float>> events;
    for (const std::size_t start : {std::size_t{0}, std::size_t{10000}, std::size_t{20000}})
        events.push_back(events::eventFrom(start));
    for (const std::size_t event : {0u, 1u, 2u, 2u, 1u, 0u})
        recordings.push_back(recordingOf(events[event]));
    vxlsync::Run run(1, measuring::plenty, {});

    const auto groups = vxlsync::groupByLandmarks(recordings, run);

    ASSERT_EQ(groups.size(), 3u);
    EXPECT_THAT(groups[0].members, ElementsAre(0, 5));
    EXPECT_THAT(groups[1].members, ElementsAre(1, 4));
    EXPECT_THAT(groups[2].members, ElementsAre(2, 3));
}

TEST(Landmarks, LeaveStrangersOut)
{
    std::vector<Recording> recordings(3);
    recordings[0] = recordingOf(signals::noise(1, 80000));
    recordings[2] = recordingOf(signals::noise(2, 80000));
    vxlsync::Run run(2, measuring::plenty, {});

    EXPECT_THAT(vxlsync::groupByLandmarks(recordings, run), IsEmpty());
}

TEST(Landmarks, OfNoRecordingsGroupNothing)
{
    vxlsync::Run run(1, measuring::plenty, {});

    EXPECT_THAT(vxlsync::groupByLandmarks({}, run), IsEmpty());
}

TEST(Landmarks, MakeAStepForEachRecordingAndOneForTheGrouping)
{
    std::vector<double> shares;
    vxlsync::Callbacks callbacks;
    callbacks.progress = [&](const vxlsync::Progress& progress) {
        EXPECT_EQ(progress.stage, vxlsync::Stage::landmarks);
        shares.push_back(progress.stageShare);
    };
    vxlsync::Run run(1, measuring::plenty, callbacks);

    vxlsync::groupByLandmarks(std::vector<Recording>(3), run);

    EXPECT_THAT(shares, ElementsAre(0.0, 0.25, 0.5, 0.75, 1.0));
}

TEST(Landmarks, CanBeEndedWhileTheyAreGrouped)
{
    // Without samples nothing asks before the grouping does.
    vxlsync::Run run(1, measuring::plenty, measuring::cancelling());

    EXPECT_THROW(vxlsync::groupByLandmarks(std::vector<Recording>(2), run), vxlsync::Cancelled);
}

} // namespace
