#include "VXPairCounter.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXFileSetProcessor.h"
#include "VXLandmark.h"

// Sets that are large, wide or damaged.

namespace VXS
{
namespace
{

using support::addFileWith;
using support::fractionEvent;
using support::greatestVoteIn;
using support::KeyAtFrame;
using support::landmarkAt;
using support::leastVoteIn;
using support::ProgressEvent;
using support::RecordingProgress;
using support::VoteCounts;
using support::voteCountsOf;

using Pair = std::pair<std::int64_t, std::int64_t>;
using PairVotes = std::map<Pair, VoteCounts>;
using Marks = std::vector<KeyAtFrame>;

constexpr std::uint32_t cap = 250;
constexpr std::int32_t highestFrame = std::numeric_limits<std::int32_t>::max();

VXHistogramSetHolder histogramsOf(VXFileSet& fileSet)
{
    VXFileSetProcessor processor(cap);
    return VXHistogramSetHolder(processor.run(&fileSet, nullptr));
}

// Files 3 and 4 meet in the last frame of all. Beside files from frame 0 on a frame takes 31 bits
// then and a file two more, so that a code needs more than 32.
void addDistantPair(VXFileSet& fileSet)
{
    addFileWith(fileSet, 3, {{1000000, highestFrame}});
    addFileWith(fileSet, 4, {{1000000, highestFrame}});
}

// The widths of codes and counters, all of which count alike.
struct Widths {
    bool areCodesWide;
    bool areCountersWide;
};
constexpr Widths allWidths[] = {{false, false}, {false, true}, {true, false}, {true, true}};

// Counts with codes and counters of these widths: two files that meet in the last frame of all
// widen the codes.
VXHistogramSetHolder countedIn(const Widths& widths, VXFileSet& fileSet, std::int64_t distantID)
{
    if (widths.areCodesWide) {
        addFileWith(fileSet, distantID, {{1000000, highestFrame}});
        addFileWith(fileSet, distantID + 1, {{1000000, highestFrame}});
    }
    VXFileSetProcessor processor(10000);
    if (widths.areCountersWide) processor.mostNarrowVotes = 0;
    return VXHistogramSetHolder(processor.run(&fileSet, nullptr));
}

// As if the votes were more than 32 bits can count.
VXHistogramSetHolder widelyCounted(VXFileSet& fileSet)
{
    VXFileSetProcessor processor(cap);
    processor.mostNarrowVotes = 0;
    return VXHistogramSetHolder(processor.run(&fileSet, nullptr));
}

// The keys from 1 on, each at the frame of its number.
Marks marksUpTo(std::uint32_t lastKey)
{
    Marks marks;
    for (std::uint32_t key = 1; key <= lastKey; ++key)
        marks.push_back({key, static_cast<std::int32_t>(key)});
    return marks;
}

} // namespace

// Four votes for offsets between -3,000,000 and 3,000,000.
TEST(VXPairCounter, OffsetsFarApartAreAllCounted)
{
    VXFileSet fileSet;
    const Marks marks = {{1, 0}, {1, 3000000}};
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{-3000000, 1}, {0, 2}, {3000000, 1}}}}),
              voteCountsOf(*histograms));
}

// A pair of 16 slots a vote is counted in a table, one of more by sorting: 2 votes and 33 offsets,
// from -32 to 0 and from -33 to 0. Both give what they should.
TEST(VXPairCounter, PairsOnBothSidesOfTheTableAreCounted)
{
    for (const std::int32_t distance : {32, 33}) {
        SCOPED_TRACE(distance);
        VXFileSet fileSet;
        VXFile* const first = addFileWith(fileSet, 1, {{1, 0}});
        addFileWith(fileSet, 2, {{1, 0}, {1, distance}});

        const auto histograms = histogramsOf(fileSet);

        EXPECT_EQ((PairVotes{{{1, 2}, {{-distance, 1}, {0, 1}}}}), voteCountsOf(*histograms));
        EXPECT_EQ(landmarkAt(*first, 0), leastVoteIn(*histograms->at(Pair(1, 2)), 0));
    }
}

