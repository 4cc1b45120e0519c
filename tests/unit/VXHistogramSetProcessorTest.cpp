#include "VXHistogramSetProcessor.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmark.h"

namespace VXS
{
namespace
{

using support::addBinWithoutVotes;
using support::addCountedFile;
using support::addVotes;
using support::countedFileWith;
using support::fileWith;
using support::landmarkAt;

using Pair = std::pair<std::int64_t, std::int64_t>;
using Frames = std::vector<std::int32_t>;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr char fatalLine[] = "[ERROR]: error in computing the region of "
                             "overlap between proposed histogram points\n";

struct Overlap {
    float length;
    float landmarksInFirst;
    float landmarksInSecond;
};

// The counts start at -7, so that a count that nobody stores shows.
Overlap overlapOf(VXFile* first, VXFile* second, float offset)
{
    Overlap overlap{0.0f, -7.0f, -7.0f};
    overlap.length = VXHistogramSetProcessor().proposedOverlapRegion(
        first, second, offset, overlap.landmarksInFirst, overlap.landmarksInSecond);
    return overlap;
}

Overlap overlapOf(const Frames& first, const Frames& second, float offset)
{
    return overlapOf(countedFileWith(first, 1).get(), countedFileWith(second, 2).get(), offset);
}

void expectOverlap(const Overlap& overlap, float length, float landmarksInFirst,
                   float landmarksInSecond)
{
    EXPECT_EQ(overlap.length, length);
    EXPECT_EQ(overlap.landmarksInFirst, landmarksInFirst);
    EXPECT_EQ(overlap.landmarksInSecond, landmarksInSecond);
}

struct Shares {
    float percentA;
    float percentB;
    float templateMatchLength;
};

// The outputs start at -7, so that an output that nobody stores shows.
Shares sharesOf(const Pair& pair, VXHistogram* histogram, std::int64_t offset, VXFileSet* fileSet)
{
    Shares shares{-7.0f, -7.0f, -7.0f};
    VXHistogramSetProcessor().offset2Percetage(pair, histogram, offset, shares.percentA,
                                               shares.percentB, shares.templateMatchLength,
                                               fileSet);
    return shares;
}

void expectUntouched(const Shares& shares)
{
    EXPECT_EQ(shares.percentA, -7.0f);
    EXPECT_EQ(shares.percentB, -7.0f);
    EXPECT_EQ(shares.templateMatchLength, -7.0f);
}

// The files 1 and 2 and the histogram of the pair, to be evaluated.
class Evaluation
{
public:
    Evaluation(const Frames& framesOfA, const Frames& framesOfB) : histograms(new VXHistogramSet())
    {
        fileA = addCountedFile(fileSet, 1, framesOfA);
        fileB = addCountedFile(fileSet, 2, framesOfB);
        histogram = new VXHistogram();
        (*histograms)[Pair(1, 2)] = histogram;
    }

    const VXMergeStats& run()
    {
        stats.reset(VXHistogramSetProcessor().run(&fileSet, histograms.get()));
        return *stats->at(Pair(1, 2));
    }

