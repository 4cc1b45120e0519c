#include <cstddef>
#include <cstdint>
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
// then and a file two more, so that a voter needs more than 32.
void addDistantPair(VXFileSet& fileSet)
{
    addFileWith(fileSet, 3, {{1000000, highestFrame}});
    addFileWith(fileSet, 4, {{1000000, highestFrame}});
}

// As if the votes were more than 32 bits can count.
VXHistogramSetHolder widelyCounted(VXFileSet& fileSet)
{
    VXFileSetProcessor processor(cap);
    processor.mostNarrowVotes = 0;
    return VXHistogramSetHolder(processor.run(&fileSet, nullptr));
}

// Puts a landmark into the frame's list of a file, which keeps it, whatever file it names.
VXLandmark* addStray(VXFile& holder, VXFile* named, std::int32_t frame, std::uint32_t key)
{
    auto* const stray = new VXLandmark(frame, named, key);
    holder.getLandmarkMap()[frame].push_back(stray);
    return stray;
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

// The offsets lie between -3,000,000 and 3,000,000, far more than are counted at a time.
TEST(Voting, OffsetsFarApartAreAllCounted)
{
    VXFileSet fileSet;
    const Marks marks = {{1, 0}, {1, 3000000}};
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{-3000000, 1}, {0, 2}, {3000000, 1}}}}),
              voteCountsOf(*histograms));
}

// 1,048,576 offsets are counted at a time. They begin at 0 - 1048577 here, so that -2 is the last
// of the first round, and -1 the only one of the second.
TEST(Voting, OffsetsOnBothSidesOfARoundAreCounted)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{1, 0}, {2, 1048575}});
    addFileWith(fileSet, 2, {{1, 1048576}, {2, 1048576}, {2, 1048577}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{-1048576, 1}, {-2, 1}, {-1, 1}}}}), voteCountsOf(*histograms));
}

TEST(Voting, WideFilesThatShareNoKeyHaveNoPair)
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

// 131,072 landmarks in each of two counted files, a hundred in a frame.
TEST(Voting, QuarterOfAMillionLandmarksVote)
{
    constexpr std::uint32_t count = 131072;
    VXFileSet fileSet;
    Marks marks;
    for (std::uint32_t key = 0; key < count; ++key)
        marks.push_back({key, static_cast<std::int32_t>(key / 100)});
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);
    fileSet.computeAllCLFs();

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{0, count}}}}), voteCountsOf(*histograms));
}

TEST(Voting, VotesTooManyFor32BitsAreCountedAlike)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{1, 10}, {2, 11}});
    addFileWith(fileSet, 2, {{1, 4}, {2, 5}, {2, 6}});

    const auto histograms = widelyCounted(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{5, 1}, {6, 2}}}}), voteCountsOf(*histograms));
}

TEST(Voting, VotesTooManyFor32BitsAreCountedAlikeWhereOffsetsLieFarApart)
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
TEST(Voting, EndsOfVotersOf64BitsAreThoseOfAllKeysHoweverMany)
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

TEST(Voting, OffsetsFarApartOfVotersOf64BitsAreAllCounted)
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

TEST(Voting, KeyOf251LandmarksOfVotersOf64BitsCastsNoVote)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, Marks(250, {7, 20}));
    addFileWith(fileSet, 2, {{7, 20}});
    addDistantPair(fileSet);

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{3, 4}, {{0, 1}}}}), voteCountsOf(*histograms));
}

TEST(Voting, SetsThatAreAddedOneAfterTheOtherVoteTogether)
{
    VXFileSet firstSet;
    addFileWith(firstSet, 1, {{1, 10}});
    VXFileSet secondSet;
    addFileWith(secondSet, 2, {{1, 4}});
    VXFileSetProcessor processor(cap);
    processor.addLandmarks(&firstSet, nullptr);
    processor.addLandmarks(&secondSet, nullptr);

    const VXHistogramSetHolder histograms(processor.convert2Histograms(nullptr));

    EXPECT_EQ((PairVotes{{{1, 2}, {{6, 1}}}}), voteCountsOf(*histograms));
}

TEST(Voting, FewLandmarksAreKeptInOneDealOfSingleBlocks)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, marksUpTo(600));
    fileSet.computeAllCLFs();
    VXFileSetProcessor processor(cap);

    processor.addLandmarks(&fileSet, nullptr);

    ASSERT_EQ(1u, processor.landmarkIndex.size());
    EXPECT_EQ(1u, processor.blockStore.blocksAtATime);
    EXPECT_EQ(2u, processor.landmarkIndex[0].blocks.size());
}

TEST(Voting, RunLeavesNothingDealt)
{
    VXFileSet fileSet;
    const Marks marks = marksUpTo(9000);
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);
    fileSet.computeAllCLFs();
    VXFileSetProcessor processor(cap);

    const VXHistogramSetHolder histograms(processor.run(&fileSet, nullptr));

    EXPECT_EQ(0u, processor.dealBits);
    EXPECT_EQ(1u, processor.landmarkIndex.size());
    EXPECT_TRUE(processor.places.empty());
    EXPECT_TRUE(processor.owners.empty());
}