// Of file 1, 400 frames meet in file 2, and one landmark in file 3 stands far away.
TEST(VXPairCounter, FarPairLeavesAnotherItsTable)
{
    for (const Widths& widths : allWidths) {
        SCOPED_TRACE(widths.areCodesWide);
        SCOPED_TRACE(widths.areCountersWide);
        constexpr std::int32_t far = 100000000;
        VXFileSet fileSet;
        VXFile* const first = addFileWith(fileSet, 1, marksUpTo(400));
        addFileWith(fileSet, 2, marksUpTo(400));
        addFileWith(fileSet, 3, {{5, far}, {9, 4}, {9, 5}});

        const auto histograms = countedIn(widths, fileSet, 4);

        PairVotes expected{{{1, 2}, {{0, 400}}},
                           {{1, 3}, {{5 - far, 1}, {4, 1}, {5, 1}}},
                           {{2, 3}, {{5 - far, 1}, {4, 1}, {5, 1}}}};
        if (widths.areCodesWide) expected[{4, 5}] = {{0, 1}};
        EXPECT_EQ(expected, voteCountsOf(*histograms));
        EXPECT_EQ(landmarkAt(*first, 400), greatestVoteIn(*histograms->at(Pair(1, 2)), 0));
        EXPECT_EQ(landmarkAt(*first, 9), leastVoteIn(*histograms->at(Pair(1, 3)), 5));
    }
}

// 1,100 * 1,000 votes, more than are sorted at a time, whose offsets lie 1,000 frames apart: frame
// 1000 * i of the one file and 1000 * j of the other vote for 1000 * (i - j).
TEST(VXPairCounter, VotesThatAreSortedInPartsAreCountedTogether)
{
    for (const Widths& widths : allWidths) {
        SCOPED_TRACE(widths.areCodesWide);
        SCOPED_TRACE(widths.areCountersWide);
        VXFileSet fileSet;
        Marks marks;
        for (std::int32_t i = 0; i < 1100; ++i)
            marks.push_back({7, 1000 * i});
        // Some keys before key 7 and some behind it in the index: twelve with an offset of their
        // own, and twelve with one that key 7 has.
        for (std::uint32_t key = 8; key < 20; ++key)
            marks.push_back({key, static_cast<std::int32_t>(37 * key)});
        for (std::uint32_t key = 20; key < 32; ++key)
            marks.push_back({key, 150000});
        VXFile* const first = addFileWith(fileSet, 1, marks);
        marks.resize(1000);
        for (std::uint32_t key = 8; key < 20; ++key)
            marks.push_back({key, 0});
        for (std::uint32_t key = 20; key < 32; ++key)
            marks.push_back({key, 50000});
        addFileWith(fileSet, 2, marks);
        VoteCounts expected;
        for (std::int32_t i = 0; i < 1100; ++i) {
            for (std::int32_t j = 0; j < 1000; ++j)
                ++expected[1000 * (i - j)];
        }
        for (std::int32_t key = 8; key < 20; ++key)
            ++expected[37 * key];
        expected[100000] += 12;
        PairVotes expectedPairs{{{1, 2}, expected}};
        if (widths.areCodesWide) expectedPairs[{4, 5}] = {{0, 1}};

        const auto histograms = countedIn(widths, fileSet, 4);

        EXPECT_EQ(expectedPairs, voteCountsOf(*histograms));
        // Offsets from 0 to 100,000 have 1,000 votes each, and the highest is the best: frames
        // 100,000 to 1,099,000.
        const VXHistogram& histogram = *histograms->at(Pair(1, 2));
        EXPECT_EQ(landmarkAt(*first, 100000), leastVoteIn(histogram, 100000));
        EXPECT_EQ(landmarkAt(*first, 1099000), greatestVoteIn(histogram, 100000));
    }
}

