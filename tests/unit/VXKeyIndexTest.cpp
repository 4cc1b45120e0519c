#include "VXKeyIndex.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXFileSetProcessor.h"
#include "VXLandmark.h"

namespace VXS
{
namespace
{

using support::addFileWith;
using support::greatestVoteIn;
using support::KeyAtFrame;
using support::landmarkAt;
using support::leastVoteIn;
using support::VoteCounts;
using support::voteCountsOf;

using Pair = std::pair<std::int64_t, std::int64_t>;
using PairVotes = std::map<Pair, VoteCounts>;
using Marks = std::vector<KeyAtFrame>;

constexpr std::uint32_t cap = 250;

VXHistogramSetHolder histogramsOf(VXFileSet& fileSet)
{
    VXFileSetProcessor processor(cap);
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

// The codes of a list without the mark, as they stand.
std::vector<std::uint32_t> codesOf(const VXPostingLists<std::uint32_t>& lists)
{
    std::vector<std::uint32_t> codes;
    for (std::size_t i = 0; i < lists.size; ++i)
        codes.push_back(lists.postings[i] & ~VXPostingLists<std::uint32_t>::lastOfList);
    return codes;
}

} // namespace

TEST(VXKeyIndex, MixedKeyLeadsBackToItsKey)
{
    for (const std::uint32_t key : {0u, 1u, 0x3FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(key, VXKeyIndex::keyOf(VXKeyIndex::mix(key)));
}

TEST(VXKeyIndex, LayoutHoldsTheFilesAndTheFramesFromTheLeastOn)
{
    VXFileSet fileSet;
    VXKeyIndex index;
    index.add(addFileWith(fileSet, 7, {{1, -3}}));
    index.add(addFileWith(fileSet, 5, {{1, 4}}));
    index.add(addFileWith(fileSet, 6, {{1, 5}}));

    const VXPostingLayout layout = index.order();

    // The files 0 to 2 take two bits, the frames 0 to 8 four.
    EXPECT_EQ(-3, layout.leastOffset);
    EXPECT_EQ(2u, layout.fileBits);
    EXPECT_EQ(4u, layout.offsetBits);
    EXPECT_EQ(5, index.fileID(0));
    EXPECT_EQ(7, index.fileID(2));
}

TEST(VXKeyIndex, LayoutOfAnEmptyIndexTakesNoBits)
{
    const VXPostingLayout layout = VXKeyIndex().order();

    EXPECT_EQ(0u, layout.fileBits);
    EXPECT_EQ(0u, layout.offsetBits);
}

TEST(VXKeyIndex, ListHoldsTheCodesOfAKeyByFileAndFrame)
{
    VXFileSet fileSet;
    VXKeyIndex index;
    index.add(addFileWith(fileSet, 2, {{9, 5}, {8, 6}, {9, 7}}));
    index.add(addFileWith(fileSet, 1, {{9, 9}, {7, 0}, {7, 1}}));

    const auto lists = index.takeLists<std::uint32_t>(index.order(), cap);

    // Four bits for the frames from 0 to 9. Key 7 is that of one file, key 8 that of one landmark.
    EXPECT_EQ((std::vector<std::uint32_t>{9, 16 + 5, 16 + 7}), codesOf(lists));
    EXPECT_EQ(2u, lists.keys);
    EXPECT_EQ(2u, lists.votes());
    EXPECT_EQ((std::vector<std::uint32_t>{0}), lists.files[0].runs);
    EXPECT_TRUE(lists.files[1].runs.empty());
    EXPECT_EQ(9u, VXKeyIndex::keyOf(lists.mixedKeyOf(2)));
    EXPECT_FALSE(lists.postings[1] >> 31u);
    EXPECT_TRUE(lists.postings[2] >> 31u);
}

TEST(VXKeyIndex, ListOfWideCodesLeavesOutWhatHasNoFile)
{
    VXFileSet fileSet;
    VXKeyIndex index;
    VXFile* const first = addFileWith(fileSet, 1, {{9, 0}});
    addStray(*first, nullptr, 1, 9);
    index.add(first);
    index.add(addFileWith(fileSet, 2, {{9, 3}}));

    const auto lists = index.takeLists<std::uint64_t>(index.order(), cap);

    // Two bits for the frames from 0 to 3, and the mark on the last.
    ASSERT_EQ(2u, lists.size);
    EXPECT_EQ(0u, lists.postings[0]);
    EXPECT_EQ((std::uint64_t{1} << 63u) + 4 + 3, lists.postings[1]);
}

// Postings are numbered in 32 bits: one more would take the number of the first.
TEST(VXKeyIndex, MoreLandmarksThanItCanNumberThrowLengthError)
{
    VXFileSet fileSet;
    VXKeyIndex index;
    index.mostLandmarks = 3;
    index.add(addFileWith(fileSet, 1, {{1, 0}, {1, 1}, {1, 2}}));

    EXPECT_THROW(index.add(addFileWith(fileSet, 2, {{1, 0}})), std::length_error);
}

TEST(VXKeyIndex, MoreFilesThanItCanNumberThrowLengthError)
{
    VXFileSet fileSet;
    VXKeyIndex index;
    index.mostFiles = 2;
    index.add(addFileWith(fileSet, 1, {{1, 0}}));
    index.add(addFileWith(fileSet, 2, {{1, 0}, {1, 1}}));

    EXPECT_THROW(index.add(addFileWith(fileSet, 3, {{1, 0}})), std::length_error);
}

TEST(VXKeyIndex, NumbersAndCodesReachAsFarAsTheirBits)
{
    const VXKeyIndex index;

    // The number behind the last is that of no file, and of no partner left.
    EXPECT_EQ(4294967295u, index.mostLandmarks);
    // 31 bits for the file, 32 for the frame and one for the mark.
    EXPECT_EQ(std::uint64_t{1} << 31u, index.mostFiles);
}

TEST(VXKeyIndex, RunAfterALengthErrorStartsAnew)
{
    VXFileSet large;
    addFileWith(large, 1, {{1, 0}, {1, 1}});
    addFileWith(large, 2, {{1, 0}, {1, 1}});
    VXFileSet small;
    addFileWith(small, 3, {{2, 7}});
    addFileWith(small, 4, {{2, 4}});
    VXFileSetProcessor processor(cap);
    processor.landmarkIndex.mostLandmarks = 3;

    EXPECT_THROW(processor.run(&large, nullptr), std::length_error);
    const VXHistogramSetHolder histograms(processor.run(&small, nullptr));

    EXPECT_EQ((PairVotes{{{3, 4}, {{3, 1}}}}), voteCountsOf(*histograms));
}

TEST(VXKeyIndex, SetsThatAreAddedOneAfterTheOtherVoteTogether)
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

TEST(VXKeyIndex, FewLandmarksAreKeptInOnePartitionOfSingleBlocks)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, marksUpTo(600));
    fileSet.computeAllCLFs();
    VXFileSetProcessor processor(cap);

    processor.addLandmarks(&fileSet, nullptr);

    const VXKeyIndex& index = processor.landmarkIndex;
    ASSERT_EQ(1u, index.partitions.size());
    EXPECT_EQ(1u, index.blockStore.blocksAtATime);
    EXPECT_EQ(2u, index.partitions[0].blocks.size());
}

TEST(VXKeyIndex, RunLeavesNothingFiled)
{
    VXFileSet fileSet;
    const Marks marks = marksUpTo(9000);
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);
    fileSet.computeAllCLFs();
    VXFileSetProcessor processor(cap);

