#include "match/Excerpts.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"

namespace
{

using measuring::preparedOf;
using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::PairInHand;
using vxlsync::Prepared;
using vxlsync::Proposal;

const vxlsync::Interrupt never;

// How many of the proposals are so near to the offset.
std::size_t countAt(const std::vector<Proposal>& proposals, double offset)
{
    return static_cast<std::size_t>(
        std::count_if(proposals.begin(), proposals.end(), [offset](const Proposal& proposal) {
            return std::abs(proposal.request.offset - offset) < 1e-9;
        }));
}

Prepared silenceFor(std::size_t seconds)
{
    Prepared prepared;
    prepared.rate = rate;
    prepared.samples.appendSilence(seconds * rate);
    return prepared;
}

TEST(Excerpts, AreForPairsOfAHundredSeconds)
{
    const Prepared longer = silenceFor(100);
    const Prepared shorter = silenceFor(99);

    EXPECT_TRUE(vxlsync::mayBlur({{0, 1}, longer, longer}));
    EXPECT_FALSE(vxlsync::mayBlur({{0, 1}, longer, shorter}));
    EXPECT_FALSE(vxlsync::mayBlur({{0, 1}, shorter, longer}));
}

TEST(Excerpts, ProposeWhereTheShorterFitsIntoTheLonger)
{
    const std::vector<float> event = noise(1, 140 * rate);
    const Prepared longer = preparedOf(event);
    const Prepared shorter = preparedOf(part(event, 20 * rate, 100 * rate));

    const auto proposals = vxlsync::proposeExcerpts({{0, 1}, longer, shorter}, never);
    const auto turned = vxlsync::proposeExcerpts({{0, 1}, shorter, longer}, never);

    // 100 s have 0.67 times 150 s, rounded, and one more: two excerpts.
    EXPECT_EQ(countAt(proposals, 20.0), 2u);
    EXPECT_EQ(countAt(turned, -20.0), 2u);
    // They begin a quarter and three quarters of 70 s in, 17.5 s from the middle of the overlap,
    // over which clocks may drift.
    EXPECT_NEAR(proposals[0].request.reach, 0.04 + 170e-6 * 17.5, 1e-9);
    EXPECT_GT(proposals[0].height, 9.0);
}

TEST(Excerpts, OfSilenceProposeNothing)
{
    // The first excerpt falls into silence.
    std::vector<float> event = noise(1, 110 * rate);
    std::fill(event.begin(), event.begin() + 60 * rate, 0.0f);
    const Prepared recording = preparedOf(event);

    EXPECT_EQ(countAt(vxlsync::proposeExcerpts({{0, 1}, recording, recording}, never), 0.0), 1u);
}

TEST(Excerpts, AreLookedForInAllPiecesOfTheLonger)
{
    // More than 1048 s of silence, the first piece, and a sound in the second, which begins
    // two minutes before. So long recordings are tried at a low rate, which costs less.
    constexpr int lowRate = 2000;
    const std::vector<float> sound = noise(1, 100 * lowRate);
    Prepared longer;
    longer.rate = lowRate;
    longer.samples.appendSilence(std::size_t{1049} * lowRate);
    longer.samples.append(sound.data(), sound.size());
    const Prepared shorter = vxlsync::prepare(signals::stored(sound), lowRate, never);
    const PairInHand pair{{0, 1}, longer, shorter};

    const auto proposals = vxlsync::proposeExcerpts(pair, never);

    EXPECT_EQ(countAt(proposals, 1049.0), 2u);
    // 221 s and 30 s are half a million samples, a length of 2^19: two floats each, and twice two
    // bytes for nine tenths of half as many bins.
    EXPECT_NEAR(static_cast<double>(vxlsync::bytesOfExcerpts(pair)), 5.14e6, 0.03e6);
}

TEST(Excerpts, CanBeEnded)
{
    const vxlsync::Interrupt now(measuring::endingAt(1));
    const Prepared recording = preparedOf(noise(1, 100 * rate));

    EXPECT_THROW(vxlsync::proposeExcerpts({{0, 1}, recording, recording}, now), vxlsync::Cancelled);
}

} // namespace