TEST(Voting, HistogramsKeepNoMoreMemoryThanTheyFill)
{
    VXFileSet fileSet;
    const Marks marks = {{1, 0}, {1, 700}, {1, 5000}};
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);

    const auto histograms = histogramsOf(fileSet);

    const VXHistogram& histogram = *histograms->at(Pair(1, 2));
    EXPECT_EQ(histogram.packed.size(), histogram.packed.capacity());
}

// A vote that stands beyond all ends found so far is found however late its key comes.
TEST(Voting, EndsAreThoseOfAllKeysHoweverMany)
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
TEST(Voting, EndsOfPairsThatShareOneKeyAreFoundAmongManyKeys)
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

TEST(Voting, EndsAreFoundAmongManyKeysBesideAFileThatSharesNone)
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
TEST(Voting, ConversionOfManyVotesReportsEachPercentOnce)
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

// File 1's second vote stands in the list of file 2, among landmarks that are not it: one of file
// 2, one without a file, one of another key, and none at all.
TEST(Voting, EndThatStandsInAnotherFileIsFoundThere)
{
    VXFileSet fileSet;
    VXFile* const first = addFileWith(fileSet, 1, {{1, 10}});
    VXFile* const second = addFileWith(fileSet, 2, {{1, 5}, {2, 15}});
    VXLandmark* const stray = addStray(*second, first, 20, 2);
    addStray(*second, second, 20, 2);
    addStray(*second, nullptr, 20, 2);
    addStray(*second, first, 20, 3);
    second->getLandmarkMap()[20].push_back(nullptr);

    const auto histograms = histogramsOf(fileSet);

    const VXHistogram& histogram = *histograms->at(Pair(1, 2));
    EXPECT_EQ(landmarkAt(*first, 10), leastVoteIn(histogram, 5));
    EXPECT_EQ(stray, greatestVoteIn(histogram, 5));
}

// File 2 holds a stray of file 1, so it is looked through first, and has something else in the
// frame that is wanted.
TEST(Voting, EndIsFoundBehindAFileThatHoldsItsFrameButNotItself)
{
    VXFileSet fileSet;
    VXFile* const first = addFileWith(fileSet, 1, {{1, 10}, {1, 30}});
    VXFile* const second = addFileWith(fileSet, 2, {{1, 10}, {4, 30}});
    addStray(*second, first, 50, 9);

    const auto histograms = histogramsOf(fileSet);

    const VXHistogram& histogram = *histograms->at(Pair(1, 2));
    EXPECT_EQ(landmarkAt(*first, 30), leastVoteIn(histogram, 20));
}

TEST(Voting, LandmarksOfOneFileOnBothSidesOfAStrayAreOneFiles)
{
    VXFileSet fileSet;
    VXFile* const first = addFileWith(fileSet, 1, {{1, 10}});
    VXFile* const second = addFileWith(fileSet, 2, {{1, 4}, {2, 4}});
    addStray(*first, second, 10, 3);
    addStray(*first, first, 10, 2);

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{6, 2}}}}), voteCountsOf(*histograms));
}

TEST(Voting, LandmarkThatTheHostTakesOutBeforeTheVotesVotesButIsNoEnd)
{
    VXFileSet fileSet;
    VXFile* const first = addFileWith(fileSet, 1, {{1, 10}});
    addFileWith(fileSet, 2, {{1, 4}});
    VXFileSetProcessor processor(cap);
    processor.addLandmarks(&fileSet, nullptr);
    delete landmarkAt(*first, 10);
    first->getLandmarkMap().clear();

    const VXHistogramSetHolder histograms(processor.convert2Histograms(nullptr));

    EXPECT_EQ((PairVotes{{{1, 2}, {{6, 1}}}}), voteCountsOf(*histograms));
    EXPECT_EQ(nullptr, leastVoteIn(*histograms->at(Pair(1, 2)), 6));
    EXPECT_EQ(nullptr, greatestVoteIn(*histograms->at(Pair(1, 2)), 6));
}

TEST(Voting, KeyOfLandmarksWithoutAFileAloneCastsNoVote)
{
    VXFileSet fileSet;
    VXFile* const first = addFileWith(fileSet, 1, {{1, 10}});
    addFileWith(fileSet, 2, {{1, 4}});
    addStray(*first, nullptr, 11, 7);
    addStray(*first, nullptr, 12, 7);

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{6, 1}}}}), voteCountsOf(*histograms));
}

// Two keys that stand first and second of all in the order of the index, filed the other way round.
TEST(Voting, KeysThatAreFiledOutOfTheirOrderVote)
{
    const std::uint32_t foremost = VXFileSetProcessor::keyOfSpread(1);
    const std::uint32_t next = VXFileSetProcessor::keyOfSpread(2);
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{next, 10}, {foremost, 20}});
    addFileWith(fileSet, 2, {{next, 7}, {foremost, 16}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{3, 1}, {4, 1}}}}), voteCountsOf(*histograms));
}

} // namespace VXS
