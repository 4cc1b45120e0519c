#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Signals.h"
#include "VXLandmarkExtract.h"

// The choice of peaks within and between frames. Most tests use frames that do not overlap and no
// opening, so that each frame holds exactly the lines that the test gives it and the threshold
// starts at the level of silence.

namespace
{

using signals::Samples;
using signals::SignalInput;
using VXS::VXExtractParams;
using VXS::VXLandmarkExtract;

// Lines are made in single precision; their levels come out within this many dB.
constexpr float rounding = 0.001f;

struct Line {
    int bin;
    float level;
};

// One frame of 512 samples with these lines, by their level in dB.
Samples lines(const std::vector<Line>& spectrum)
{
    Samples frame(512, 0.0f);
    for (const Line& line : spectrum) {
        const float amplitude = std::pow(10.0f, line.level / 20.0f) / 256.0f;
        frame = signals::mix(frame, signals::tone(line.bin, amplitude, 512));
    }
    return frame;
}

class PeakFinding : public testing::Test
{
protected:
    PeakFinding()
    {
        params.setHopSize(512);
        params.initialFrames = 0;
    }

    // Finds the peaks of these frames. The last frame of a recording reads nothing, so one more
    // follows, which is silent.
    void find(const std::vector<Samples>& frames)
    {
        Samples samples = signals::join(frames);
        samples.resize(samples.size() + 512);
        SignalInput input(samples);
        extractor.reset(new VXLandmarkExtract(params));
        extractor->setupFFT();
        extractor->findFreqPeaks(&input);
        ASSERT_EQ(frames.size() + 1, extractor->frames->size());
    }

    std::vector<int> bins(std::size_t frame) const { return signals::binsOf(*extractor, frame); }

    float amplitude(std::size_t frame, std::size_t index) const
    {
        return extractor->frames->at(frame)->at(index)->amplitude;
    }

    VXExtractParams params;
    std::unique_ptr<VXLandmarkExtract> extractor;
    const Samples silent = signals::silence(512);
};

using Bins = std::vector<int>;

} // namespace

TEST_F(PeakFinding, LineIsAPeakWithItsBinItsLevelAndItsFrame)
{
    find({silent, lines({{100, -7.0f}})});

    ASSERT_EQ((Bins{100}), bins(1));
    EXPECT_NEAR(-7.0f, amplitude(1, 0), rounding);
    EXPECT_EQ(1, extractor->frames->at(1)->front()->time);
}

TEST_F(PeakFinding, AmplitudeIsTheLevelToTheBit)
{
    const Samples comb = signals::comb(8, 1.0f, 512);

    find({comb});

    ASSERT_EQ((Bins{64, 128, 192}), bins(0));
    EXPECT_EQ(extractor->dB(64.0f), amplitude(0, 0));
}

TEST_F(PeakFinding, SilenceHasNoPeaksButAllItsLists)
{
    find({silent, silent, silent});

    for (std::size_t frame = 0; frame < 4; ++frame)
        EXPECT_TRUE(bins(frame).empty()) << frame;
}

TEST_F(PeakFinding, PeaksOfAFrameStandInOrderOfFallingAmplitude)
{
    find({lines({{40, -3.0f}, {90, -1.0f}, {140, -2.0f}, {190, 0.0f}})});

    EXPECT_EQ((Bins{190, 90, 140, 40}), bins(0));
}

TEST_F(PeakFinding, EqualLevelsStandInOrderOfBins)
{
    params.maxPeaksPerFrame = 2;

    find({signals::comb(8, 1.0f, 512)});

    EXPECT_EQ((Bins{64, 128}), bins(0));
}

TEST_F(PeakFinding, SixthPeakGoesAndTheFiveLouderStay)
{
    find(
        {lines({{20, 0.0f}, {60, -5.0f}, {100, -1.0f}, {140, -4.0f}, {180, -2.0f}, {220, -3.0f}})});

    EXPECT_EQ((Bins{20, 100, 180, 220, 140}), bins(0));
}

