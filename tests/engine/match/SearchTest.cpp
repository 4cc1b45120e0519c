#include "match/Search.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"

namespace
{

using measuring::plenty;
using measuring::preparedOf;
using signals::mixed;
using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::LandmarkOffset;
using vxlsync::Links;
using vxlsync::Prepared;

// Two recorders of one event and a stranger.
std::vector<Prepared> threeRecordings()
{
    const std::vector<float> event = noise(1, 30 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(preparedOf(mixed(part(event, 0, 20 * rate), noise(2, 20 * rate), 0.5f)));
    recordings.push_back(preparedOf(noise(7, 15 * rate)));
    recordings.push_back(
        preparedOf(mixed(part(event, 12 * rate, 18 * rate), noise(3, 18 * rate), 0.5f)));
    return recordings;
}

Links searched(const std::vector<Prepared>& recordings,
               const std::vector<LandmarkOffset>& landmarks = {},
               std::vector<std::string> devices = {}, std::size_t threads = 1,
               std::size_t memory = plenty)
{
    vxlsync::Run run(threads, memory, {});
    devices.resize(recordings.size());
    return vxlsync::searchPairs(recordings, devices, landmarks, run);
}

TEST(Search, FindsWhatTwoShareAndNothingElse)
{
    const Links links = searched(threeRecordings());

    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0].first, 0u);
    EXPECT_EQ(links[0].second, 2u);
    EXPECT_NEAR(links[0].line.offset, 12.0, 1e-5);
    EXPECT_EQ(links[0].method, vxlsync::Method::correlation);
    EXPECT_GT(links[0].height, 9.0);
}

TEST(Search, SaysWhereTheLandmarksWereRight)
{
    // Right to a frame of 32 ms.
    const Links links = searched(threeRecordings(), {{0, 2, 12.02, 20.0}});

    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0].method, vxlsync::Method::landmarks);
    EXPECT_NEAR(links[0].line.offset, 12.0, 1e-5);
}

TEST(Search, DoesNotBelieveTheLandmarksBlindly)
{
    const Links links = searched(threeRecordings(), {{0, 1, 3.0, 20.0}});

    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0].second, 2u);
}

TEST(Search, PassesOverRecordingsWithoutSound)
{
    std::vector<Prepared> recordings = threeRecordings();
    recordings[1] = preparedOf(std::vector<float>(15 * rate, 0.0f));
    recordings.push_back(preparedOf({}));

    const Links links = searched(recordings);

    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0].second, 2u);
}

TEST(Search, FindsALongOverlapOfClocksThatDiffer)
{
    // Over 100 s, 160 millionths are 16 ms, and the correlation of all of it is smeared over them.
    std::vector<Prepared> recordings;
    recordings.push_back(preparedOf(signals::chirps(0.0, 100 * rate)));
    recordings.push_back(preparedOf(signals::chirps(160.0, 100 * rate)));

    const Links links = searched(recordings, {}, {}, 2);

    ASSERT_FALSE(links.empty());
    EXPECT_NEAR(links[0].line.slope * 1e6, 160.0, 0.5);
}

TEST(Search, FindsByExcerptsWhatTheWholeBlurs)
{
    // The second clock lacks a sample in 6000, 167 millionths: over 110 s that is 18 ms, over which
    // the peak of noise of all frequencies is smeared until chance is higher.
    const std::vector<float> event = noise(1, 110 * rate);
    std::vector<float> slow;
    for (std::size_t i = 0; i < event.size(); ++i) {
        if (i % 6000 != 0) slow.push_back(event[i]);
    }
    std::vector<Prepared> recordings;
    recordings.push_back(preparedOf(mixed(event, noise(2, event.size()), 0.5f)));
    recordings.push_back(preparedOf(mixed(slow, noise(3, slow.size()), 0.5f)));

    const Links links = searched(recordings);

    ASSERT_EQ(links.size(), 1u);
    EXPECT_NEAR(links[0].line.slope * 1e6, 1e6 / 6000.0, 0.5);
}

