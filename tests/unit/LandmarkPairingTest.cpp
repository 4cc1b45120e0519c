#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "Signals.h"
#include "VXFile.h"
#include "VXLandmark.h"
#include "VXLandmarkExtract.h"

// Pairing on hand-made peaks.

namespace
{

using signals::LandmarkRow;
using signals::PeakTable;
using VXS::Peak;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXLandmarkExtract;

using Rows = std::vector<LandmarkRow>;

std::uint32_t key(std::uint32_t anchorBin, std::uint32_t neighbourBin, std::uint32_t framesBetween)
{
    return framesBetween * 0x100000u + anchorBin * 0x400u + neighbourBin;
}

Rows combine(const PeakTable& table, const VXExtractParams& params = VXExtractParams())
{
    VXLandmarkExtract extractor(params);
    signals::setPeaks(extractor, table);
    VXFile file(1);
    extractor.combine(&file);
    return signals::landmarksOf(file);
}

// A peak in the first frame and one `distance` frames later, with empty lists up to frame `last`.
PeakTable twoPeaks(std::size_t distance, std::size_t last)
{
    PeakTable table(last + 1);
    table[0] = {{10, 0.0f, 0}};
    table[distance] = {{20, -1.0f, static_cast<std::int32_t>(distance)}};
    return table;
}

std::vector<int> neighbourBins(VXLandmarkExtract& extractor, Peak& anchor)
{
    std::vector<Peak*> neighbours;
    extractor.findNeighborPeaks(&anchor, neighbours);
    std::vector<int> bins;
    for (const Peak* neighbour : neighbours)
        bins.push_back(neighbour->frequency);
    return bins;
}

} // namespace

// 2 in the time field, 100 in the middle, 37 at the bottom:
// 2 * 2^20 + 100 * 2^10 + 37 = 0x200000 + 0x19000 + 0x25.
TEST(LandmarkPairing, KeyHoldsTimeAnchorAndNeighbour)
{
    PeakTable table(10);
    table[7] = {{100, 0.0f, 7}};
    table[9] = {{37, -5.0f, 9}};

    EXPECT_EQ((Rows{{7, 0x219025u}}), combine(table));
}

TEST(LandmarkPairing, LandmarkBelongsToTheFileAndStandsAtItsAnchor)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    signals::setPeaks(extractor, twoPeaks(3, 5));
    VXFile file(-77);

    extractor.combine(&file);

    ASSERT_EQ(1u, file.getLandmarkMap().count(0));
    const VXS::VXLandmark* landmark = file.getLandmarkMap()[0].front();
    EXPECT_EQ(0, landmark->getOffset());
    EXPECT_EQ(&file, landmark->file);
    EXPECT_EQ(-77, landmark->getFileID());
}

TEST(LandmarkPairing, SinglePeakGivesNoLandmark)
{
    EXPECT_EQ(Rows(), combine({{{10, 0.0f, 0}}, {}, {}}));
}

TEST(LandmarkPairing, FramesWithoutPeaksGiveNoLandmark)
{
    EXPECT_EQ(Rows(), combine({{}, {}, {}}));
}

TEST(LandmarkPairing, TwoPeaksOfOneFramePairBothWays)
{
    EXPECT_EQ((Rows{{0, key(10, 30, 0)}, {0, key(30, 10, 0)}}),
              combine({{{10, 0.0f, 0}, {30, -1.0f, 0}}}));
}

TEST(LandmarkPairing, PeaksAsFarApartAsTheTimeRangePair)
{
    // 126 * 2^20 is 0x7E00000.
    EXPECT_EQ((Rows{{0, 0x7E00000u + key(10, 20, 0)}}), combine(twoPeaks(126, 126)));
    EXPECT_EQ((Rows{{0, 0x7E00000u + key(10, 20, 0)}}), combine(twoPeaks(126, 200)));
}

TEST(LandmarkPairing, PeaksFurtherApartThanTheTimeRangeDoNotPair)
{
    EXPECT_EQ(Rows(), combine(twoPeaks(127, 127)));
    EXPECT_EQ(Rows(), combine(twoPeaks(127, 200)));
}

// With 126 lists the region would end with the list after the last.
TEST(LandmarkPairing, RegionThatEndsJustPastTheLastListStopsAtIt)
{
    EXPECT_EQ((Rows{{0, key(10, 20, 125)}}), combine(twoPeaks(125, 125)));
}

TEST(LandmarkPairing, TimeRangeOf0PairsWithinTheFrameOnly)
{
    VXExtractParams params;
    params.timeRange = 0;

    EXPECT_EQ((Rows{{0, key(10, 30, 0)}, {0, key(30, 10, 0)}}),
              combine({{{10, 0.0f, 0}, {30, -1.0f, 0}}, {{50, 0.0f, 1}}}, params));
}

