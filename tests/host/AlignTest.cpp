#include "Align.h"

#include <gmock/gmock.h>

#include "Search.h"
#include "Signals.h"

namespace
{

using signals::mixed;
using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::Alignment;
using vxlsync::prepare;

Alignment alignmentOf(const std::vector<float>& first, const std::vector<float>& second,
                      double offset)
{
    vxlsync::AlignWorkspace work;
    vxlsync::AlignRequest request;
    request.offset = offset;
    return vxlsync::align(prepare(first, rate), prepare(second, rate), request, work);
}

// Two recorders with noise of their own at half the level of the sound.
Alignment noisyPair(double searchedAt)
{
    const std::vector<float> event = noise(1, 30 * rate);
    return alignmentOf(mixed(part(event, 0, 20 * rate), noise(2, 20 * rate), 0.5F),
                       mixed(part(event, 8 * rate, 20 * rate), noise(3, 20 * rate), 0.5F),
                       searchedAt);
}

TEST(Align, FindsTheOffsetToAFractionOfASample)
{
    const Alignment line = noisyPair(8.0 + 0.03);

    EXPECT_NEAR(line.offset, 8.0, 5e-6);
    EXPECT_NEAR(line.start, 8.0, 0.04);
    EXPECT_NEAR(line.end, 20.0, 1e-9);
    EXPECT_TRUE(vxlsync::isSound(line));
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
    EXPECT_FALSE(vxlsync::isSound(noisyPair(7.5)));
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

TEST(Align, TakesAToneForNoSound)
{
    const std::vector<float> first =
        mixed(signals::tone(440.0, 20 * rate), noise(1, 20 * rate), 0.001F);
    const std::vector<float> second =
        mixed(signals::tone(440.0, 20 * rate), noise(2, 20 * rate), 0.001F);

    EXPECT_FALSE(vxlsync::isSound(alignmentOf(first, second, 0.0)));
}

TEST(Align, LetsPausesHaveNoOpinion)
{
    // Sound in the first 6 of 20 seconds, then each recorder's own noise alone.
    std::vector<float> event = noise(1, 20 * rate);
    std::fill(event.begin() + 6 * rate, event.end(), 0.0F);

    const Alignment line = alignmentOf(mixed(event, noise(2, 20 * rate), 0.01F),
                                       mixed(event, noise(3, 20 * rate), 0.01F), 0.0);

    EXPECT_GT(line.agreement, 0.97);
    EXPECT_TRUE(vxlsync::isSound(line));
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

TEST(Align, HasNoWindowsWhereNothingIsShared)
{
    const std::vector<float> event = noise(1, 5 * rate);

    EXPECT_TRUE(alignmentOf(event, event, 10.0).windows.empty());
}

} // namespace