    const VXHistogramSetHolder histograms(processor.run(&fileSet, nullptr));

    const VXKeyIndex& index = processor.landmarkIndex;
    EXPECT_EQ(0u, index.partitionBits);
    EXPECT_EQ(1u, index.partitions.size());
    EXPECT_TRUE(index.positions.empty());
    EXPECT_TRUE(index.files.empty());
    EXPECT_TRUE(index.fileNumbers.empty());
    EXPECT_EQ(0u, index.landmarks);
}

// File 1's second vote stands in the list of file 2, among landmarks that are not it: one of file
// 2, one without a file, one of another key, and none at all.
TEST(VXKeyIndex, EndThatStandsInAnotherFileIsFoundThere)
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
TEST(VXKeyIndex, EndIsFoundBehindAFileThatHoldsItsFrameButNotItself)
{
    VXFileSet fileSet;
    VXFile* const first = addFileWith(fileSet, 1, {{1, 10}, {1, 30}});
    VXFile* const second = addFileWith(fileSet, 2, {{1, 10}, {4, 30}});
    addStray(*second, first, 50, 9);

    const auto histograms = histogramsOf(fileSet);

    const VXHistogram& histogram = *histograms->at(Pair(1, 2));
    EXPECT_EQ(landmarkAt(*first, 30), leastVoteIn(histogram, 20));
}

TEST(VXKeyIndex, LandmarksOfOneFileOnBothSidesOfAStrayAreOneFiles)
{
    VXFileSet fileSet;
    VXFile* const first = addFileWith(fileSet, 1, {{1, 10}});
    VXFile* const second = addFileWith(fileSet, 2, {{1, 4}, {2, 4}});
    addStray(*first, second, 10, 3);
    addStray(*first, first, 10, 2);

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{6, 2}}}}), voteCountsOf(*histograms));
}

TEST(VXKeyIndex, LandmarkThatTheHostTakesOutBeforeTheVotesVotesButIsNoEnd)
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

TEST(VXKeyIndex, KeyOfLandmarksWithoutAFileAloneCastsNoVote)
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
TEST(VXKeyIndex, KeysThatAreFiledOutOfTheirOrderVote)
{
    const std::uint32_t foremost = VXKeyIndex::keyOf(1);
    const std::uint32_t next = VXKeyIndex::keyOf(2);
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{next, 10}, {foremost, 20}});
    addFileWith(fileSet, 2, {{next, 7}, {foremost, 16}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ((PairVotes{{{1, 2}, {{3, 1}, {4, 1}}}}), voteCountsOf(*histograms));
}

// 131,072 landmarks in each of two counted files, a hundred in a frame.
TEST(VXKeyIndex, QuarterOfAMillionLandmarksVote)
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

} // namespace VXS