// 59 files behind the first, of 10,001 frames and so 20,001 offsets each: more than a million
// counters, while a table holds 2^20.
TEST(VXPairCounter, PairsOfManyFilesAreCountedGroupByGroup)
{
    for (const Widths& widths : allWidths) {
        SCOPED_TRACE(widths.areCodesWide);
        SCOPED_TRACE(widths.areCountersWide);
        constexpr std::int64_t fileCount = 60;
        VXFileSet fileSet;
        Marks marks;
        for (std::uint32_t key = 0; key <= 2000; ++key)
            marks.push_back({key, static_cast<std::int32_t>(5 * key)});
        for (std::int64_t fileID = 1; fileID <= fileCount; ++fileID) {
            // Each file begins a frame after the one before.
            Marks own = marks;
            // One key that no file behind the first group holds.
            if (fileID <= 2) own.push_back({5000, 3});
            for (KeyAtFrame& mark : own)
                mark.frame -= static_cast<std::int32_t>(fileID);
            addFileWith(fileSet, fileID, own);
        }
        const auto histograms = countedIn(widths, fileSet, fileCount + 1);

        PairVotes expected;
        for (std::int64_t lower = 1; lower <= fileCount; ++lower) {
            for (std::int64_t higher = lower + 1; higher <= fileCount; ++higher)
                expected[{lower, higher}] = {{higher - lower, 2001}};
        }
        expected[{1, 2}] = {{1, 2002}};
        if (widths.areCodesWide) expected[{fileCount + 1, fileCount + 2}] = {{0, 1}};
        EXPECT_EQ(expected, voteCountsOf(*histograms));
        VXFile& first = *fileSet.getFiles().at(1);
        EXPECT_EQ(landmarkAt(first, -1), leastVoteIn(*histograms->at(Pair(1, fileCount)), 59));
        EXPECT_EQ(landmarkAt(first, 9999), greatestVoteIn(*histograms->at(Pair(1, fileCount)), 59));
    }
}

// A hundred million frames in each of twenty recordings, with a hundred landmarks far apart: the
// offsets are 38 billion, the votes 19,000. To walk the offsets would take a minute.
TEST(VXPairCounter, VotesFarApartCostNoMoreThanVotes)
{
    constexpr double mostSeconds = 2.0;
    VXFileSet fileSet;
    for (std::int64_t fileID = 1; fileID <= 20; ++fileID) {
        Marks marks;
        for (std::uint32_t key = 0; key < 100; ++key)
            marks.push_back({key, static_cast<std::int32_t>(1000000 * key)});
        addFileWith(fileSet, fileID, marks);
    }
    const std::clock_t start = std::clock();

    const auto histograms = histogramsOf(fileSet);

    EXPECT_GT(mostSeconds, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    ASSERT_EQ(190u, histograms->size());
    EXPECT_EQ((VoteCounts{{0, 100}}), voteCountsOf(*histograms->at(Pair(19, 20))));
}

// File 1's landmark in the last frame of all stands in the list of file 2, as in a damaged set.
TEST(VXPairCounter, LandmarkInAnotherFileBringsNoSpanThatIsWalked)
{
    constexpr double mostSeconds = 2.0;
    VXFileSet fileSet;
    VXFile* const first = addFileWith(fileSet, 1, marksUpTo(50));
    VXFile* const second = addFileWith(fileSet, 2, marksUpTo(50));
    second->getLandmarkMap()[3].push_back(new VXLandmark(highestFrame, first, 7));
    for (std::int64_t fileID = 3; fileID <= 12; ++fileID)
        addFileWith(fileSet, fileID, marksUpTo(50));
    const std::clock_t start = std::clock();

    const auto histograms = histogramsOf(fileSet);

    EXPECT_GT(mostSeconds, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    EXPECT_EQ((VoteCounts{{0, 50}, {highestFrame - 7, 1}}),
              voteCountsOf(*histograms->at(Pair(1, 2))));
    EXPECT_EQ((VoteCounts{{0, 50}}), voteCountsOf(*histograms->at(Pair(2, 3))));
}

TEST(VXPairCounter, WideFilesThatShareNoKeyHaveNoPair)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{1, 0}, {1, 5000}});
    addFileWith(fileSet, 2, {{1, 0}, {2, 4000}, {2, 5000}});
    addFileWith(fileSet, 3, {{2, 1000}, {2, 6000}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{0, 1}, {5000, 1}}},
                         {{2, 3}, {{-2000, 1}, {-1000, 1}, {3000, 1}, {4000, 1}}}}),
              voteCountsOf(*histograms));
}

