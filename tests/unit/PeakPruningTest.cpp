#include <algorithm>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "Signals.h"
#include "VXLandmarkExtract.h"

// The backward pass on hand-made peaks: 16 bins, a mask of whole numbers and a decay of a half, so
// that every sum below is exact.

namespace
{

using signals::PeakTable;
using VXS::VXExtractParams;
using VXS::VXLandmarkExtract;

constexpr int bins = 16;

class PeakPruning : public testing::Test
{
protected:
    PeakPruning() : extractor(smallParams())
    {
        extractor.setupFFT();
        std::fill_n(extractor.fftInput.data, bins, -300.0f);
        // Minus the square of the distance.
        for (int distance = 0; distance < bins; ++distance)
            extractor.maskShape.push_back(static_cast<float>(-distance * distance));
    }

    static VXExtractParams smallParams()
    {
        VXExtractParams params;
        params.setFftSize(2 * bins);
        params.thresholdDecay = 0.5f;
        return params;
    }

    void setLastLevel(int bin, float level) { extractor.fftInput.data[bin] = level; }

    PeakTable prune(const PeakTable& table)
    {
        signals::setPeaks(extractor, table);
        extractor.prune();
        return signals::peaksOf(extractor);
    }

    VXLandmarkExtract extractor;
};

} // namespace

TEST_F(PeakPruning, NoFramesAreNothingToDo)
{
    extractor.prune();

    EXPECT_TRUE(extractor.frames->empty());
    EXPECT_EQ(-300.0f, extractor.fftInput.data[5]);
}

TEST_F(PeakPruning, PeakOfTheOnlyFrameThatEqualsItsLevelStays)
{
    setLastLevel(5, -10.0f);
    const PeakTable table = {{{5, -10.0f, 0}}};

    EXPECT_EQ(table, prune(table));
}

// Bin 5 spreads to bin 8 as -10 - 9 = -19.
TEST_F(PeakPruning, PeakOfTheLastFrameThatEqualsTheSpreadOfALouderOneStays)
{
    setLastLevel(5, -10.0f);
    setLastLevel(8, -19.0f);
    const PeakTable table = {{{5, -10.0f, 0}, {8, -19.0f, 0}}};

    EXPECT_EQ(table, prune(table));
}

TEST_F(PeakPruning, PeakOfTheLastFrameBelowTheSpreadOfALouderOneGoes)
{
    setLastLevel(5, -10.0f);
    setLastLevel(8, -19.5f);

    EXPECT_EQ((PeakTable{{{5, -10.0f, 0}}}), prune({{{5, -10.0f, 0}, {8, -19.5f, 0}}}));
}

// Bin 5 of the last frame spreads to bin 7 as 0 - 4, less 0.5 for one frame: -4.5.
TEST_F(PeakPruning, SpectrumOfTheLastFrameMasksEvenWithoutAPeak)
{
    setLastLevel(5, 0.0f);
    const PeakTable kept = {{{7, -4.5f, 0}}, {}};
    EXPECT_EQ(kept, prune(kept));
}

TEST_F(PeakPruning, PeakBelowTheSpectrumOfTheLastFrameGoes)
{
    setLastLevel(5, 0.0f);

    EXPECT_EQ((PeakTable{{}, {}}), prune({{{7, -4.75f, 0}}, {}}));
}

// The later peak stands at -20, and one frame before it the threshold is -20.5.
TEST_F(PeakPruning, EarlierPeakAtTheSunkenThresholdStays)
{
    const PeakTable table = {{{5, -20.5f, 0}}, {{5, -20.0f, 1}}};

    EXPECT_EQ(table, prune(table));
}

TEST_F(PeakPruning, EarlierPeakAboveTheSunkenThresholdStays)
{
    const PeakTable table = {{{5, -20.25f, 0}}, {{5, -20.0f, 1}}};

    EXPECT_EQ(table, prune(table));
}

TEST_F(PeakPruning, EarlierPeakBelowTheSunkenThresholdGoesAndItsListStays)
{
    EXPECT_EQ((PeakTable{{}, {{5, -20.0f, 1}}}), prune({{{5, -20.75f, 0}}, {{5, -20.0f, 1}}}));
}

TEST_F(PeakPruning, LaterPeakIsNotMaskedByAnEarlierOne)
{
    const PeakTable table = {{{5, -10.0f, 0}}, {{5, -20.0f, 1}}};

    EXPECT_EQ(table, prune(table));
}