    VXFileSet fileSet;
    VXFile* fileA;
    VXFile* fileB;
    VXHistogram* histogram;
    VXHistogramSetHolder histograms;
    VXMergeStatsSetHolder stats;
};

TEST(VXHistogramSetProcessor, OverlapWithoutAFileIsZeroAndStoresNothing)
{
    const auto file = countedFileWith({0, 100});

    expectOverlap(overlapOf(nullptr, file.get(), 10.0f), 0.0f, -7.0f, -7.0f);
    expectOverlap(overlapOf(file.get(), nullptr, 10.0f), 0.0f, -7.0f, -7.0f);
    expectOverlap(overlapOf(nullptr, nullptr, -10.0f), 0.0f, -7.0f, -7.0f);
}

TEST(VXHistogramSetProcessor, PositiveOffsetJoinsTheTailOfTheFirstToTheHeadOfTheSecond)
{
    // In the second file's time the overlap runs from 0 to 100 - 30 = 70. It is frames 30 to 100 of
    // the first file and 0 to 70 of the second.
    const auto overlap = overlapOf(Frames{0, 29, 30, 60, 100}, Frames{0, 70, 71, 100}, 30.0f);

    expectOverlap(overlap, 70.0f, 3.0f, 2.0f);
}

TEST(VXHistogramSetProcessor, NegativeOffsetJoinsTheHeadOfTheFirstToTheTailOfTheSecond)
{
    // In the first file's time the overlap runs from 0 to 100 - 30 = 70. It is frames 0 to 70 of
    // the first file and 30 to 100 of the second.
    const auto overlap = overlapOf(Frames{0, 70, 71, 100}, Frames{0, 29, 30, 60, 100}, -30.0f);

    expectOverlap(overlap, 70.0f, 2.0f, 3.0f);
}

TEST(VXHistogramSetProcessor, PositiveOffsetStartsWhereTheLaterOfTheTwoStarts)
{
    // In the second file's time: end 100 - 20 = 80, start 50 - 20 = 30, so 50 frames, which are
    // counted as 50 to 100 in the first file and as 0 to 50 in the second.
    const auto overlap = overlapOf(Frames{50, 99, 100}, Frames{0, 50, 51, 100}, 20.0f);

    expectOverlap(overlap, 50.0f, 3.0f, 2.0f);
}

TEST(VXHistogramSetProcessor, NegativeOffsetStartsWhereTheLaterOfTheTwoStarts)
{
    // In the first file's time: end 100 - 20 = 80, start 50 - 20 = 30, so 50 frames, which are
    // counted as 0 to 50 in the first file and as 50 to 100 in the second.
    const auto overlap = overlapOf(Frames{0, 50, 51, 100}, Frames{50, 99, 100}, -20.0f);

    expectOverlap(overlap, 50.0f, 2.0f, 3.0f);
}

TEST(VXHistogramSetProcessor, FileInsideAnotherCountsAtTheEndOfTheLongerOne)
{
    // Length 100. The first file counts 900 to 1000 and not 500 to 600.
    const auto overlap =
        overlapOf(Frames{0, 500, 550, 600, 899, 900, 1000}, Frames{0, 50, 100}, 500.0f);

    expectOverlap(overlap, 100.0f, 2.0f, 3.0f);
}

TEST(VXHistogramSetProcessor, FileAroundAnotherCountsAtTheEndOfTheLongerOne)
{
    // Length 100. The second file counts 900 to 1000 and not 500 to 600.
    const auto overlap =
        overlapOf(Frames{0, 50, 100}, Frames{0, 500, 550, 600, 899, 900, 1000}, -500.0f);

    expectOverlap(overlap, 100.0f, 3.0f, 2.0f);
}

TEST(VXHistogramSetProcessor, OffsetOfZeroTakesTheBranchForNegativeOffsets)
{
    // Length 100. The head of the first file counts, 0 to 100; the other branch would count its
    // tail, 900 to 1000.
    const auto overlap = overlapOf(Frames{0, 100, 101, 898, 900, 950, 1000}, Frames{0, 100}, 0.0f);

    expectOverlap(overlap, 100.0f, 2.0f, 2.0f);
}

TEST(VXHistogramSetProcessor, PositiveFractionalOffsetRoundsItsBoundsOutward)
{
    // Length 69.5: the first file from floor(30.5) = 30, the second to ceil(69.5) = 70.
    const auto overlap = overlapOf(Frames{0, 29, 30, 31, 100}, Frames{0, 69, 70, 71, 100}, 30.5f);

    expectOverlap(overlap, 69.5f, 3.0f, 3.0f);
}

TEST(VXHistogramSetProcessor, NegativeFractionalOffsetRoundsItsBoundsOutward)
{
    // Length 69.5: the first file to ceil(69.5) = 70, the second from floor(30.5) = 30.
    const auto overlap = overlapOf(Frames{0, 69, 70, 71, 100}, Frames{0, 29, 30, 31, 100}, -30.5f);

    expectOverlap(overlap, 69.5f, 3.0f, 3.0f);
}

TEST(VXHistogramSetProcessor, PositiveOffsetRoundsBoundsBelowZeroOutward)
{
    // End min(-10, -10 - 0.5), start max(-20, -20.5): length -10.5 + 20 = 9.5. The first file
    // from floor(-10 - 9.5) = -20, the second to ceil(-20 + 9.5) = -10.
    const auto overlap = overlapOf(Frames{-20, -19, -10}, Frames{-20, -11, -10}, 0.5f);

    expectOverlap(overlap, 9.5f, 3.0f, 3.0f);
}

TEST(VXHistogramSetProcessor, NegativeOffsetRoundsBoundsBelowZeroOutward)
{
    // End min(-10 - 0.5, -10), start max(-20.5, -20): length -10.5 + 20 = 9.5. The first file to
    // ceil(-20 + 9.5) = -10, the second from floor(-10 - 9.5) = -20.
    const auto overlap = overlapOf(Frames{-20, -11, -10}, Frames{-20, -19, -10}, -0.5f);

    expectOverlap(overlap, 9.5f, 3.0f, 3.0f);
}

TEST(VXHistogramSetProcessor, PositiveOffsetBeyondTheFilesGivesANegativeLength)
{
    // End 100 - 150 = -50, start 0.
    const auto overlap = overlapOf(Frames{0, 50, 100}, Frames{0, 50, 100}, 150.0f);

    expectOverlap(overlap, -50.0f, 0.0f, 0.0f);
}

TEST(VXHistogramSetProcessor, NegativeOffsetBeyondTheFilesGivesANegativeLength)
{
    // End 100 - 150 = -50, start 0.
    const auto overlap = overlapOf(Frames{0, 50, 100}, Frames{0, 50, 100}, -150.0f);

    expectOverlap(overlap, -50.0f, 0.0f, 0.0f);
}

TEST(VXHistogramSetProcessor, FilesThatTouchInOneFrameOverlapByZero)
{
    const auto overlap = overlapOf(Frames{0, 100}, Frames{0, 100}, 100.0f);

    // The first file counts its frame 100, the second its frame 0.
    expectOverlap(overlap, 0.0f, 1.0f, 1.0f);
}

TEST(VXHistogramSetProcessor, StaleFilesCountMinusOne)
{
    const auto first = fileWith({0, 100});
    const auto second = fileWith({0, 100});

    expectOverlap(overlapOf(first.get(), second.get(), 10.0f), 90.0f, -1.0f, -1.0f);
}

TEST(VXHistogramSetProcessor, FileWithoutLandmarksHasABoundlessGapAndCountsZero)
{
    const auto first = countedFileWith({0, 100});
    const auto second = countedFileWith({});

    // The bounds without a landmark are -2^63 and 2^63 as floats; -2^63 - 2^63 = -2^64.
    expectOverlap(overlapOf(first.get(), second.get(), 1.0f), -18446744073709551616.0f, 0.0f, 0.0f);
    expectOverlap(overlapOf(second.get(), first.get(), -1.0f), -18446744073709551616.0f, 0.0f,
                  0.0f);
}

TEST(VXHistogramSetProcessor, BoundAbove32BitsSaturates)
{
    // 2^31 - 1 as float is 2^31, one beyond 32 bits. Both files meet at that frame, length 0.
    const auto first = countedFileWith({INT32_MAX});
    const auto second = countedFileWith({0});

    expectOverlap(overlapOf(first.get(), second.get(), 2147483648.0f), 0.0f, 1.0f, 1.0f);
}

TEST(VXHistogramSetProcessor, BoundOfTheLowest32BitsIsKept)
{
    // -2^31 is a float of its own. Both files meet at that frame, length 0.
    const auto first = countedFileWith({INT32_MIN});
    const auto second = countedFileWith({0});

    expectOverlap(overlapOf(first.get(), second.get(), -2147483648.0f), 0.0f, 1.0f, 1.0f);
}

TEST(VXHistogramSetProcessor, InfiniteOffsetSaturates)
{
    const auto first = countedFileWith({0, 100});
    const auto second = countedFileWith({0, 100});

    expectOverlap(overlapOf(first.get(), second.get(), infinity), -infinity, 0.0f, 0.0f);
    expectOverlap(overlapOf(first.get(), second.get(), -infinity), -infinity, 0.0f, 0.0f);
}

TEST(VXHistogramSetProcessor, SharesRelateVotesToTheSpanOfTheBin)
{
    VXFileSet fileSet;
    VXFile* fileA = addCountedFile(fileSet, 1, {10, 20, 30, 40, 50});
    addCountedFile(fileSet, 2, {0, 10, 12, 14, 20, 30, 31});
    VXHistogram histogram;
    addVotes(histogram, 10, {landmarkAt(*fileA, 40), landmarkAt(*fileA, 20)});

    const Shares shares = sharesOf(Pair(1, 2), &histogram, 10, &fileSet);

    // A has 20, 30, 40 within 20 to 40; B has 10, 12, 14, 20, 30 within 20 - 10 to 40 - 10.
    EXPECT_EQ(shares.percentA, 2.0f / 3.0f);
    EXPECT_EQ(shares.percentB, 2.0f / 5.0f);
    EXPECT_EQ(shares.templateMatchLength, 20.0f);
}

TEST(VXHistogramSetProcessor, SharesOfANegativeOffsetLookLaterInTheSecondFile)
{
    VXFileSet fileSet;
    VXFile* fileA = addCountedFile(fileSet, 1, {10, 20});
    addCountedFile(fileSet, 2, {10, 20, 110, 115, 118, 120});
    VXHistogram histogram;
    addVotes(histogram, -100, {landmarkAt(*fileA, 10), landmarkAt(*fileA, 20)});

    const Shares shares = sharesOf(Pair(1, 2), &histogram, -100, &fileSet);

    // B has 4 landmarks within 10 + 100 to 20 + 100.
    EXPECT_EQ(shares.percentB, 2.0f / 4.0f);
}

TEST(VXHistogramSetProcessor, SharesMayExceedOne)
{
    VXFileSet fileSet;
    VXFile* fileA = addCountedFile(fileSet, 1, {10});
    addCountedFile(fileSet, 2, {10, 10});
    VXHistogram histogram;
    addVotes(histogram, 0, 6, landmarkAt(*fileA, 10));

    const Shares shares = sharesOf(Pair(1, 2), &histogram, 0, &fileSet);

    EXPECT_EQ(shares.percentA, 6.0f);
    EXPECT_EQ(shares.percentB, 3.0f);
}

TEST(VXHistogramSetProcessor, VotesOfOnePositionSpanZeroFrames)
{
    VXFileSet fileSet;
    VXFile* fileA = addCountedFile(fileSet, 1, {10, 10, 30});
    addCountedFile(fileSet, 2, {10});
    VXHistogram histogram;
    addVotes(histogram, 0, {landmarkAt(*fileA, 10, 0), landmarkAt(*fileA, 10, 1)});

    const Shares shares = sharesOf(Pair(1, 2), &histogram, 0, &fileSet);

    EXPECT_EQ(shares.templateMatchLength, 0.0f);
}

TEST(VXHistogramSetProcessor, SpanWithoutLandmarksInTheSecondFileGivesAnInfiniteShare)
{
    VXFileSet fileSet;
    VXFile* fileA = addCountedFile(fileSet, 1, {10, 20});
    addCountedFile(fileSet, 2, {0, 500});
    VXHistogram histogram;
    addVotes(histogram, 0, {landmarkAt(*fileA, 10), landmarkAt(*fileA, 20)});

    const Shares shares = sharesOf(Pair(1, 2), &histogram, 0, &fileSet);

    EXPECT_EQ(shares.percentA, 1.0f);
    EXPECT_EQ(shares.percentB, infinity);
}

TEST(VXHistogramSetProcessor, SharesOfStaleFilesAreNegative)
{
    VXFileSet fileSet;
    VXFile* fileA = fileSet.addFile(fileWith({10, 20}, 1).release());
    fileSet.addFile(fileWith({10, 20}, 2).release());
    VXHistogram histogram;
    addVotes(histogram, 0, {landmarkAt(*fileA, 10), landmarkAt(*fileA, 20)});

    const Shares shares = sharesOf(Pair(1, 2), &histogram, 0, &fileSet);

    EXPECT_EQ(shares.percentA, -2.0f);
    EXPECT_EQ(shares.percentB, -2.0f);
}

TEST(VXHistogramSetProcessor, SharesOfAnIdOutsideTheSetLeaveANullEntryBehind)
{
    VXFileSet fileSet;
    VXFile* fileA = addCountedFile(fileSet, 1, {10});
    VXHistogram histogram;
    addVotes(histogram, 0, {landmarkAt(*fileA, 10)});

    const Shares shares = sharesOf(Pair(1, 9), &histogram, 0, &fileSet);

    ASSERT_EQ(fileSet.getFiles().count(9), 1u);
    EXPECT_EQ(fileSet.getFiles().at(9), nullptr);
    EXPECT_EQ(shares.percentA, 1.0f);
    EXPECT_EQ(shares.percentB, infinity);
}

TEST(VXHistogramSetProcessor, SharesWithoutAHistogramAreNotStored)
{
    VXFileSet fileSet;

    expectUntouched(sharesOf(Pair(1, 2), nullptr, 0, &fileSet));
}

TEST(VXHistogramSetProcessor, SharesWithoutAFileSetAreNotStored)
{
    const auto file = countedFileWith({10});
    VXHistogram histogram;
    addVotes(histogram, 0, {landmarkAt(*file, 10)});

    expectUntouched(sharesOf(Pair(1, 2), &histogram, 0, nullptr));
}

TEST(VXHistogramSetProcessor, SharesOfAnEmptyHistogramAreNotStored)
{
    VXFileSet fileSet;
    VXHistogram histogram;

    expectUntouched(sharesOf(Pair(1, 2), &histogram, 0, &fileSet));
    EXPECT_TRUE(fileSet.getFiles().empty());
}

TEST(VXHistogramSetProcessor, SharesOfAnUnknownOffsetAreNotStored)
{
    VXFileSet fileSet;
    VXFile* fileA = addCountedFile(fileSet, 1, {10});
    VXHistogram histogram;
    addVotes(histogram, 5, {landmarkAt(*fileA, 10)});

    expectUntouched(sharesOf(Pair(1, 2), &histogram, 4, &fileSet));
    EXPECT_EQ(histogram.size(), 1u);
}

TEST(VXHistogramSetProcessor, ExtremeOffsetsWrap)
{
    VXFileSet fileSet;
    VXFile* fileA = addCountedFile(fileSet, 1, {10, 20});
    addCountedFile(fileSet, 2, {10, 20});
    VXHistogram histogram;
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    addVotes(histogram, lowest, {landmarkAt(*fileA, 10), landmarkAt(*fileA, 20)});

    const Shares shares = sharesOf(Pair(1, 2), &histogram, lowest, &fileSet);

    // 10 + 2^63 wraps to a frame far before the second file.
    EXPECT_EQ(shares.percentA, 1.0f);
    EXPECT_EQ(shares.percentB, infinity);
    EXPECT_EQ(shares.templateMatchLength, 10.0f);
}

TEST(VXHistogramSetProcessorDeathTest, BinWithoutVotesEndsTheProcess)
{
    VXFileSet fileSet;
    addCountedFile(fileSet, 1, {10});
    addCountedFile(fileSet, 2, {10});
    VXHistogram histogram;
    addBinWithoutVotes(histogram, 0);

    EXPECT_EXIT(sharesOf(Pair(1, 2), &histogram, 0, &fileSet), testing::ExitedWithCode(1),
                testing::Matcher<const std::string&>(testing::Eq(std::string(fatalLine))));
}

TEST(VXHistogramSetProcessorDeathTest, EvaluationOfABinWithoutVotesEndsTheProcess)
{
    Evaluation evaluation({10}, {10});
    addBinWithoutVotes(*evaluation.histogram, 3);

    EXPECT_EXIT(evaluation.run(), testing::ExitedWithCode(1),
                testing::Matcher<const std::string&>(testing::Eq(std::string(fatalLine))));
}

TEST(VXHistogramSetProcessor, RunWithoutAFileSetGivesNull)
{
    VXHistogramSet histograms;

    EXPECT_EQ(VXHistogramSetProcessor().run(nullptr, &histograms), nullptr);
}

TEST(VXHistogramSetProcessor, RunWithoutHistogramsGivesNull)
{
    VXFileSet fileSet;

    EXPECT_EQ(VXHistogramSetProcessor().run(&fileSet, nullptr), nullptr);
}

TEST(VXHistogramSetProcessor, RunOnAnEmptySetGivesAnEmptySet)
{
    VXFileSet fileSet;
    VXHistogramSet histograms;

    const VXMergeStatsSetHolder stats(VXHistogramSetProcessor().run(&fileSet, &histograms));

    ASSERT_NE(stats, nullptr);
    EXPECT_TRUE(stats->empty());
}

TEST(VXHistogramSetProcessor, EveryPairGetsARecordWithItsIdsAndItsHistogram)
{
    VXFileSet fileSet;
    VXFile* file = addCountedFile(fileSet, 1, {10});
    addCountedFile(fileSet, 2, {10});
    addCountedFile(fileSet, 3, {10});
    VXHistogramSetHolder histograms(new VXHistogramSet());
    for (const Pair& pair : {Pair(1, 2), Pair(1, 3), Pair(2, 3)}) {
        VXHistogram*& histogram = (*histograms)[pair];
        histogram = new VXHistogram();
        addVotes(*histogram, 0, {landmarkAt(*file, 10)});
    }

    const VXMergeStatsSetHolder stats(VXHistogramSetProcessor().run(&fileSet, histograms.get()));

    ASSERT_EQ(stats->size(), 3u);
    for (const auto& entry : *stats) {
        EXPECT_EQ(entry.second->fileA, entry.first.first);
        EXPECT_EQ(entry.second->fileB, entry.first.second);
        EXPECT_EQ(entry.second->histogram, histograms->at(entry.first));
        EXPECT_FALSE(entry.second->merged);
    }
}

TEST(VXHistogramSetProcessor, BestOffsetIsThatOfTheHighestBin)
{
    Evaluation evaluation({0, 100}, {0, 100});
    VXLandmark* vote = landmarkAt(*evaluation.fileA, 100);
    addVotes(*evaluation.histogram, -3, 2, vote);
    addVotes(*evaluation.histogram, 4, 5, vote);
    addVotes(*evaluation.histogram, 9, 4, vote);

    const VXMergeStats& record = evaluation.run();

    EXPECT_EQ(record.bestOffset, 4.0f);
    EXPECT_EQ(record.peakCount, 5.0f);
}

TEST(VXHistogramSetProcessor, HighestOffsetWinsATie)
{
    Evaluation evaluation({0, 100}, {0, 100});
    VXLandmark* vote = landmarkAt(*evaluation.fileA, 100);
    addVotes(*evaluation.histogram, 10, 5, vote);
    addVotes(*evaluation.histogram, 20, 5, vote);

    const VXMergeStats& record = evaluation.run();

    EXPECT_EQ(record.bestOffset, 20.0f);
    EXPECT_EQ(record.peakCount, 5.0f);
}

TEST(VXHistogramSetProcessor, HighestOffsetWinsATieAmongNegativeOffsets)
{
    Evaluation evaluation({0, 100}, {0, 100});
    VXLandmark* vote = landmarkAt(*evaluation.fileA, 0);
    addVotes(*evaluation.histogram, -20, 5, vote);
    addVotes(*evaluation.histogram, -10, 5, vote);

    EXPECT_EQ(evaluation.run().bestOffset, -10.0f);
}

TEST(VXHistogramSetProcessor, RecordHoldsTheOverlapAtTheBestOffset)
{
    Evaluation evaluation({0, 29, 30, 60, 100}, {0, 70, 71, 100});
    addVotes(*evaluation.histogram, 30, 6, landmarkAt(*evaluation.fileA, 30));

    const VXMergeStats& record = evaluation.run();

    // 70 frames: 30 to 100 of the first file hold 3 landmarks, 0 to 70 of the second hold 2.
    EXPECT_EQ(record.overlapLength, 70.0f);
    EXPECT_EQ(record.landmarksInOverlapA, 3.0f);
    EXPECT_EQ(record.landmarksInOverlapB, 2.0f);
}

TEST(VXHistogramSetProcessor, PercentagesRelateTheVotesToTheOverlapAndNotToTheSpanOfTheBin)
{
    Evaluation evaluation({0, 29, 30, 60, 100}, {0, 70, 71, 100});
    addVotes(*evaluation.histogram, 30, 6, landmarkAt(*evaluation.fileA, 30));

    const VXMergeStats& record = evaluation.run();

    // The bin spans frame 30 alone, where each file has one landmark: that would give 6 and 6.
    EXPECT_EQ(record.percentMatchA, 6.0f / 3.0f);
    EXPECT_EQ(record.percentMatchB, 6.0f / 2.0f);
}

TEST(VXHistogramSetProcessor, OverlapWithoutLandmarksGivesInfinitePercentages)
{
    Evaluation evaluation({0, 10}, {0, 10});
    // At offset 50 the files do not meet, so neither has a landmark in the overlap.
    addVotes(*evaluation.histogram, 50, 6, landmarkAt(*evaluation.fileA, 10));

    const VXMergeStats& record = evaluation.run();

    EXPECT_EQ(record.landmarksInOverlapA, 0.0f);
    EXPECT_EQ(record.percentMatchA, infinity);
    EXPECT_EQ(record.percentMatchB, infinity);
}

TEST(VXHistogramSetProcessor, TemplateMatchLengthIsTheSpanOfTheBestBinAlone)
{
    Evaluation evaluation({0, 20, 65, 100}, {0, 100});
    VXFile& fileA = *evaluation.fileA;
    addVotes(*evaluation.histogram, -1, {landmarkAt(fileA, 0), landmarkAt(fileA, 100)});
    addVotes(*evaluation.histogram, 0,
             {landmarkAt(fileA, 65), landmarkAt(fileA, 20), landmarkAt(fileA, 20)});

    // 65 - 20
    EXPECT_EQ(evaluation.run().templateMatchLength, 45.0f);
}

TEST(VXHistogramSetProcessor, BestBinIsLookedUpByItsExactOffset)
{
    Evaluation evaluation({0, 20}, {0, 20});
    // 2^24 + 1 is no float: it becomes 2^24, which has no bin.
    addVotes(*evaluation.histogram, 16777217,
             {landmarkAt(*evaluation.fileA, 0), landmarkAt(*evaluation.fileA, 20)});

    const VXMergeStats& record = evaluation.run();

    EXPECT_EQ(record.bestOffset, 16777216.0f);
    EXPECT_EQ(record.templateMatchLength, 20.0f);
}

TEST(VXHistogramSetProcessor, MeanIsTakenOverTheFramesOfTheOverlap)
{
    Evaluation evaluation({0, 64}, {0, 64});
    VXLandmark* vote = landmarkAt(*evaluation.fileA, 64);
    addVotes(*evaluation.histogram, -3, 8, vote);
    addVotes(*evaluation.histogram, 0, 16, vote);
    addVotes(*evaluation.histogram, 5, 8, vote);

    // (8 + 16 + 8) / 64, and not 32 / 3 bins.
    EXPECT_EQ(evaluation.run().meanCount, 0.5f);
}

TEST(VXHistogramSetProcessor, VarianceSumsTheExistingBinsOverTheFramesOfTheOverlap)
{
    Evaluation evaluation({0, 64}, {0, 64});
    VXLandmark* vote = landmarkAt(*evaluation.fileA, 64);
    addVotes(*evaluation.histogram, -3, 8, vote);
    addVotes(*evaluation.histogram, 0, 16, vote);
    addVotes(*evaluation.histogram, 5, 8, vote);

    // (7.5^2 + 15.5^2 + 7.5^2) / 64 = (56.25 + 240.25 + 56.25) / 64 = 352.75 / 64 = 5.51171875
    EXPECT_EQ(evaluation.run().stdDevCount, std::sqrt(5.51171875f));
}

TEST(VXHistogramSetProcessor, SquaresAreSummedInAscendingOffset)
{
    Evaluation evaluation({0, 100}, {0, 100});
    VXLandmark* vote = landmarkAt(*evaluation.fileA, 0);
    addVotes(*evaluation.histogram, -2, 1, vote);
    addVotes(*evaluation.histogram, 0, 40, vote);
    addVotes(*evaluation.histogram, 3, 7, vote);

    const VXMergeStats& record = evaluation.run();

    // 48 votes over 100 frames, each step rounded to single precision.
    const float mean = 48.0f / 100.0f;
    float squares = (1.0f - mean) * (1.0f - mean);
    squares += (40.0f - mean) * (40.0f - mean);
    squares += (7.0f - mean) * (7.0f - mean);
    EXPECT_EQ(record.meanCount, mean);
    EXPECT_EQ(record.stdDevCount, std::sqrt(squares / 100.0f));
}

// Above 2^24 a float holds no odd number, so that a single vote more is lost in each step of the
// sum; in any other order, or in a wider sum, the single votes would add up first.
TEST(VXHistogramSetProcessor, VotesAreSummedInSinglePrecisionByAscendingOffset)
{
    Evaluation evaluation({0, 64}, {0, 64});
    constexpr std::uint64_t many = std::uint64_t{1} << 24u;
    evaluation.histogram->append(0, many);
    for (std::int64_t offset = 1; offset <= 128; ++offset)
        evaluation.histogram->append(offset, 1);

    // 2^24 / 64, and not (2^24 + 128) / 64.
    EXPECT_EQ(evaluation.run().meanCount, 262144.0f);
}

// The mean is (4098 + 102) / 2100 = 2, so that the first square is 4096^2 = 2^24 and each of the
// others 1, which a float that holds 2^24 does not take up.
TEST(VXHistogramSetProcessor, SquaresAreSummedInSinglePrecisionByAscendingOffset)
{
    Evaluation evaluation({0, 2100}, {0, 2100});
    evaluation.histogram->append(0, 4098);
    for (std::int64_t offset = 1; offset <= 102; ++offset)
        evaluation.histogram->append(offset, 1);

    const VXMergeStats& record = evaluation.run();

    EXPECT_EQ(record.meanCount, 2.0f);
    EXPECT_EQ(record.stdDevCount, std::sqrt(16777216.0f / 2100.0f));
}

// Three bins for which a mean, a distance, a square or a quotient in double precision, or a product
// with 1 / 15 for the quotient, each gives a deviation whose last bit is another.
TEST(VXHistogramSetProcessor, EveryStepOfTheDeviationIsRoundedToSinglePrecision)
{
    Evaluation evaluation({0, 15}, {0, 15});
    VXLandmark* vote = landmarkAt(*evaluation.fileA, 0);
    addVotes(*evaluation.histogram, 0, 42, vote);
    addVotes(*evaluation.histogram, 1, 38, vote);
    addVotes(*evaluation.histogram, 2, 23, vote);

    const VXMergeStats& record = evaluation.run();

    // 103 votes over 15 frames.
    const float mean = 103.0f / 15.0f;
    float squares = 0.0f;
    for (const float votes : {42.0f, 38.0f, 23.0f}) {
        const float distance = votes - mean;
        const float square = distance * distance;
        squares += square;
    }
    const float variance = squares / 15.0f;
    EXPECT_EQ(record.stdDevCount, std::sqrt(variance));
}

TEST(VXHistogramSetProcessor, VarianceBelowItsFloorIsRaised)
{
    Evaluation evaluation({0, 64}, {0, 64});
    addVotes(*evaluation.histogram, 0, 2, landmarkAt(*evaluation.fileA, 0));

    // 2 / 64 = 0.03125 and (2 - 0.03125)^2 / 64 = 0.0606, which is below 0.1.
    const VXMergeStats& record = evaluation.run();

    EXPECT_EQ(record.meanCount, 0.03125f);
    EXPECT_EQ(record.stdDevCount, std::sqrt(0.1f));
}

TEST(VXHistogramSetProcessor, VarianceAboveItsFloorStays)
{
    Evaluation evaluation({0, 64}, {0, 64});
    VXLandmark* vote = landmarkAt(*evaluation.fileA, 0);
    addVotes(*evaluation.histogram, 0, 2, vote);
    addVotes(*evaluation.histogram, -1, 2, vote);

    // 4 / 64 = 0.0625 and 2 * (2 - 0.0625)^2 / 64 = 2 * 3.75390625 / 64 = 0.1173095703125
    EXPECT_EQ(evaluation.run().stdDevCount, std::sqrt(0.1173095703125f));
}

TEST(VXHistogramSetProcessor, NegativeOverlapGivesANegativeMeanAndTheFloor)
{
    Evaluation evaluation({0, 10}, {0, 10});
    // Overlap 10 - 50 = -40 frames.
    addVotes(*evaluation.histogram, 50, 5, landmarkAt(*evaluation.fileA, 10));

    const VXMergeStats& record = evaluation.run();

    EXPECT_EQ(record.overlapLength, -40.0f);
    EXPECT_EQ(record.meanCount, -0.125f);
    EXPECT_EQ(record.stdDevCount, std::sqrt(0.1f));
}

TEST(VXHistogramSetProcessor, OverlapOfZeroMakesMeanAndDeviationInfinite)
{
    Evaluation evaluation({10}, {10});
    addVotes(*evaluation.histogram, 0, 5, landmarkAt(*evaluation.fileA, 10));

    const VXMergeStats& record = evaluation.run();

    EXPECT_EQ(record.overlapLength, 0.0f);
    EXPECT_EQ(record.meanCount, infinity);
    EXPECT_EQ(record.stdDevCount, infinity);
}

TEST(VXHistogramSetProcessor, VarianceThatIsNotANumberIsNotRaised)
{
    // No vote over no frame: 0 / 0 in the mean and in the variance.
    Evaluation evaluation({10}, {10});

    const VXMergeStats& record = evaluation.run();

    EXPECT_EQ(record.overlapLength, 0.0f);
    EXPECT_TRUE(std::isnan(record.meanCount));
    EXPECT_TRUE(std::isnan(record.stdDevCount));
}

TEST(VXHistogramSetProcessor, EmptyHistogramGivesARecordWithoutAPeak)
{
    Evaluation evaluation({0, 64}, {0, 64});

    const VXMergeStats& record = evaluation.run();

    EXPECT_EQ(record.peakCount, 0.0f);
    EXPECT_EQ(record.bestOffset, 0.0f);
    EXPECT_EQ(record.templateMatchLength, 0.0f);
    EXPECT_EQ(record.meanCount, 0.0f);
    EXPECT_EQ(record.stdDevCount, std::sqrt(0.1f));
}

TEST(VXHistogramSetProcessor, NullHistogramGivesARecordWithNoMeanAndTheFloor)
{
    Evaluation evaluation({10}, {10});
    delete evaluation.histogram;
    (*evaluation.histograms)[Pair(1, 2)] = nullptr;

    const VXMergeStats& record = evaluation.run();

    // The overlap is 0 frames, over which a mean would be no number.
    EXPECT_EQ(record.peakCount, 0.0f);
    EXPECT_EQ(record.bestOffset, 0.0f);
    EXPECT_EQ(record.meanCount, 0.0f);
    EXPECT_EQ(record.stdDevCount, std::sqrt(0.1f));
}

TEST(VXHistogramSetProcessor, PairOutsideTheSetGetsARecordAndLeavesNullEntriesBehind)
{
    const auto file = countedFileWith({10});
    VXFileSet fileSet;
    VXHistogramSetHolder histograms(new VXHistogramSet());
    VXHistogram*& histogram = (*histograms)[Pair(8, 9)];
    histogram = new VXHistogram();
    addVotes(*histogram, 0, {landmarkAt(*file, 10)});

    const VXMergeStatsSetHolder stats(VXHistogramSetProcessor().run(&fileSet, histograms.get()));

    const VXMergeStats& record = *stats->at(Pair(8, 9));
    EXPECT_EQ(record.overlapLength, 0.0f);
    EXPECT_EQ(record.landmarksInOverlapA, 0.0f);
    EXPECT_EQ(record.percentMatchB, infinity);
    EXPECT_EQ(fileSet.getFiles(), (std::map<std::int64_t, VXFile*>{{8, nullptr}, {9, nullptr}}));
}

TEST(VXHistogramSetProcessor, RunPrintsNothing)
{
    Evaluation evaluation({0, 64}, {0, 64});
    addVotes(*evaluation.histogram, 0, 2, landmarkAt(*evaluation.fileA, 0));

    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    evaluation.run();

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
} // namespace VXS
