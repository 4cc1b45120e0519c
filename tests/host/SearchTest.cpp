#include "Search.h"

#include <gmock/gmock.h>

#include "Signals.h"

namespace
{

using signals::mixed;
using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::PairFinding;
using vxlsync::Prepared;

const std::function<void(double)> ignore = [](double) {};

// Two recorders of one event and a stranger.
std::vector<Prepared> threeRecordings()
{
    const std::vector<float> event = noise(1, 30 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(
        vxlsync::prepare(mixed(part(event, 0, 20 * rate), noise(2, 20 * rate), 0.5F), rate));
    recordings.push_back(vxlsync::prepare(noise(7, 15 * rate), rate));
    recordings.push_back(vxlsync::prepare(
        mixed(part(event, 12 * rate, 18 * rate), noise(3, 18 * rate), 0.5F), rate));
    return recordings;
}

TEST(Search, FindsWhatTwoShareAndNothingElse)
{
    const auto findings = vxlsync::searchPairs(threeRecordings(), {}, 1, ignore);

    ASSERT_EQ(findings.size(), 3u);
    EXPECT_TRUE(findings[0].hypotheses.empty());
    ASSERT_EQ(findings[1].hypotheses.size(), 1u);
    EXPECT_EQ(findings[1].first, 0u);
    EXPECT_EQ(findings[1].second, 2u);
    EXPECT_NEAR(findings[1].hypotheses[0].line.offset, 12.0, 1e-5);
    EXPECT_EQ(findings[1].hypotheses[0].method, vxlsync::Method::correlation);
    EXPECT_TRUE(findings[2].hypotheses.empty());
}

TEST(Search, FindsTheSameWithAnyNumberOfWorkers)
{
    const auto one = vxlsync::searchPairs(threeRecordings(), {}, 1, ignore);
    const auto many = vxlsync::searchPairs(threeRecordings(), {}, 3, ignore);

    ASSERT_EQ(one.size(), many.size());
    for (std::size_t i = 0; i < one.size(); ++i) {
        ASSERT_EQ(one[i].hypotheses.size(), many[i].hypotheses.size());
        for (std::size_t k = 0; k < one[i].hypotheses.size(); ++k) {
            EXPECT_EQ(one[i].hypotheses[k].line.offset, many[i].hypotheses[k].line.offset);
            EXPECT_EQ(one[i].hypotheses[k].line.coherence, many[i].hypotheses[k].line.coherence);
        }
    }
}

TEST(Search, SaysWhereTheLandmarksWereRight)
{
    // Right to a frame of 32 ms.
    const auto findings = vxlsync::searchPairs(threeRecordings(), {{0, 2, 12.02}}, 1, ignore);

    ASSERT_EQ(findings[1].hypotheses.size(), 1u);
    EXPECT_EQ(findings[1].hypotheses[0].method, vxlsync::Method::landmarks);
    EXPECT_NEAR(findings[1].hypotheses[0].line.offset, 12.0, 1e-5);
}

TEST(Search, DoesNotBelieveTheLandmarksBlindly)
{
    const auto findings = vxlsync::searchPairs(threeRecordings(), {{0, 1, 3.0}}, 1, ignore);

    EXPECT_TRUE(findings[0].hypotheses.empty());
}

TEST(Search, PassesOverRecordingsWithoutSamples)
{
    std::vector<Prepared> recordings = threeRecordings();
    recordings[1] = vxlsync::prepare({}, rate);

    const auto findings = vxlsync::searchPairs(recordings, {}, 2, ignore);

    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].second, 2u);
}

TEST(Search, FindsALongOverlapOfClocksThatDiffer)
{
    // Over 200 s, 100 millionths are 20 ms, and the correlation of all of it is smeared over them.
    std::vector<Prepared> recordings;
    recordings.push_back(vxlsync::prepare(signals::chirps(0.0, 200 * rate), rate));
    recordings.push_back(vxlsync::prepare(signals::chirps(100.0, 200 * rate), rate));

    const auto findings = vxlsync::searchPairs(recordings, {}, 2, ignore);

    ASSERT_FALSE(findings[0].hypotheses.empty());
    EXPECT_NEAR(findings[0].hypotheses[0].line.slope * 1e6, 100.0, 0.5);
}

} // namespace