TEST(VXPairCounter, VotesTooManyFor32BitsAreCountedAlike)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{1, 10}, {2, 11}});
    addFileWith(fileSet, 2, {{1, 4}, {2, 5}, {2, 6}});

    const auto histograms = widelyCounted(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{5, 1}, {6, 2}}}}), voteCountsOf(*histograms));
}

TEST(VXPairCounter, VotesTooManyFor32BitsAreCountedAlikeWhereOffsetsLieFarApart)
{
    VXFileSet fileSet;
    const Marks marks = {{1, 0}, {1, 3000000}};
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);

    const auto histograms = widelyCounted(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{-3000000, 1}, {0, 2}, {3000000, 1}}}}),
              voteCountsOf(*histograms));
}

// The keys come in an order that has nothing to do with their frames, so once they stand at falling
// frames as well.
TEST(VXPairCounter, EndsOfCodesOf64BitsAreThoseOfAllKeysHoweverMany)
{
    constexpr std::int32_t last = 2000;
    Marks rising = marksUpTo(last);
    Marks falling = rising;
    for (KeyAtFrame& mark : falling)
        mark.frame = last + 1 - mark.frame;
    for (const Marks& marks : {rising, falling}) {
        VXFileSet fileSet;
        VXFile* const first = addFileWith(fileSet, 1, marks);
        addFileWith(fileSet, 2, marks);
        addDistantPair(fileSet);

        const auto histograms = histogramsOf(fileSet);

        const VXHistogram& histogram = *histograms->at(Pair(1, 2));
        EXPECT_EQ(2000u, support::votesIn(histogram, 0));
        EXPECT_EQ(landmarkAt(*first, 1), leastVoteIn(histogram, 0));
        EXPECT_EQ(landmarkAt(*first, last), greatestVoteIn(histogram, 0));
    }
}

TEST(VXPairCounter, OffsetsFarApartOfCodesOf64BitsAreAllCounted)
{
    for (const bool isWide : {false, true}) {
        SCOPED_TRACE(isWide);
        VXFileSet fileSet;
        const Marks marks = {{1, 0}, {1, 3000000}};
        addFileWith(fileSet, 1, marks);
        addFileWith(fileSet, 2, marks);
        addDistantPair(fileSet);

        const auto histograms = isWide ? widelyCounted(fileSet) : histogramsOf(fileSet);

        EXPECT_EQ((PairVotes{{{1, 2}, {{-3000000, 1}, {0, 2}, {3000000, 1}}}, {{3, 4}, {{0, 1}}}}),
                  voteCountsOf(*histograms));
    }
}

TEST(VXPairCounter, KeyOf251LandmarksOfCodesOf64BitsCastsNoVote)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, Marks(250, {7, 20}));
    addFileWith(fileSet, 2, {{7, 20}});
    addDistantPair(fileSet);

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{3, 4}, {{0, 1}}}}), voteCountsOf(*histograms));
}

TEST(VXPairCounter, HistogramsKeepNoMoreMemoryThanTheyFill)
{
    VXFileSet fileSet;
    const Marks marks = {{1, 0}, {1, 700}, {1, 5000}};
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);

    const auto histograms = histogramsOf(fileSet);

    const VXHistogram& histogram = *histograms->at(Pair(1, 2));
    EXPECT_EQ(histogram.packed.size(), histogram.packed.capacity());
}