TEST(Search, FindsWhereARecorderDroppedSound)
{
    // The second recorder starts 3 s later and loses 0.4 s after 20 s of its own.
    const std::vector<float> event = noise(1, 50 * rate);
    std::vector<float> second = part(event, 3 * rate, 20 * rate);
    const std::vector<float> rest = part(event, 3 * rate + 20 * rate + 3200, 20 * rate);
    second.insert(second.end(), rest.begin(), rest.end());
    std::vector<Prepared> recordings;
    recordings.push_back(preparedOf(mixed(part(event, 0, 45 * rate), noise(2, 45 * rate), 0.3f)));
    recordings.push_back(preparedOf(mixed(second, noise(3, 40 * rate), 0.3f)));

    const Links links = searched(recordings);

    ASSERT_EQ(links.size(), 1u);
    EXPECT_NEAR(links[0].line.offset, 3.0, 1e-4);
    ASSERT_EQ(links[0].jumps.size(), 1u);
    // Sound after the loss stands 3.4 s later in the first; windows are 4 s long.
    EXPECT_NEAR(links[0].jumps[0].sizeSeconds, 0.4, 1e-4);
    EXPECT_NEAR(links[0].jumps[0].atSeconds, 23.0, 4.0);
}

void expectSame(const Links& left, const Links& right)
{
    ASSERT_EQ(left.size(), right.size());
    for (std::size_t i = 0; i < left.size(); ++i) {
        EXPECT_EQ(left[i].first, right[i].first);
        EXPECT_EQ(left[i].second, right[i].second);
        EXPECT_EQ(left[i].line.offset, right[i].line.offset);
        EXPECT_EQ(left[i].line.coherence, right[i].line.coherence);
        EXPECT_EQ(left[i].height, right[i].height);
    }
}

TEST(Search, DependsNeitherOnThreadsNorOnMemory)
{
    const Links links = searched(threeRecordings());

    expectSame(links, searched(threeRecordings(), {}, {}, 3));
    expectSame(links, searched(threeRecordings(), {}, {}, 2, 0));
}

TEST(Search, DoesNotCompareRecordingsOfOneDevice)
{
    EXPECT_TRUE(searched(threeRecordings(), {{0, 2, 12.0, 20.0}}, {"A", "", "A"}).empty());
    EXPECT_EQ(searched(threeRecordings(), {}, {"A", "", "B"}).size(), 1u);
}

TEST(Search, StopsAtWhatTheLandmarksTellWhereThreeSayTheSame)
{
    const std::vector<float> event = noise(1, 200 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(preparedOf(event));
    recordings.push_back(preparedOf(part(event, 8 * rate, 190 * rate)));
    recordings.push_back(preparedOf(part(event, 16 * rate, 180 * rate)));
    const std::vector<vxlsync::LandmarkOffset> landmarks = {{0, 1, 8.01, 20.0}, {1, 2, 8.01, 20.0}};

    const Links links = searched(recordings, landmarks);

    ASSERT_EQ(links.size(), 3u);
    for (const vxlsync::Link& link : links)
        // Nothing was correlated as a whole.
        EXPECT_EQ(link.height, 0.0);
    EXPECT_NEAR(links[0].line.offset, 8.0, 1e-5);
}

TEST(Search, AsksALonePairForItsOtherPlaces)
{
    const std::vector<float> event = noise(1, 20 * rate);
    std::vector<float> twice = event;
    twice.insert(twice.end(), event.begin(), event.end());
    std::vector<Prepared> recordings;
    recordings.push_back(preparedOf(twice));
    recordings.push_back(preparedOf(part(event, 4 * rate, 15 * rate)));

    const Links links = searched(recordings, {{0, 1, 24.0, 20.0}});

    ASSERT_EQ(links.size(), 2u);
    EXPECT_NEAR(links[0].line.offset + links[1].line.offset, 24.0 + 4.0, 1e-4);
}

TEST(Search, TellsHowFarItIs)
{
    std::vector<double> shares;
    vxlsync::Callbacks callbacks;
    callbacks.progress = [&](const vxlsync::Progress& progress) {
        EXPECT_EQ(progress.stage, vxlsync::Stage::comparing);
        shares.push_back(progress.stageShare);
    };
    vxlsync::Run run(2, plenty, callbacks);

    vxlsync::searchPairs(threeRecordings(), {"", "", ""}, {}, run);

    // Three pairs of one piece and two edges each at least.
    ASSERT_GT(shares.size(), 9u);
    EXPECT_EQ(shares.front(), 0.0);
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_EQ(shares.back(), 1.0);
}

TEST(Search, CanBeEnded)
{
    vxlsync::Run run(2, plenty, measuring::cancelling());

    EXPECT_THROW(vxlsync::searchPairs(threeRecordings(), {"", "", ""}, {}, run),
                 vxlsync::Cancelled);
}

} // namespace
