#include "match/Candidates.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "Signals.h"

namespace
{

using signals::mixed;
using signals::noise;
using signals::part;
using signals::rate;
using signals::stored;
using vxlsync::Candidate;

std::vector<Candidate> candidatesOf(const std::vector<float>& first,
                                    const std::vector<float>& second)
{
    const vxlsync::Interrupt never;
    vxlsync::CorrelationSpace space(vxlsync::fastLength(first.size() + second.size()), never);
    return vxlsync::findCandidates(vxlsync::phasesOf(stored(first), 0, first.size(), rate, space),
                                   first.size(),
                                   vxlsync::phasesOf(stored(second), 0, second.size(), rate, space),
                                   second.size(), rate, space);
}

TEST(Candidates, PutTheSharedSoundFirst)
{
    const std::vector<float> event = noise(1, 20 * rate);

    // The second starts 5 s and 3 samples later.
    const auto found =
        candidatesOf(part(event, 0, 10 * rate), part(event, 5 * rate + 3, 10 * rate));

    ASSERT_FALSE(found.empty());
    EXPECT_EQ(found.front().lag, 5 * rate + 3);
    EXPECT_GT(found.front().height, 20.0);
}

TEST(Candidates, SeeASecondThatStartsEarlier)
{
    const std::vector<float> event = noise(1, 20 * rate);

    const auto found = candidatesOf(part(event, 4 * rate, 10 * rate), part(event, 0, 10 * rate));

    ASSERT_FALSE(found.empty());
    EXPECT_EQ(found.front().lag, -4 * rate);
}

TEST(Candidates, AreNegativeWhereOneIsUpsideDown)
{
    const std::vector<float> event = noise(1, 10 * rate);
    std::vector<float> turned = event;
    for (float& sample : turned)
        sample = -sample;

    const auto found = candidatesOf(event, turned);

    ASSERT_FALSE(found.empty());
    EXPECT_EQ(found.front().lag, 0);
    EXPECT_LT(found.front().height, -20.0);
}

TEST(Candidates, OfUnrelatedSoundAreNoHigherThanChance)
{
    const auto found = candidatesOf(noise(1, 10 * rate), noise(2, 10 * rate));

    for (const Candidate& candidate : found)
        EXPECT_LT(std::abs(candidate.height), 7.0);
}

TEST(Candidates, LeaveOutLagsThatShareLessThanTwoSeconds)
{
    const std::vector<float> event = noise(1, 20 * rate);

    const auto found =
        candidatesOf(part(event, 0, 10 * rate), part(event, 8 * rate + 1000, 10 * rate));

    for (const Candidate& candidate : found)
        EXPECT_LE(std::abs(candidate.lag), 8 * rate);
}

TEST(Candidates, AreNoneForTooShortARecording)
{
    const std::vector<float> event = noise(1, 10 * rate);

    EXPECT_TRUE(candidatesOf(event, part(event, 0, 2 * rate - 1)).empty());
    EXPECT_TRUE(candidatesOf(part(event, 0, 2 * rate - 1), event).empty());
}

TEST(Candidates, AreNoneForSilence)
{
    const std::vector<float> sound = noise(1, 10 * rate);
    std::vector<float> click(10 * rate, 0.0f);
    click[0] = 1.0f;
    const vxlsync::Interrupt never;
    vxlsync::CorrelationSpace space(vxlsync::fastLength(20 * rate), never);
    const vxlsync::Phases phases = vxlsync::phasesOf(stored(sound), 0, sound.size(), rate, space);
    // Silent all along, and silent in the part that is looked at.
    const vxlsync::Phases none;
    const vxlsync::Phases zero =
        vxlsync::phasesOf(stored(click), 100, click.size() - 100, rate, space);

    for (const vxlsync::Phases& silent : {none, zero}) {
        EXPECT_TRUE(vxlsync::findCandidates(phases, 80000, silent, 79900, rate, space).empty());
        EXPECT_TRUE(vxlsync::findCandidates(silent, 79900, phases, 80000, rate, space).empty());
    }
}

TEST(Candidates, HaveTheTurnsOfALoopUpToAnAmount)
{
    // A second over and over, in which each turn is as good as the next, below each recorder's
    // noise.
    const std::vector<float> turn = noise(1, rate);
    std::vector<float> loop;
    for (int i = 0; i < 40; ++i)
        loop.insert(loop.end(), turn.begin(), turn.end());

    const auto found = candidatesOf(mixed(loop, noise(2, loop.size()), 2.5f),
                                    mixed(loop, noise(3, loop.size()), 2.5f));

    EXPECT_EQ(found.size(), 24u);
    std::vector<std::int64_t> lags;
    for (const Candidate& candidate : found) {
        EXPECT_EQ(candidate.lag % rate, 0);
        lags.push_back(candidate.lag);
    }
    std::sort(lags.begin(), lags.end());
    EXPECT_EQ(std::unique(lags.begin(), lags.end()), lags.end());
}

} // namespace
