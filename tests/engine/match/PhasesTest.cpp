#include "match/Phases.h"

#include <gmock/gmock.h>

#include "Signals.h"

namespace
{

using signals::rate;
using signals::stored;
using vxlsync::CorrelationSpace;
using vxlsync::Phases;

const vxlsync::Interrupt never;

TEST(Phases, GiveEveryBinOfTheBandTheSameSize)
{
    CorrelationSpace space(16384, never);

    const Phases phases = vxlsync::phasesOf(stored(signals::noise(5, rate)), 0, rate, rate, space);

    // 100 Hz at 16384 samples of 8 kHz: bin 204.8, so 205 is the first; 3600 Hz is bin 7372.8.
    EXPECT_EQ(phases.length, 16384u);
    EXPECT_EQ(phases.firstBin, 205u);
    EXPECT_EQ(phases.parts.size(), 2u * (7372 - 205 + 1));
    EXPECT_EQ(vxlsync::bytesOfPhases(16384, rate), phases.parts.size());
    for (std::size_t i = 0; i + 1 < phases.parts.size(); i += 2)
        EXPECT_NEAR(std::hypot(phases.parts[i], phases.parts[i + 1]), 127.0, 1.0);
}

TEST(Phases, OfSilenceAreNone)
{
    CorrelationSpace space(16384, never);
    vxlsync::SampleStore<float> silence;
    silence.appendSilence(rate);

    EXPECT_THAT(vxlsync::phasesOf(silence, 0, rate, rate, space).parts, testing::IsEmpty());
}

TEST(Phases, OfASilentPartOfASoundAreZero)
{
    CorrelationSpace space(16384, never);
    std::vector<float> samples(rate, 0.0f);
    samples[0] = 1.0f;

    EXPECT_THAT(vxlsync::phasesOf(stored(samples), 100, rate - 100, rate, space).parts,
                testing::Each(0));
}

TEST(Phases, OfAPartAreThoseOfThePartAlone)
{
    CorrelationSpace space(16384, never);
    const std::vector<float> samples = signals::noise(5, 2 * rate);
    // The space is not empty.
    vxlsync::phasesOf(stored(samples), 0, 2 * rate, rate, space);

    const Phases part = vxlsync::phasesOf(stored(samples), 500, 4000, rate, space);

    const Phases alone =
        vxlsync::phasesOf(stored(signals::part(samples, 500, 4000)), 0, 4000, rate, space);
    EXPECT_EQ(part.parts, alone.parts);
}

TEST(Phases, TellWhatASpaceTakes)
{
    // 16384 floats, and 8193 pairs of floats.
    EXPECT_NEAR(static_cast<double>(vxlsync::bytesOfSpace(16384)), 4.0 * 2.0 * 16384.0, 100.0);
}

} // namespace
