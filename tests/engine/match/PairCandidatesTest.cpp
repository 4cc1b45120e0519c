#include "match/PairCandidates.h"

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"

namespace
{

using measuring::preparedOf;
using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::Candidate;
using vxlsync::PiecePair;
using vxlsync::Prepared;
using vxlsync::RecordingPair;

using Lists = std::vector<std::vector<Candidate>>;

const std::vector<RecordingPair> allOfFour{{0, 1}, {0, 2}, {0, 3}, {1, 2}, {1, 3}, {2, 3}};

// Four recorders of one event, of like length, each two seconds after the one before.
std::vector<Prepared> fourRecordings()
{
    const std::vector<float> event = noise(1, 24 * rate);
    std::vector<Prepared> recordings;
    for (std::size_t i = 0; i < 4; ++i)
        recordings.push_back(preparedOf(part(event, 2 * i * rate, (14 + i) * rate)));
    return recordings;
}

std::vector<PiecePair> allPiecePairsOf(const std::vector<Prepared>& recordings,
                                       const std::vector<vxlsync::RecordingPair>& pairs)
{
    std::vector<PiecePair> piecePairs = vxlsync::wholesOf(recordings, pairs);
    const std::vector<PiecePair> edges = vxlsync::edgesOf(recordings, pairs);
    piecePairs.insert(piecePairs.end(), edges.begin(), edges.end());
    return piecePairs;
}

Lists candidatesWith(std::size_t threads, std::size_t memory)
{
    const std::vector<Prepared> recordings = fourRecordings();
    vxlsync::Run run(threads, memory, {});
    return vxlsync::candidatesOfPairs(recordings, allPiecePairsOf(recordings, allOfFour),
                                      allOfFour.size(), run);
}

void expectSame(const Lists& left, const Lists& right)
{
    ASSERT_EQ(left.size(), right.size());
    for (std::size_t i = 0; i < left.size(); ++i) {
        ASSERT_EQ(left[i].size(), right[i].size()) << i;
        for (std::size_t k = 0; k < left[i].size(); ++k) {
            EXPECT_EQ(left[i][k].lag, right[i][k].lag) << i;
            EXPECT_EQ(left[i][k].height, right[i][k].height) << i;
        }
    }
}

TEST(PairCandidates, HaveTheTruePlacesOfAllPairs)
{
    const Lists candidates = candidatesWith(1, measuring::plenty);

    ASSERT_EQ(candidates.size(), 6u);
    for (std::size_t i = 0; i < allOfFour.size(); ++i) {
        const auto apart =
            static_cast<std::int64_t>(2 * (allOfFour[i].second - allOfFour[i].first));
        EXPECT_TRUE(std::any_of(candidates[i].begin(), candidates[i].end(),
                                [apart](const Candidate& candidate) {
                                    return candidate.lag == apart * rate && candidate.height > 20.0;
                                }))
            << i;
    }
}

TEST(PairCandidates, DoNotDependOnThreadsOrMemory)
{
    const Lists candidates = candidatesWith(1, measuring::plenty);

    expectSame(candidates, candidatesWith(3, measuring::plenty));
    // No memory at all makes one worker and one piece at a time; a megabyte more of them.
    expectSame(candidates, candidatesWith(2, 0));
    expectSame(candidates, candidatesWith(2, std::size_t{3} << 20u));
}

TEST(PairCandidates, CountFromTheStartOfTheWhole)
{
    // The last 13 s of the first are the first 13 s of the second: edges of 12 s.
    const std::vector<float> event = noise(1, 50 * rate);
    const std::vector<Prepared> recordings = [&] {
        std::vector<Prepared> two;
        two.push_back(preparedOf(part(event, 0, 30 * rate)));
        two.push_back(preparedOf(part(event, 17 * rate, 30 * rate)));
        return two;
    }();
    const std::vector<PiecePair> piecePairs = allPiecePairsOf(recordings, {{0, 1}});
    vxlsync::Run run(1, measuring::plenty, {});

    ASSERT_EQ(piecePairs.size(), 3u);
    const Lists candidates = vxlsync::candidatesOfPairs(recordings, {piecePairs.back()}, 1, run);

    ASSERT_FALSE(candidates[0].empty());
    EXPECT_EQ(candidates[0].front().lag, 17 * rate);
}

TEST(PairCandidates, OfSilentEdgesAreNone)
{
    std::vector<float> samples(60 * rate, 0.0f);
    const std::vector<float> sound = noise(1, 20 * rate);
    std::copy(sound.begin(), sound.end(), samples.begin() + 20 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(preparedOf(samples));
    recordings.push_back(preparedOf(samples));
    std::vector<PiecePair> piecePairs = allPiecePairsOf(recordings, {{0, 1}});
    ASSERT_EQ(piecePairs.size(), 3u);
    piecePairs.erase(piecePairs.begin());
    vxlsync::Run run(1, measuring::plenty, {});

    EXPECT_TRUE(vxlsync::candidatesOfPairs(recordings, piecePairs, 1, run)[0].empty());
}

TEST(PairCandidates, CanBeEnded)
{
    const std::vector<Prepared> recordings = fourRecordings();
    const std::vector<PiecePair> piecePairs = allPiecePairsOf(recordings, allOfFour);
    vxlsync::Run run(2, measuring::plenty, measuring::cancelling());

    EXPECT_THROW(vxlsync::candidatesOfPairs(recordings, piecePairs, 6, run), vxlsync::Cancelled);
}

} // namespace
