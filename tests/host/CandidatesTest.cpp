#include "Candidates.h"

#include <gmock/gmock.h>

#include "Signals.h"

namespace
{

using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::Candidate;

std::vector<Candidate> candidatesOf(const std::vector<float>& first,
                                    const std::vector<float>& second)
{
    vxlsync::Transform transform(vxlsync::fastLength(first.size() + second.size()));
    vxlsync::CandidateScratch scratch;
    return vxlsync::findCandidates(vxlsync::phasesOf(first, rate, transform), first.size(),
                                   vxlsync::phasesOf(second, rate, transform), second.size(), rate,
                                   transform, scratch);
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
}

} // namespace
