#include "match/Align.h"

#include <gmock/gmock.h>

#include "Measuring.h"
#include "Signals.h"
#include "match/Evidence.h"

namespace
{

using measuring::preparedOf;
using signals::mixed;
using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::Alignment;
using vxlsync::isEvidence;

Alignment alignmentOf(const std::vector<float>& first, const std::vector<float>& second,
                      double offset)
{
    vxlsync::AlignRequest request;
    request.offset = offset;
    return measuring::aligned(preparedOf(first), preparedOf(second), request);
}

// Two recorders with noise of their own at half the level of the sound.
Alignment noisyPair(double searchedAt)
{
    const std::vector<float> event = noise(1, 30 * rate);
    return alignmentOf(mixed(part(event, 0, 20 * rate), noise(2, 20 * rate), 0.5f),
                       mixed(part(event, 8 * rate, 20 * rate), noise(3, 20 * rate), 0.5f),
                       searchedAt);
}

TEST(Align, FindsTheOffsetToAFractionOfASample)
{
    const Alignment line = noisyPair(8.0 + 0.03);

    EXPECT_NEAR(line.offset, 8.0, 5e-6);
    EXPECT_NEAR(line.start, 8.0, 0.04);
    EXPECT_NEAR(line.end, 20.0, 1e-9);
    EXPECT_TRUE(isEvidence(line));
    EXPECT_EQ(line.sign, 1.0);
}

TEST(Align, TellsOfEachWindowWhetherItAgrees)
{
    const Alignment line = noisyPair(8.0);

    EXPECT_DOUBLE_EQ(line.agreement, 1.0);
    // 12 s in windows of 2 s that overlap by half.
    EXPECT_EQ(line.windows.size(), 11u);
}

TEST(Align, IsAboutNothingAwayFromTheOffset)
{
    EXPECT_FALSE(isEvidence(noisyPair(7.5)));
}

TEST(Align, MeasuresTheDriftOfTheClocks)
{
    // The second clock runs 80 millionths slower: at its end of 60 s it is 4.8 ms behind.
    const Alignment line =
        alignmentOf(signals::chirps(0.0, 60 * rate), signals::chirps(80.0, 60 * rate), 0.0);

    EXPECT_NEAR(line.slope * 1e6, 80.0, 0.5);
    EXPECT_NEAR(line.offset, 80e-6 * line.middle, 20e-6);
}

TEST(Align, SeesARecordingThatIsUpsideDown)
{
    const std::vector<float> event = noise(1, 20 * rate);
    std::vector<float> turned = event;
    for (float& sample : turned)
        sample = -sample;

    const Alignment line = alignmentOf(event, turned, 0.0);

    EXPECT_EQ(line.sign, -1.0);
    EXPECT_NEAR(line.offset, 0.0, 5e-6);
}

TEST(Align, TakesAToneForNoEvidence)
{
    const std::vector<float> first =
        mixed(signals::tone(440.0, 20 * rate), noise(1, 20 * rate), 0.001f);
    const std::vector<float> second =
        mixed(signals::tone(440.0, 20 * rate), noise(2, 20 * rate), 0.001f);

    EXPECT_FALSE(isEvidence(alignmentOf(first, second, 0.0)));
}

TEST(Align, LetsPausesHaveNoOpinion)
{
    // Sound in the first 6 of 20 seconds, then each recorder's own noise alone.
    std::vector<float> event = noise(1, 20 * rate);
    std::fill(event.begin() + 6 * rate, event.end(), 0.0f);

    const Alignment line = alignmentOf(mixed(event, noise(2, 20 * rate), 0.01f),
                                       mixed(event, noise(3, 20 * rate), 0.01f), 0.0);

    EXPECT_GT(line.agreement, 0.97);
    EXPECT_TRUE(isEvidence(line));
}

TEST(Align, CountsPartsThatDisagree)
{
    // The same sound for 10 of 20 seconds, then each recorder hears something else as loud.
    std::vector<float> first = noise(1, 20 * rate);
    std::vector<float> second = first;
    const std::vector<float> other = noise(4, 20 * rate);
    std::copy(other.begin() + 10 * rate, other.end(), second.begin() + 10 * rate);

    const Alignment line = alignmentOf(first, second, 0.0);

    EXPECT_NEAR(line.agreement, 0.5, 0.1);
}

TEST(Align, TellsThePlaceAndWindowsOnlyOfALineThatDoesNotStandOut)
{
    vxlsync::AlignRequest request;
    request.offset = 3.0;
    request.leastSignificance = 1e6;
    const vxlsync::Prepared recording = preparedOf(noise(1, 10 * rate));

    const Alignment line = measuring::aligned(recording, recording, request);

    EXPECT_NEAR(line.offset, 3.0, 0.05);
    EXPECT_EQ(line.windows.size(), 13u);
    EXPECT_GT(line.significance, 0.0);
    EXPECT_EQ(line.coherence, 0.0);
    EXPECT_EQ(line.allBands, 0);
}

TEST(Align, KeepsTheSignThatIsKnown)
{
    const std::vector<float> event = noise(1, 10 * rate);
    vxlsync::AlignRequest request;
    request.sign = -1.0;

    // It is the right way up, and so not what is looked for: the best there is lies beside it.
    const Alignment turned = measuring::aligned(preparedOf(event), preparedOf(event), request);
    EXPECT_EQ(turned.sign, -1.0);
    EXPECT_LT(turned.significance, 50.0);
    request.sign = 1.0;
    EXPECT_GT(measuring::aligned(preparedOf(event), preparedOf(event), request).significance, 50.0);
    request.offset = 9.5;
    request.sign = -1.0;
    EXPECT_EQ(measuring::aligned(preparedOf(event), preparedOf(event), request).sign, -1.0);
}

TEST(Align, FindsNothingInSilence)
{
    vxlsync::Prepared silence;
    silence.rate = rate;
    silence.samples.appendSilence(std::size_t{300} * rate);
    silence.energy.assign(3000, 0.0f);

    const Alignment line = measuring::aligned(silence, silence, {});

    EXPECT_EQ(line.significance, 0.0);
    EXPECT_EQ(line.windows.size(), 40u);
}

TEST(Align, CanBeEndedSoon)
{
    const vxlsync::Prepared recording = preparedOf(noise(1, 10 * rate));
    for (const int question : {1, 20}) {
        const vxlsync::Interrupt interrupt(measuring::endingAt(question));
        vxlsync::AlignWorkspace work;
        EXPECT_THROW(vxlsync::align(recording, recording, {}, interrupt, work), vxlsync::Cancelled);
    }
}

TEST(Align, HasNoWindowsWhereNothingIsShared)
{
    const std::vector<float> event = noise(1, 5 * rate);

    EXPECT_TRUE(alignmentOf(event, event, 10.0).windows.empty());
}

} // namespace