TEST_F(PeakFinding, LimitOfNoPeaksKeepsNone)
{
    params.maxPeaksPerFrame = 0;

    find({lines({{20, 0.0f}})});

    EXPECT_TRUE(bins(0).empty());
}

// 10 bins away the mask of 0 dB lies at 40 * exp(-0.08) - 40 = -3.0753 dB.
TEST_F(PeakFinding, PeakAboveTheMaskOfALouderOneIsAccepted)
{
    find({lines({{100, 0.0f}, {110, -2.0f}}), silent});
    EXPECT_EQ((Bins{100, 110}), bins(0));

    find({lines({{100, 0.0f}, {110, -3.05f}}), silent});
    EXPECT_EQ((Bins{100, 110}), bins(0));
}

TEST_F(PeakFinding, PeakBelowTheMaskOfALouderOneIsRejected)
{
    find({lines({{100, 0.0f}, {110, -4.0f}}), silent});
    EXPECT_EQ((Bins{100}), bins(0));

    find({lines({{100, 0.0f}, {110, -3.1f}}), silent});
    EXPECT_EQ((Bins{100}), bins(0));
}

// The peak at bin 110 is masked. Had it a mask of its own, that would lie at -4 - 3.08 = -7.08 dB
// in bin 120; the mask of bin 100 lies at 40 * exp(-0.32) - 40 = -10.95 dB there.
TEST_F(PeakFinding, RejectedPeakRaisesNothing)
{
    find({lines({{100, 0.0f}, {110, -4.0f}, {120, -9.0f}})});

    EXPECT_EQ((Bins{100, 120}), bins(0));
}

// In frame 1 a mask of bin 200 would stand at -1 - 0.2 = -1.2 dB in its own bin.
TEST_F(PeakFinding, PeakOverTheLimitRaisesNothing)
{
    params.maxPeaksPerFrame = 1;

    find({lines({{50, 0.0f}, {200, -1.0f}}), lines({{200, -5.0f}})});

    EXPECT_EQ((Bins{50}), bins(0));
    EXPECT_EQ((Bins{200}), bins(1));
}

TEST_F(PeakFinding, PeakThatEqualsTheThresholdIsRejected)
{
    params.thresholdDecay = 0.0f;
    const Samples frame = signals::comb(8, 1.0f, 512);

    find({frame, frame});

    EXPECT_EQ((Bins{64, 128, 192}), bins(0));
    EXPECT_TRUE(bins(1).empty());
}

TEST_F(PeakFinding, PeakJustAboveTheThresholdIsAccepted)
{
    params.thresholdDecay = 0.001f;
    const Samples frame = signals::comb(8, 1.0f, 512);

    find({frame, frame});

    EXPECT_EQ((Bins{64, 128, 192}), bins(1));
}

// The threshold at bin 100 is 0 after frame 0 and sinks by 0.2 with each frame: -0.8 at frame 4 and
// -1.0 at frame 5.
TEST_F(PeakFinding, ThresholdSinksWithEveryFrameAlsoWithoutPeaks)
{
    const Samples loud = lines({{100, 0.0f}});
    const Samples quieter = lines({{100, -0.9f}});

    find({loud, silent, silent, silent, quieter});
    EXPECT_TRUE(bins(4).empty());

    find({loud, silent, silent, silent, silent, quieter});
    EXPECT_EQ((Bins{100}), bins(5));
}

// Frame 0 leaves the threshold at -3.075 - 0.2 in bin 110 and at 40 * exp(-0.0968) - 40 - 0.2 =
// -3.69 - 0.2 in bin 111. Bin 110 is louder, but bin 111 stands further above it.
TEST_F(PeakFinding, CandidateIsAMaximumOfTheExcessAndNotOfTheLevel)
{
    find({lines({{100, 0.0f}}), lines({{110, -2.0f}, {111, -2.05f}})});

    ASSERT_EQ((Bins{111}), bins(1));
    EXPECT_NEAR(-2.05f, amplitude(1, 0), rounding);
}

