#include "match/DisputeGroups.h"

#include <gtest/gtest.h>

#include "Searching.h"

namespace
{

using searching::lineOf;
using searching::recorderOf;
using searching::SearchUnderTest;
using signals::noise;
using signals::rate;
using vxlsync::Prepared;

// Votes that leave no doubt, and votes that a pair of strangers may have.
constexpr double clear = 20.0;
constexpr double doubtful = 9.0;

std::vector<Prepared> twoRecordings()
{
    const std::vector<float> event = noise(1, 30 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 20, 2));
    recordings.push_back(recorderOf(event, 5, 20, 3));
    return recordings;
}

// The second starts 5 s after the first, and the group has it so many seconds after it.
struct GroupOfTwo : SearchUnderTest {
    explicit GroupOfTwo(double offset) : SearchUnderTest(twoRecordings())
    {
        state.gathering.join(0, 1, lineOf(offset));
    }
};

// Looks at what one clear offset of the landmarks disputes.
std::size_t linksAfter(SearchUnderTest& search, double offset, double standing)
{
    search.landmarks = {{0, 1, offset, standing}};
    vxlsync::lookAtDisputes(0.0, 1.0, search.state);
    return search.state.linksOf({0, 1}).size();
}

TEST(DisputeGroups, LooksWhereTheLandmarksPointElsewhere)
{
    GroupOfTwo search(24.0);

    ASSERT_EQ(linksAfter(search, 5.01, clear), 1u);
    EXPECT_NEAR(search.state.linksOf({0, 1})[0].line.offset, 5.0, 1e-4);
}

TEST(DisputeGroups, LeavesAloneWhatTheGroupSaysToo)
{
    GroupOfTwo near(5.19);
    EXPECT_EQ(linksAfter(near, 5.0, clear), 0u);
    GroupOfTwo other(5.22);
    EXPECT_EQ(linksAfter(other, 5.0, clear), 1u);
}

TEST(DisputeGroups, LeavesAloneWhatChanceMaySay)
{
    GroupOfTwo search(24.0);
    EXPECT_EQ(linksAfter(search, 5.01, doubtful), 0u);
}

TEST(DisputeGroups, LeavesAloneWhatIsKnownOrOfOneDevice)
{
    GroupOfTwo known(24.0);
    known.state.book[{0, 1}] = {};
    EXPECT_EQ(linksAfter(known, 5.01, clear), 0u);
    GroupOfTwo device(24.0);
    device.devices = {"camera", "camera"};
    EXPECT_EQ(linksAfter(device, 5.01, clear), 0u);
}

TEST(DisputeGroups, LeavesOtherGroupsAlone)
{
    const std::vector<float> event = noise(1, 10 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 10, 2));
    recordings.push_back(recorderOf(event, 0, 10, 3));
    SearchUnderTest search(std::move(recordings));

    EXPECT_EQ(linksAfter(search, 0.0, clear), 0u);
}

TEST(DisputeGroups, LooksAtAFewPairsOfEachRecordingInALargeJob)
{
    const std::vector<float> event = noise(1, 3 * rate);
    constexpr std::size_t count = 130;
    std::vector<Prepared> recordings;
    for (std::size_t i = 0; i < count; ++i)
        recordings.push_back(recorderOf(event, 0, 3, static_cast<std::uint32_t>(i) + 2));
    SearchUnderTest search(std::move(recordings));
    for (std::size_t i = 1; i < count; ++i) {
        search.state.gathering.join(0, i, lineOf(0.0));
        // A pair counts once, however many places it has.
        search.landmarks.push_back({0, i, 0.5, clear});
        search.landmarks.push_back({0, i, 0.75, clear});
    }

    vxlsync::lookAtDisputes(0.0, 1.0, search.state);

    EXPECT_EQ(search.state.book.size(), 8u);
}

} // namespace