TEST(LandmarkPairing, TimeRangeBeyondTheRecordingStopsAtItsLastList)
{
    VXExtractParams params;
    params.timeRange = std::numeric_limits<std::uint32_t>::max();

    EXPECT_EQ((Rows{{0, key(10, 20, 2)}}), combine(twoPeaks(2, 2), params));
}

TEST(LandmarkPairing, PeakOfTheLastFrameHasNoNeighbours)
{
    EXPECT_EQ((Rows{{1, key(10, 20, 1)}}), combine({{}, {{10, 0.0f, 1}}, {{20, 0.0f, 2}}}));
}

// The bins are 190 apart.
TEST(LandmarkPairing, FrequencyRangeHasNoEffectOnWhichPeaksPair)
{
    const PeakTable table = {{{10, 0.0f, 0}}, {{200, 0.0f, 1}}};

    for (const std::uint32_t range : {0u, 1u, 62u, 0xFFFFFFFFu}) {
        VXExtractParams params;
        params.frequencyRange = range;

        EXPECT_EQ((Rows{{0, key(10, 200, 1)}}), combine(table, params)) << range;
    }
}

TEST(LandmarkPairing, NeighboursStandByFrameAndThenAsInTheirList)
{
    EXPECT_EQ((Rows{{0, key(10, 40, 1)},
                    {0, key(10, 30, 1)},
                    {0, key(10, 60, 2)},
                    {1, key(40, 30, 0)},
                    {1, key(40, 60, 1)},
                    {1, key(30, 40, 0)},
                    {1, key(30, 60, 1)}}),
              combine({{{10, 0.0f, 0}}, {{40, -1.0f, 1}, {30, -2.0f, 1}}, {{60, 0.0f, 2}}}));
}

TEST(LandmarkPairing, AmplitudesHaveNoPartInTheKey)
{
    EXPECT_EQ(combine({{{10, 0.0f, 0}}, {{20, -90.0f, 1}}}),
              combine({{{10, -50.0f, 0}}, {{20, 12.0f, 1}}}));
}

TEST(LandmarkPairing, ListsAreSortedLoudestFirst)
{
    EXPECT_EQ((Rows{{0, key(50, 20, 0)}, {0, key(20, 50, 0)}}),
              combine({{{20, -5.0f, 0}, {50, -1.0f, 0}}}));
}

TEST(LandmarkPairing, EqualAmplitudesAreSortedByBin)
{
    EXPECT_EQ((Rows{{0, key(20, 50, 0)},
                    {0, key(20, 70, 0)},
                    {0, key(50, 20, 0)},
                    {0, key(50, 70, 0)},
                    {0, key(70, 20, 0)},
                    {0, key(70, 50, 0)}}),
              combine({{{70, -1.0f, 0}, {20, -1.0f, 0}, {50, -1.0f, 0}}}));
}

// Twelve peaks follow; the limit of 10 is tested after the append.
TEST(LandmarkPairing, PeakHasOneNeighbourMoreThanTheLimit)
{
    PeakTable table(1);
    table[0] = {{10, 0.0f, 0}};
    for (std::int32_t frame = 1; frame <= 12; ++frame)
        table.push_back({{100 + frame, 0.0f, frame}});

    const Rows rows = combine(table);

    Rows expected;
    for (std::uint32_t frame = 1; frame <= 11; ++frame)
        expected.emplace_back(0, key(10, 100 + frame, frame));
    EXPECT_EQ(expected, Rows(rows.begin(), rows.begin() + 11));
    EXPECT_EQ(1, rows.at(11).first);
}

TEST(LandmarkPairing, LimitCutsWithinAList)
{
    VXExtractParams params;
    params.setMaxPairsPerPeak(1);

    EXPECT_EQ((Rows{{0, key(10, 20, 1)},
                    {0, key(10, 30, 1)},
                    {1, key(20, 30, 0)},
                    {1, key(20, 40, 0)},
                    {1, key(30, 20, 0)},
                    {1, key(30, 40, 0)},
                    {1, key(40, 20, 0)},
                    {1, key(40, 30, 0)}}),
              combine({{{10, 0.0f, 0}}, {{20, -1.0f, 1}, {30, -2.0f, 1}, {40, -3.0f, 1}}}, params));
}

TEST(LandmarkPairing, LimitOf0GivesEachPeakItsFirstNeighbour)
{
    VXExtractParams params;
    params.setMaxPairsPerPeak(0);

    EXPECT_EQ((Rows{{0, key(10, 20, 1)}, {1, key(20, 30, 1)}}),
              combine({{{10, 0.0f, 0}}, {{20, 0.0f, 1}}, {{30, 0.0f, 2}}}, params));
}

