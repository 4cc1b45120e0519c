#include "match/CompleteGroups.h"

#include <gmock/gmock.h>

#include "Searching.h"

namespace
{

using searching::lineOf;
using searching::recorderOf;
using searching::SearchUnderTest;
using signals::noise;
using signals::rate;
using testing::IsEmpty;
using vxlsync::Prepared;

TEST(CompleteGroups, MeasuresWhatTheGroupImplies)
{
    const std::vector<float> event = noise(1, 30 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 20, 2));
    recordings.push_back(recorderOf(event, 5, 20, 3));
    recordings.push_back(recorderOf(event, 10, 20, 4));
    SearchUnderTest search(std::move(recordings));
    search.state.gathering.join(0, 1, lineOf(5.005));
    search.state.gathering.join(1, 2, lineOf(5.005));

    vxlsync::completeGroups(0.0, 1.0, search.state);

    ASSERT_EQ(search.state.linksOf({0, 2}).size(), 1u);
    EXPECT_NEAR(search.state.linksOf({0, 2})[0].line.offset, 10.0, 1e-4);
    EXPECT_EQ(search.state.book.size(), 3u);
}

// The landmarks' place is the right one, and the group's is not.
TEST(CompleteGroups, LooksWhereTheLandmarksPointElsewhere)
{
    const std::vector<float> event = noise(1, 30 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 20, 2));
    recordings.push_back(recorderOf(event, 5, 20, 3));
    SearchUnderTest search(std::move(recordings));
    search.landmarks = {{0, 1, 5.01, 20.0}};
    search.state.gathering.join(0, 1, lineOf(9.0));

    vxlsync::completeGroups(0.0, 1.0, search.state);

    ASSERT_EQ(search.state.linksOf({0, 1}).size(), 1u);
    EXPECT_NEAR(search.state.linksOf({0, 1})[0].line.offset, 5.0, 1e-4);
}

TEST(CompleteGroups, AsksNothingOfMembersThatShareTooLittle)
{
    const std::vector<float> event = noise(1, 30 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 10, 2));
    recordings.push_back(recorderOf(event, 9, 10, 3));
    SearchUnderTest search(std::move(recordings));
    search.state.gathering.join(0, 1, lineOf(9.0));

    vxlsync::completeGroups(0.0, 1.0, search.state);

    EXPECT_THAT(search.state.book, IsEmpty());
}

TEST(CompleteGroups, AsksNothingTwiceAndNothingOfOneDevice)
{
    const std::vector<float> event = noise(1, 10 * rate);
    std::vector<Prepared> recordings;
    for (const std::uint32_t seed : {2u, 3u, 4u})
        recordings.push_back(recorderOf(event, 0, 10, seed));
    SearchUnderTest search(std::move(recordings));
    search.devices = {"", "camera", "camera"};
    search.state.gathering.join(0, 1, lineOf(0.0));
    search.state.gathering.join(0, 2, lineOf(0.0));
    vxlsync::Link known;
    known.second = 1;
    known.line.offset = 0.001;
    search.state.book[{0, 1}] = {known};

    vxlsync::completeGroups(0.0, 1.0, search.state);

    EXPECT_EQ(search.state.linksOf({0, 1})[0].line.offset, 0.001);
    EXPECT_EQ(search.state.linksOf({0, 2}).size(), 1u);
    EXPECT_EQ(search.state.book.count({1, 2}), 0u);
}

// So many copies of one sound, in one group.
std::size_t pairsMeasuredOf(std::size_t copies)
{
    const std::vector<float> event = noise(1, 3 * rate);
    std::vector<Prepared> recordings;
    for (std::size_t i = 0; i < copies; ++i)
        recordings.push_back(recorderOf(event, 0, 3, static_cast<std::uint32_t>(i) + 2));
    SearchUnderTest search(std::move(recordings));
    for (std::size_t i = 1; i < copies; ++i)
        search.state.gathering.join(0, i, lineOf(0.0));

    vxlsync::completeGroups(0.0, 1.0, search.state);

    return search.state.book.size();
}

TEST(CompleteGroups, MeasuresAllOfASmallGroup)
{
    EXPECT_EQ(pairsMeasuredOf(12), 66u);
}

TEST(CompleteGroups, MeasuresEachOfALargeGroupAgainstAFewOthers)
{
    // Four of each, in groups of five.
    EXPECT_EQ(pairsMeasuredOf(100), 200u);
    // Those of the last group lack partners, and get two each with the first.
    EXPECT_EQ(pairsMeasuredOf(102), 203u);
}

} // namespace