// -20 three frames later is -21.5 here.
TEST_F(PeakPruning, ThresholdSinksThroughEmptyLists)
{
    const PeakTable kept = {{{5, -21.5f, 0}}, {}, {}, {{5, -20.0f, 3}}};

    EXPECT_EQ(kept, prune(kept));
}

TEST_F(PeakPruning, EmptyListsSinkNoFurtherThanTheirNumber)
{
    EXPECT_EQ((PeakTable{{}, {}, {}, {{5, -20.0f, 3}}}),
              prune({{{5, -21.75f, 0}}, {}, {}, {{5, -20.0f, 3}}}));
}

// Two bins away and one frame later the mask of -20 lies at -20 - 4 - 0.5 = -24.5.
TEST_F(PeakPruning, MaskReachesNeighbouringBins)
{
    EXPECT_EQ((PeakTable{{{7, -24.5f, 0}}, {{5, -20.0f, 1}}}),
              prune({{{7, -24.5f, 0}}, {{5, -20.0f, 1}}}));
}

TEST_F(PeakPruning, PeakBelowTheMaskOfAnotherBinGoes)
{
    EXPECT_EQ((PeakTable{{}, {{5, -20.0f, 1}}}), prune({{{7, -24.75f, 0}}, {{5, -20.0f, 1}}}));
}

// The peak in bin 7 goes. Its own mask would lie at -25 - 4 - 0.5 = -29.5 in bin 9 of frame 0; that
// of bin 5 lies at -20 - 16 - 1 = -37 there.
TEST_F(PeakPruning, RemovedPeakRaisesNothing)
{
    EXPECT_EQ((PeakTable{{{9, -33.0f, 0}}, {}, {{5, -20.0f, 2}}}),
              prune({{{9, -33.0f, 0}}, {{7, -25.0f, 1}}, {{5, -20.0f, 2}}}));
}

// In order: bin 5 masks bin 6 at -11 and bin 7 at -14, and bin 9 only at -26.
TEST_F(PeakPruning, PeaksOfOneFrameMaskOneAnotherFromTheFront)
{
    EXPECT_EQ((PeakTable{{{5, -10.0f, 0}, {9, -16.0f, 0}}, {}}),
              prune({{{5, -10.0f, 0}, {6, -12.0f, 0}, {7, -14.5f, 0}, {9, -16.0f, 0}}, {}}));
}

// The quieter one stands first, and the louder one behind it cannot mask it any more.
TEST_F(PeakPruning, ListIsTakenInTheOrderInWhichItStands)
{
    const PeakTable table = {{{6, -12.0f, 0}, {5, -10.0f, 0}}, {}};

    EXPECT_EQ(table, prune(table));
}

TEST_F(PeakPruning, HasNoLimitPerFrameAndNoFloor)
{
    const PeakTable table = {{{1, 0.0f, 0},
                              {3, -1.0f, 0},
                              {5, -2.0f, 0},
                              {7, -3.0f, 0},
                              {9, -4.0f, 0},
                              {11, -5.0f, 0},
                              {15, -20.0f, 0}},
                             {},
                             {{13, -295.0f, 2}}};

    EXPECT_EQ(table, prune(table));
}

TEST_F(PeakPruning, DoesNotChangeTheWorkingSpectrum)
{
    setLastLevel(5, 0.0f);

    prune({{{7, -4.0f, 0}}, {{5, 0.0f, 1}}});

    for (int k = 0; k < bins; ++k)
        EXPECT_EQ(k == 5 ? 0.0f : -300.0f, extractor.fftInput.data[k]) << k;
}

TEST_F(PeakPruning, SecondPassFindsTheThresholdAfresh)
{
    const PeakTable once = prune({{{5, -20.75f, 0}, {10, -30.0f, 0}}, {{5, -20.0f, 1}}});

    extractor.prune();

    EXPECT_EQ(once, signals::peaksOf(extractor));
}

TEST_F(PeakPruning, ThresholdThatIsNotANumberRemovesNothing)
{
    std::fill_n(extractor.fftInput.data, bins, std::numeric_limits<float>::quiet_NaN());
    const PeakTable table = {{{5, -200.0f, 0}}};

    EXPECT_EQ(table, prune(table));
}

// A mask that ends after one bin masks nothing two bins away.
TEST_F(PeakPruning, MaskShorterThanTheBinsMasksNothingBeyondItsEnd)
{
    extractor.maskShape = {0.0f, -1.0f};
    const PeakTable table = {{{7, -200.0f, 0}}, {{5, -20.0f, 1}}};

    EXPECT_EQ(table, prune(table));
}
