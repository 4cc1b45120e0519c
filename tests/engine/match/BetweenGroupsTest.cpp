#include "match/BetweenGroups.h"

#include <algorithm>
#include <cmath>
#include <set>

#include <gmock/gmock.h>

#include "Searching.h"

namespace
{

using searching::lineOf;
using searching::recorderOf;
using searching::SearchUnderTest;
using signals::noise;
using signals::rate;
using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::Prepared;

MATCHER_P(offsetNear, seconds, "")
{
    return std::fabs(arg.line.offset - seconds) < 1e-4;
}

TEST(BetweenGroups, FindsWhereAGroupBelongs)
{
    const std::vector<float> event = noise(1, 60 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 30, 20, 2));
    recordings.push_back(recorderOf(event, 0, 20, 3));
    recordings.push_back(recorderOf(event, 15, 20, 4));
    recordings.push_back(recorderOf(event, 40, 20, 5));
    SearchUnderTest search(std::move(recordings));
    search.state.gathering.join(0, 3, lineOf(10.0));
    search.state.gathering.join(1, 2, lineOf(15.0));

    vxlsync::searchBetweenGroups(0.0, 1.0, search.state);

    EXPECT_THAT(search.state.gathering.names(), ElementsAre(0));
    // 2 starts 15 s before 0; what they share are 5 s.
    ASSERT_EQ(search.state.linksOf({0, 2}).size(), 1u);
    EXPECT_NEAR(search.state.linksOf({0, 2})[0].line.offset, -15.0, 1e-4);
}

// Where a loop fits at two places, each pair that is looked at is looked at at both.
TEST(BetweenGroups, LooksAtEveryPairAtAllCandidates)
{
    const std::vector<float> turn = noise(1, 12 * rate);
    std::vector<float> event = turn;
    event.insert(event.end(), turn.begin(), turn.end());
    event.insert(event.end(), turn.begin(), turn.end());
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 36, 2));
    recordings.push_back(recorderOf(event, 8, 10, 3));
    SearchUnderTest search(std::move(recordings));

    vxlsync::searchBetweenGroups(0.0, 1.0, search.state);

    EXPECT_THAT(search.state.linksOf({0, 1}),
                testing::UnorderedElementsAre(offsetNear(8.0), offsetNear(20.0), offsetNear(-4.0),
                                              offsetNear(32.0)));
    EXPECT_EQ(search.state.gathering.names().size(), 2u);
}

TEST(BetweenGroups, TiesWhatTakesMoreThanOneTurn)
{
    // Each is looked at with two others at a time.
    const std::vector<float> event = noise(1, 10 * rate);
    std::vector<Prepared> recordings;
    for (std::uint32_t i = 0; i < 9; ++i)
        recordings.push_back(recorderOf(event, 0, 10, 10 + i));
    SearchUnderTest search(std::move(recordings));

    vxlsync::searchBetweenGroups(0.0, 1.0, search.state);

    EXPECT_EQ(search.state.gathering.names().size(), 1u);
}

TEST(BetweenGroups, FindsNothingBetweenStrangers)
{
    std::vector<Prepared> recordings;
    for (const std::uint32_t seed : {1u, 2u, 3u})
        recordings.push_back(measuring::preparedOf(noise(seed, 15 * rate)));
    SearchUnderTest search(std::move(recordings));

    vxlsync::searchBetweenGroups(0.0, 1.0, search.state);

    EXPECT_EQ(search.state.gathering.names().size(), 3u);
}

TEST(BetweenGroups, LeavesOneDeviceAlone)
{
    const std::vector<float> event = noise(1, 20 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 15, 2));
    recordings.push_back(recorderOf(event, 5, 15, 3));
    SearchUnderTest search(std::move(recordings));
    search.devices = {"camera", "camera"};

    vxlsync::searchBetweenGroups(0.0, 1.0, search.state);

    EXPECT_THAT(search.state.book, IsEmpty());
}

TEST(BetweenGroups, AsksNoMembersOfOneDevice)
{
    const std::vector<float> event = noise(1, 20 * rate);
    std::vector<Prepared> recordings;
    for (const std::uint32_t seed : {2u, 3u, 4u})
        recordings.push_back(recorderOf(event, 0, 15, seed));
    SearchUnderTest search(std::move(recordings));
    search.devices = {"camera", "", "camera"};
    search.state.gathering.join(0, 1, lineOf(0.0));

    vxlsync::searchBetweenGroups(0.0, 1.0, search.state);

    EXPECT_EQ(search.state.linksOf({1, 2}).size(), 1u);
    EXPECT_EQ(search.state.book.count({0, 2}), 0u);
}

TEST(BetweenGroups, AsksNobodyWhoMayNotBeComparedOrIsTooShort)
{
    // The groups are alike, by 0 and 2 of one device; what 1 hears is less than is asked for.
    const std::vector<float> event = noise(1, 30 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 20, 2));
    recordings.push_back(recorderOf(event, 5, 1, 3));
    recordings.push_back(recorderOf(event, 0, 10, 4));
    SearchUnderTest search(std::move(recordings));
    search.devices = {"camera", "", "camera"};
    search.state.gathering.join(0, 1, lineOf(5.0));
    ASSERT_FALSE(vxlsync::candidatesOfGroups({{0, 2}}, 0.0, 1.0, search.state).candidates.empty());

    vxlsync::searchBetweenGroups(0.0, 1.0, search.state);

    EXPECT_EQ(search.state.book.count({0, 2}), 0u);
    EXPECT_EQ(search.state.book.count({1, 2}), 0u);
}

// How many pairs are asked by excerpts of so many recordings, which are long enough for their
// clocks to hide what they share. Without their energy they are silence to the correlation, so that
// it proposes none. Of a low rate, which costs little.
std::size_t pairsAskedByExcerpts(std::uint32_t count)
{
    constexpr int lowRate = 1000;
    const vxlsync::Interrupt never;
    std::vector<Prepared> recordings;
    for (std::uint32_t seed = 1; seed <= count; ++seed) {
        recordings.push_back(
            vxlsync::prepare(signals::stored(noise(seed, 101 * lowRate)), lowRate, never));
        std::fill(recordings.back().energy.begin(), recordings.back().energy.end(), 0.0f);
    }
    SearchUnderTest search(std::move(recordings));

    vxlsync::searchBetweenGroups(0.0, 1.0, search.state);

    return search.state.book.size();
}

TEST(BetweenGroups, AsksByExcerptsWhereThereIsLittleToSearch)
{
    // 3 pairs of 202 s, and 55, which are more than 10000 s.
    EXPECT_EQ(pairsAskedByExcerpts(3), 3u);
    EXPECT_EQ(pairsAskedByExcerpts(11), 0u);
}

} // namespace