// A pulse has the same magnitude in every bin.
TEST_F(PeakFinding, PlateauHasNoPeak)
{
    find({signals::comb(512, 1.0f, 512)});

    EXPECT_TRUE(bins(0).empty());
}

// The square of 2e19 is beyond single precision, so both bins are infinite and so are equal. What
// else the frame holds lies infinitely far below the floor.
TEST_F(PeakFinding, PlateauOfTwoBinsHasNoPeak)
{
    constexpr float height = 2.0e19f / 256.0f;

    find({signals::mix(signals::tone(100, height, 512), signals::tone(101, height, 512))});

    EXPECT_TRUE(bins(0).empty());
}

TEST_F(PeakFinding, FirstAndLastBinAreNeverPeaks)
{
    const Samples constant(512, 1.0f / 512.0f);

    find({constant, lines({{255, 0.0f}, {100, -20.0f}})});

    EXPECT_TRUE(bins(0).empty());
    EXPECT_EQ((Bins{100}), bins(1));
}

TEST_F(PeakFinding, BinsNextToTheFirstAndLastOneCanBePeaks)
{
    find({lines({{1, 0.0f}, {254, -1.0f}})});

    EXPECT_EQ((Bins{1, 254}), bins(0));
}

TEST_F(PeakFinding, PeakFarBelowTheLoudestBinOfTheRecordingGoesAtTheEnd)
{
    find({lines({{100, -61.0f}}), silent, lines({{200, 0.0f}})});

    EXPECT_TRUE(bins(0).empty());
    EXPECT_EQ((Bins{200}), bins(2));
}

TEST_F(PeakFinding, PeakWithinTheFloorStays)
{
    find({lines({{100, -59.0f}}), silent, lines({{200, 0.0f}})});

    EXPECT_EQ((Bins{100}), bins(0));
}

TEST_F(PeakFinding, PeakExactlyAtTheFloorStaysAndJustBelowItGoes)
{
    const Samples quiet = signals::comb(8, 1.0f, 512);
    const Samples loud = signals::comb(8, 1024.0f, 512);
    VXLandmarkExtract levels(params);
    // 64 and 64 * 1024 are the magnitudes of the two.
    params.peakFloor = levels.dB(64.0f) - levels.dB(65536.0f);
    find({quiet, silent, loud});
    EXPECT_EQ((Bins{64, 128, 192}), bins(0));

    params.peakFloor = std::nextafter(params.peakFloor, 0.0f);
    find({quiet, silent, loud});
    EXPECT_TRUE(bins(0).empty());
}

// Bin 0 is no peak, but it is the loudest bin: 512 * 1/512 is 0 dB.
TEST_F(PeakFinding, LoudestBinNeedNotBeAPeak)
{
    const Samples constant(512, 1.0f / 512.0f);

    find({lines({{200, -61.0f}}), constant});

    EXPECT_TRUE(bins(0).empty());
}

// The opening holds the line itself, so that frame 0 equals the threshold; in frame 1 the threshold
// has sunk by 0.2.
TEST_F(PeakFinding, OpeningSetsTheThreshold)
{
    params.initialFrames = 1;
    const Samples frame = signals::comb(8, 1.0f, 512);

    find({frame, frame});

    EXPECT_TRUE(bins(0).empty());
    EXPECT_EQ((Bins{64, 128, 192}), bins(1));
}

// Unspread, the threshold would be that of silence in bin 110. Spread, it lies at -3.075 - 0.2.
TEST_F(PeakFinding, OpeningIsSpreadByTheMask)
{
    params.initialFrames = 1;

    find({lines({{100, 0.0f}}), lines({{110, -3.2f}})});
    EXPECT_EQ((Bins{110}), bins(1));

    find({lines({{100, 0.0f}}), lines({{110, -3.4f}})});
    EXPECT_TRUE(bins(1).empty());
}