// All of a key's landmarks stand in frame 10 of file 1, so the vote of the greatest key is both
// ends, whether it comes first or last in the index.
TEST(VXPairCounter, OfVotesInOneFrameThatOfTheGreatestKeyIsTheEnd)
{
    for (const Widths& widths : allWidths) {
        for (std::uint32_t greatest = 3; greatest < 40; ++greatest) {
            SCOPED_TRACE(greatest);
            VXFileSet fileSet;
            VXFile* const first = addFileWith(fileSet, 1, {{greatest, 10}, {1, 10}, {2, 10}});
            addFileWith(fileSet, 2, {{1, 4}, {2, 4}, {greatest, 4}});

            const auto histograms = countedIn(widths, fileSet, 4);

            const VXHistogram& histogram = *histograms->at(Pair(1, 2));
            EXPECT_EQ(landmarkAt(*first, 10, 0), leastVoteIn(histogram, 6));
            EXPECT_EQ(landmarkAt(*first, 10, 0), greatestVoteIn(histogram, 6));
        }
    }
}

// A vote that stands beyond all ends found so far is found however late its key comes.
TEST(VXPairCounter, EndsAreThoseOfAllKeysHoweverMany)
{
    VXFileSet fileSet;
    const Marks marks = marksUpTo(2000);
    VXFile* const first = addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);

    const auto histograms = histogramsOf(fileSet);

    const VXHistogram& histogram = *histograms->at(Pair(1, 2));
    EXPECT_EQ(landmarkAt(*first, 1), leastVoteIn(histogram, 0));
    EXPECT_EQ(landmarkAt(*first, 2000), greatestVoteIn(histogram, 0));
}

// Each of the others meets the first file in one key alone, and these keys come at any time.
TEST(VXPairCounter, EndsOfPairsThatShareOneKeyAreFoundAmongManyKeys)
{
    for (std::uint32_t key = 1; key <= 900; key += 100) {
        SCOPED_TRACE(key);
        VXFileSet fileSet;
        const Marks marks = marksUpTo(900);
        VXFile* const first = addFileWith(fileSet, 1, marks);
        addFileWith(fileSet, 2, marks);
        addFileWith(fileSet, 3, {{key, 0}});

        const auto histograms = histogramsOf(fileSet);

        const auto frame = static_cast<std::int32_t>(key);
        const VXHistogram& histogram = *histograms->at(Pair(1, 3));
        EXPECT_EQ(landmarkAt(*first, frame), leastVoteIn(histogram, frame));
        EXPECT_EQ(landmarkAt(*first, frame), greatestVoteIn(histogram, frame));
    }
}

TEST(VXPairCounter, EndsAreFoundAmongManyKeysBesideAFileThatSharesNone)
{
    VXFileSet fileSet;
    const Marks marks = marksUpTo(900);
    VXFile* const first = addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, {{901, 0}, {902, 0}});
    addFileWith(fileSet, 3, marks);
    addFileWith(fileSet, 4, {{901, 0}, {902, 0}});

    const auto histograms = histogramsOf(fileSet);

    const VXHistogram& histogram = *histograms->at(Pair(1, 3));
    EXPECT_EQ(landmarkAt(*first, 1), leastVoteIn(histogram, 0));
    EXPECT_EQ(landmarkAt(*first, 900), greatestVoteIn(histogram, 0));
    EXPECT_EQ(0u, histograms->count(Pair(1, 2)));
}

// Two thousand keys of one vote each: every percent is twenty of them.
TEST(VXPairCounter, ConversionOfManyVotesReportsEachPercentOnce)
{
    VXFileSet fileSet;
    const Marks marks = marksUpTo(2000);
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);
    VXFileSetProcessor processor(cap);
    processor.addLandmarks(&fileSet, nullptr);
    RecordingProgress progress;

    const VXHistogramSetHolder histograms(processor.convert2Histograms(&progress));

    std::vector<ProgressEvent> expected;
    for (int percent = 0; percent <= 100; ++percent)
        expected.push_back(fractionEvent(static_cast<float>(percent) / 100.0f));
    EXPECT_EQ(expected, progress.events);
}

} // namespace VXS
