#include "match/GroupCandidates.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <gmock/gmock.h>

#include "Searching.h"

namespace
{

using searching::lineOf;
using searching::recorderOf;
using searching::SearchUnderTest;
using signals::noise;
using signals::rate;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using vxlsync::GroupCandidate;
using vxlsync::GroupCandidates;
using vxlsync::GroupPair;
using vxlsync::Prepared;

// A sample of the full rate, and of a coarse look.
constexpr double sample = 1.0 / rate;
constexpr double coarseSample = 4.0 * sample;

GroupCandidates candidatesOf(const std::vector<GroupPair>& pairs, SearchUnderTest& search)
{
    return vxlsync::candidatesOfGroups(pairs, 0.0, 1.0, search.state);
}

// A candidate at which what is in common stands far out.
MATCHER_P2(isAt, shift, error, "")
{
    return std::fabs(arg.shift - shift) <= error + 1e-9 && arg.height > 20.0;
}

// So many seconds of silence, with a sound from a sample on.
Prepared silenceWith(const std::vector<float>& sound, std::size_t start, std::size_t seconds)
{
    vxlsync::SampleStore<float> samples;
    samples.appendSilence(start);
    samples.append(sound.data(), sound.size());
    samples.appendSilence(seconds * rate - start - sound.size());
    const vxlsync::Interrupt never;
    return vxlsync::prepare(samples, rate, never);
}

Prepared silence(std::size_t samples)
{
    Prepared recording;
    recording.rate = rate;
    recording.samples.appendSilence(samples);
    return recording;
}

TEST(GroupCandidates, TellHowTheClocksOfTwoGroupsLie)
{
    const std::vector<float> event = noise(1, 40 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(recorderOf(event, 10, 15, 2));
    recordings.push_back(recorderOf(event, 0, 20, 3));
    recordings.push_back(recorderOf(event, 22, 15, 4));
    SearchUnderTest search(std::move(recordings));
    // The clock of the group reads 0 where 0 starts, 10 s into the event.
    search.state.gathering.join(0, 1, lineOf(-10.0));

    const GroupCandidates found = candidatesOf({{0, 2}}, search);

    EXPECT_TRUE(found.isThorough);
    EXPECT_THAT(found.candidates, Contains(isAt(12.0, 0.0)));
}

TEST(GroupCandidates, AreByPairInTheOrderAskedFor)
{
    const std::vector<float> event = noise(1, 20 * rate);
    std::vector<Prepared> recordings;
    const std::vector<std::size_t> starts{0, 1, 3, 4, 8};
    for (std::uint32_t i = 0; i < 5; ++i)
        recordings.push_back(recorderOf(event, starts[i], 10, 2 + i));
    SearchUnderTest search(std::move(recordings));
    // Of the first and the fourth is nothing asked.
    const std::vector<GroupPair> pairs{{1, 4}, {2, 4}, {1, 2}};

    const GroupCandidates found = candidatesOf(pairs, search);

    auto next = found.candidates.begin();
    for (const GroupPair& pair : pairs) {
        const auto end = std::find_if_not(
            next, found.candidates.end(),
            [&pair](const GroupCandidate& candidate) { return isSame(candidate.pair, pair); });
        const auto apart = static_cast<double>(starts[pair.second] - starts[pair.first]);
        EXPECT_THAT(std::vector<GroupCandidate>(next, end), Contains(isAt(apart, 0.0)));
        next = end;
    }
    EXPECT_EQ(next, found.candidates.end());
}

// In the middle of the two it is far from what their edges hold.
TEST(GroupCandidates, AreOfASoundInTheMiddleAndUpsideDown)
{
    std::vector<float> sound = noise(1, 10 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(silenceWith(sound, 25 * rate + 1, 60));
    for (float& value : sound)
        value = -value;
    recordings.push_back(silenceWith(sound, 20 * rate, 60));
    SearchUnderTest search(std::move(recordings));

    EXPECT_THAT(candidatesOf({{0, 1}}, search).candidates, Contains(isAt(5.0 + sample, 0.0)));
}

// Their last and first 3 s, which among ten minutes of other sound do not stand out.
TEST(GroupCandidates, AreOfAShortOverlapAtTheEdges)
{
    const std::vector<float> event = noise(1, 3 * rate);
    std::vector<float> first = noise(2, 297 * rate);
    std::vector<float> second = event;
    first.insert(first.end(), event.begin(), event.end());
    const std::vector<float> rest = noise(3, 297 * rate);
    second.insert(second.end(), rest.begin(), rest.end());
    const auto noisy = [](const std::vector<float>& samples, std::uint32_t seed) {
        return measuring::preparedOf(signals::mixed(samples, noise(seed, samples.size()), 0.5f));
    };
    std::vector<Prepared> recordings;
    recordings.push_back(noisy(first, 4));
    recordings.push_back(noisy(second, 5));
    SearchUnderTest search(std::move(recordings));

    EXPECT_THAT(candidatesOf({{0, 1}}, search).candidates, Contains(isAt(297.0, 0.0)));
}

TEST(GroupCandidates, OfSilenceAreNone)
{
    std::vector<Prepared> recordings;
    recordings.push_back(silence(30 * rate));
    recordings.push_back(measuring::preparedOf(noise(1, 30 * rate)));
    SearchUnderTest search(std::move(recordings));

    EXPECT_THAT(candidatesOf({{0, 1}}, search).candidates, IsEmpty());
}

// Fifteen recordings of silence, and all their 105 pairs.
struct Much {
    explicit Much(std::size_t seconds)
    {
        for (std::size_t i = 0; i < 15; ++i) {
            recordings.push_back(silence(seconds * rate));
            for (std::size_t k = 0; k < i; ++k)
                pairs.push_back({k, i});
        }
    }

    std::vector<Prepared> recordings;
    std::vector<GroupPair> pairs;
};

TEST(GroupCandidates, AreThoroughUpToSomeHours)
{
    const auto isThorough = [](std::size_t seconds) {
        Much much(seconds);
        SearchUnderTest search(std::move(much.recordings));
        return candidatesOf(much.pairs, search).isThorough;
    };

    // 105 times 94 s and 105 times 96 s.
    EXPECT_TRUE(isThorough(47));
    EXPECT_FALSE(isThorough(48));
}

// Of two recordings with a sound in common, beside others that are more than can be thorough.
std::vector<GroupCandidate> candidatesAmongMuch(std::size_t firstSeconds, std::size_t secondSeconds)
{
    Much much(48);
    const std::vector<float> sound = noise(1, 10 * rate);
    much.recordings.push_back(silenceWith(sound, 45 * rate + 1, firstSeconds));
    much.recordings.push_back(silenceWith(sound, 40 * rate + 2, secondSeconds));
    much.pairs.push_back({15, 16});
    SearchUnderTest search(std::move(much.recordings));
    const GroupCandidates found = candidatesOf(much.pairs, search);
    EXPECT_FALSE(found.isThorough);
    return found.candidates;
}

// The shift is no whole number of samples of the coarse rate.
TEST(GroupCandidates, AmongMuchAreCoarse)
{
    const std::vector<GroupCandidate> candidates = candidatesAmongMuch(101, 100);

    EXPECT_THAT(candidates, Contains(isAt(5.0, coarseSample)));
    for (const GroupCandidate& candidate : candidates) {
        const double steps = candidate.shift / coarseSample;
        EXPECT_NEAR(steps, std::round(steps), 1e-6);
    }
}

TEST(GroupCandidates, AmongMuchAreExactWhereTheTwoAreShort)
{
    EXPECT_THAT(candidatesAmongMuch(99, 100), Contains(isAt(5.0 - sample, 0.0)));
}

TEST(GroupCandidates, DoNotDependOnThreads)
{
    const auto candidatesWith = [](std::size_t threads) {
        const std::vector<float> event = noise(1, 20 * rate);
        std::vector<Prepared> recordings;
        for (std::uint32_t i = 0; i < 4; ++i)
            recordings.push_back(recorderOf(event, i, 10, 2 + i));
        SearchUnderTest search(std::move(recordings), threads);
        std::vector<std::pair<double, double>> values;
        for (const GroupCandidate& candidate :
             candidatesOf({{0, 1}, {0, 2}, {0, 3}, {1, 2}, {2, 3}}, search).candidates)
            values.emplace_back(candidate.shift, candidate.height);
        return values;
    };

    const auto byOne = candidatesWith(1);

    EXPECT_THAT(byOne, Not(IsEmpty()));
    EXPECT_EQ(candidatesWith(3), byOne);
}

TEST(GroupCandidates, MakeTheirStepsBetweenTheTwoShares)
{
    std::vector<double> shares;
    vxlsync::Callbacks callbacks;
    callbacks.progress = [&](const vxlsync::Progress& progress) {
        shares.push_back(progress.stageShare);
    };
    std::vector<Prepared> recordings;
    for (const std::uint32_t seed : {1u, 2u})
        recordings.push_back(measuring::preparedOf(noise(seed, 5 * rate)));
    SearchUnderTest search(std::move(recordings), 1, callbacks);

    vxlsync::candidatesOfGroups({{0, 1}}, 0.25, 0.625, search.state);

    // Two pairs of edges and one of wholes.
    EXPECT_THAT(shares, ElementsAre(0.25, 0.375, 0.5, 0.625));
}

TEST(GroupCandidates, CanBeCancelled)
{
    std::vector<Prepared> recordings;
    for (const std::uint32_t seed : {1u, 2u})
        recordings.push_back(measuring::preparedOf(noise(seed, 5 * rate)));
    SearchUnderTest search(std::move(recordings), 2, measuring::cancelling());

    EXPECT_THROW(candidatesOf({{0, 1}}, search), vxlsync::Cancelled);
}

} // namespace