TEST(LandmarkPairing, GreatestLimitLimitsNothing)
{
    VXExtractParams params;
    params.setMaxPairsPerPeak(std::numeric_limits<unsigned int>::max());
    PeakTable table(1);
    table[0] = {{10, 0.0f, 0}};
    for (std::int32_t frame = 1; frame <= 20; ++frame)
        table.push_back({{100 + frame, 0.0f, frame}});

    // 20 + 19 + ... + 1.
    EXPECT_EQ(210u, combine(table, params).size());
}

TEST(LandmarkPairing, EmptyListsInTheRegionAreNotCounted)
{
    VXExtractParams params;
    params.setMaxPairsPerPeak(0);

    EXPECT_EQ((Rows{{0, key(10, 20, 4)}}),
              combine({{{10, 0.0f, 0}}, {}, {}, {}, {{20, 0.0f, 4}}}, params));
}

// 1030 is 6 above 1024, and a distance of 1100 is 76 above it.
TEST(LandmarkPairing, FieldsWrapAbove1023)
{
    VXExtractParams params;
    params.setFftSize(4096);
    params.timeRange = 2000;
    PeakTable table(1101);
    table[0] = {{1030, 0.0f, 0}};
    table[1100] = {{2047, 0.0f, 1100}};

    EXPECT_EQ((Rows{{0, key(6, 1023, 76)}}), combine(table, params));
}

TEST(LandmarkPairing, LandmarksAlreadyInTheFileStayBefore)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    signals::setPeaks(extractor, twoPeaks(1, 1));
    VXFile file(1);

    extractor.combine(&file);
    extractor.combine(&file);

    EXPECT_EQ((Rows{{0, key(10, 20, 1)}, {0, key(10, 20, 1)}}), signals::landmarksOf(file));
}

TEST(LandmarkPairing, PeaksStayInPlace)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    const PeakTable table = twoPeaks(3, 5);
    signals::setPeaks(extractor, table);
    VXFile file(1);

    extractor.combine(&file);

    EXPECT_EQ(table, signals::peaksOf(extractor));
}

TEST(LandmarkPairing, NeighboursAreAppendedToWhatTheVectorHolds)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    signals::setPeaks(extractor, twoPeaks(1, 1));
    Peak earlier{99, 0.0f, 0};
    std::vector<Peak*> neighbours = {&earlier};

    extractor.findNeighborPeaks(extractor.frames->at(0)->at(0), neighbours);

    ASSERT_EQ(2u, neighbours.size());
    EXPECT_EQ(&earlier, neighbours[0]);
    EXPECT_EQ(20, neighbours[1]->frequency);
}

TEST(LandmarkPairing, OnlyTheAnchorItselfIsSkippedAndNotItsLike)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    signals::setPeaks(extractor, {{{10, 0.0f, 0}, {10, 0.0f, 0}}});

    EXPECT_EQ((std::vector<int>{10}), neighbourBins(extractor, *extractor.frames->at(0)->at(0)));
}

TEST(LandmarkPairing, AnchorOfNoListPairsWithAllOfItsFrame)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    signals::setPeaks(extractor, {{{10, 0.0f, 0}, {20, 0.0f, 0}}});
    Peak anchor{10, 0.0f, 0};

    EXPECT_EQ((std::vector<int>{10, 20}), neighbourBins(extractor, anchor));
}

TEST(LandmarkPairing, AnchorAfterTheLastFramePairsWithNobody)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    signals::setPeaks(extractor, twoPeaks(2, 2));
    Peak anchor{10, 0.0f, 3};

    EXPECT_TRUE(neighbourBins(extractor, anchor).empty());
}

// The upper bound is 256, half the transform, and itself within.
TEST(LandmarkPairing, AnchorAboveTheTransformPairsWithNobody)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    signals::setPeaks(extractor, twoPeaks(2, 2));
    Peak within{256, 0.0f, 1};
    Peak above{257, 0.0f, 1};

    EXPECT_EQ((std::vector<int>{20}), neighbourBins(extractor, within));
    EXPECT_TRUE(neighbourBins(extractor, above).empty());
}

// The lower bound is 0, also where the range reaches below.
TEST(LandmarkPairing, AnchorBelowBin0PairsWithNobody)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    signals::setPeaks(extractor, twoPeaks(2, 2));
    Peak within{0, 0.0f, 1};
    Peak below{-1, 0.0f, 1};

    EXPECT_EQ((std::vector<int>{20}), neighbourBins(extractor, within));
    EXPECT_TRUE(neighbourBins(extractor, below).empty());
}
