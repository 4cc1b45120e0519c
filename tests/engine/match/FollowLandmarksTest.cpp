#include "match/FollowLandmarks.h"

#include <gmock/gmock.h>

#include "Searching.h"

namespace
{

using searching::recorderOf;
using searching::SearchUnderTest;
using signals::noise;
using signals::rate;
using testing::IsEmpty;
using vxlsync::LandmarkOffset;
using vxlsync::Prepared;

// Votes that leave no doubt, and votes that a pair of strangers may have.
constexpr double clear = 20.0;
constexpr double doubtful = 9.0;

TEST(FollowLandmarks, TiesCopiesByFewerLooksThanPairs)
{
    const std::vector<float> event = noise(1, 10 * rate);
    std::vector<Prepared> recordings;
    std::vector<LandmarkOffset> offsets;
    for (std::size_t i = 0; i < 8; ++i) {
        recordings.push_back(recorderOf(event, 0, 10, 2));
        for (std::size_t j = i + 1; j < 8; ++j)
            offsets.push_back({i, j, 0.0, clear});
    }
    SearchUnderTest search(std::move(recordings));

    search.landmarks = offsets;
    vxlsync::followLandmarks(1.0, search.state);

    EXPECT_EQ(search.state.gathering.names().size(), 1u);
    // At first two of each recording, which is at most 8, and at least 7 to hold all.
    EXPECT_GE(search.state.book.size(), 7u);
    EXPECT_LE(search.state.book.size(), 16u);
}

TEST(FollowLandmarks, TakesTheClearestFirst)
{
    const std::vector<float> event = noise(1, 30 * rate);
    std::vector<Prepared> recordings;
    for (const std::uint32_t seed : {2u, 3u, 4u, 5u})
        recordings.push_back(recorderOf(event, 0, 10, seed));
    SearchUnderTest search(std::move(recordings));

    search.landmarks = {{0, 1, 0.0, 30.0},
                        {0, 2, 0.0, 28.0},
                        {0, 3, 0.0, 15.0},
                        {1, 2, 0.0, 16.0},
                        {2, 3, 0.0, 26.0}};
    vxlsync::followLandmarks(1.0, search.state);

    // 0 and 2 have had two looks each when 1 and 2, and 0 and 3 come up, and then all are together.
    EXPECT_EQ(search.state.book.size(), 3u);
    EXPECT_EQ(search.state.book.count({1, 2}), 0u);
}

TEST(FollowLandmarks, LooksAtDoubtfulPlacesInPassing)
{
    const std::vector<float> event = noise(1, 20 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 15, 2));
    recordings.push_back(recorderOf(event, 5, 15, 3));
    recordings.push_back(measuring::preparedOf(noise(9, 15 * rate)));
    SearchUnderTest search(std::move(recordings));

    search.landmarks = {{0, 1, 5.01, doubtful}, {0, 2, 1.0, doubtful}};
    vxlsync::followLandmarks(1.0, search.state);

    ASSERT_EQ(search.state.linksOf({0, 1}).size(), 1u);
    EXPECT_NEAR(search.state.linksOf({0, 1})[0].line.offset, 5.0, 1e-4);
    EXPECT_THAT(search.state.linksOf({0, 2}), IsEmpty());
}

TEST(FollowLandmarks, LooksAtAllPlacesOfAPair)
{
    const std::vector<float> event = noise(1, 20 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 15, 2));
    recordings.push_back(recorderOf(event, 5, 15, 3));
    SearchUnderTest search(std::move(recordings));

    search.landmarks = {{0, 1, 1.0, clear}, {0, 1, 5.01, doubtful}};
    vxlsync::followLandmarks(1.0, search.state);

    ASSERT_EQ(search.state.linksOf({0, 1}).size(), 1u);
    EXPECT_NEAR(search.state.linksOf({0, 1})[0].line.offset, 5.0, 1e-4);
}

// Two groups that share nothing, and votes for pairs of them.
std::size_t looksInVain(double standing)
{
    const std::vector<float> one = noise(1, 10 * rate);
    const std::vector<float> other = noise(2, 10 * rate);
    std::vector<Prepared> recordings;
    for (std::uint32_t i = 0; i < 4; ++i)
        recordings.push_back(recorderOf(one, 0, 10, 10 + i));
    for (std::uint32_t i = 0; i < 4; ++i)
        recordings.push_back(recorderOf(other, 0, 10, 20 + i));
    SearchUnderTest search(std::move(recordings));
    for (std::size_t i = 0; i < 8; ++i) {
        for (std::size_t j = i + 1; j < 8; ++j)
            search.landmarks.push_back({i, j, 0.0, i / 4 == j / 4 ? 2.0 * clear : standing});
    }

    vxlsync::followLandmarks(1.0, search.state);

    EXPECT_EQ(search.state.gathering.names().size(), 2u);
    std::size_t across = 0;
    for (const auto& entry : search.state.book)
        across += entry.first.first / 4 != entry.first.second / 4 ? 1 : 0;
    return across;
}

TEST(FollowLandmarks, LeavesGroupsAloneAfterAFewLooksInVain)
{
    // Of 16 pairs; what is looked at together is not taken back.
    EXPECT_LE(looksInVain(doubtful), 6u);
    EXPECT_LE(looksInVain(clear), 12u);
}

TEST(FollowLandmarks, LeavesRecordingsOfOneDeviceAlone)
{
    const std::vector<float> event = noise(1, 10 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 0, 10, 2));
    recordings.push_back(recorderOf(event, 0, 10, 3));
    SearchUnderTest search(std::move(recordings));
    search.devices = {"camera", "camera"};

    search.landmarks = {{0, 1, 0.0, clear}};
    vxlsync::followLandmarks(1.0, search.state);

    EXPECT_THAT(search.state.book, IsEmpty());
}

} // namespace