TEST_F(PeakFinding, MaskOfTheDefaultsHasItsWorkedOutValues)
{
    // Three decimals of 40 * exp(-0.5 * (d / 25)^2) - 40.
    constexpr float lastDecimal = 0.0006f;
    const std::vector<std::pair<std::size_t, float>> values = {
        {0, 0.0f},      {1, -0.032f},   {10, -3.075f},   {25, -15.739f},
        {50, -34.587f}, {75, -39.556f}, {100, -39.987f}, {255, -40.0f}};

    find({silent});

    ASSERT_EQ(256u, extractor->maskShape.size());
    EXPECT_EQ(0.0f, extractor->maskShape[0]);
    for (const auto& value : values) {
        EXPECT_NEAR(value.second, extractor->maskShape[value.first], lastDecimal) << value.first;
    }
}

TEST_F(PeakFinding, MaskIsWorkedOutInItsOrderToTheBit)
{
    params.maskHeight = 33.3f;
    params.maskWidth = 7.7f;

    find({silent});

    for (std::size_t i = 0; i < 256; ++i) {
        const float deviations = static_cast<float>(i) / 7.7f;
        const float square = deviations * deviations;
        const float exponent = square * -0.5f;
        const float bell = std::exp(exponent) * 33.3f;
        ASSERT_EQ(bell - 33.3f, extractor->maskShape[i]) << i;
    }
}

// Frame 1 is not a number in any bin, and so counts as silent.
TEST_F(PeakFinding, FrameThatIsNotANumberHasNoPeaksAndRaisesNothing)
{
    Samples broken = lines({{100, 0.0f}});
    broken[17] = std::numeric_limits<float>::quiet_NaN();
    const Samples first = lines({{50, -10.0f}, {150, -12.0f}});
    const Samples last = lines({{100, -20.0f}, {55, -10.5f}});

    find({first, silent, last});
    const signals::PeakTable expected = signals::peaksOf(*extractor);
    find({first, broken, last});

    EXPECT_EQ(expected, signals::peaksOf(*extractor));
}

TEST_F(PeakFinding, OpeningThatIsNotANumberCountsAsSilent)
{
    params.initialFrames = 1;
    Samples broken = silent;
    broken[17] = std::numeric_limits<float>::quiet_NaN();
    const Samples frame = lines({{50, -10.0f}, {150, -12.0f}});

    find({silent, frame});
    const signals::PeakTable expected = signals::peaksOf(*extractor);
    find({broken, frame});

    EXPECT_EQ((Bins{50, 150}), bins(1));
    EXPECT_EQ(expected, signals::peaksOf(*extractor));
}

// Of a comb of this height the square of the magnitude is beyond single precision, so the level of
// bins 64, 128 and 192 is infinite. The first of them raises the threshold to infinity everywhere
// and for good, and lies infinitely above the peaks before it.
TEST_F(PeakFinding, InfiniteLevelIsAPeakThatMasksAllOthers)
{
    const Samples ordinary = lines({{100, 0.0f}});

    find({ordinary, signals::comb(8, 1.0e25f, 512), ordinary});

    EXPECT_TRUE(bins(0).empty());
    ASSERT_EQ((Bins{64}), bins(1));
    EXPECT_EQ(std::numeric_limits<float>::infinity(), amplitude(1, 0));
    EXPECT_TRUE(bins(2).empty());
}

TEST_F(PeakFinding, InfiniteSamplesLeaveListsInOrder)
{
    Samples broken = lines({{100, 0.0f}, {30, -3.0f}});
    broken[17] = std::numeric_limits<float>::infinity();
    broken[400] = -std::numeric_limits<float>::infinity();

    find({lines({{50, 0.0f}}), broken, lines({{60, 0.0f}})});

    for (const auto& list : signals::peaksOf(*extractor)) {
        for (std::size_t i = 1; i < list.size(); ++i)
            EXPECT_GE(list[i - 1].amplitude, list[i].amplitude);
    }
}
