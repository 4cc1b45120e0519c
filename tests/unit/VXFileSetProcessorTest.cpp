#include "VXFileSetProcessor.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <ostream>
#include <set>
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

using support::addFileWith;
using support::fractionEvent;
using support::greatestVoteIn;
using support::hasBin;
using support::KeyAtFrame;
using support::landmarkAt;
using support::leastVoteIn;
using support::ProgressEvent;
using support::RecordingProgress;
using support::VoteCounts;
using support::voteCountsOf;
using support::votesIn;

using Pair = std::pair<std::int64_t, std::int64_t>;
using PairVotes = std::map<Pair, VoteCounts>;
using Events = std::vector<ProgressEvent>;

constexpr std::uint32_t defaultCap = 250;

VXHistogramSetHolder histogramsOf(VXFileSet& fileSet, std::uint32_t cap = defaultCap,
                                  RecordingProgress* progress = nullptr)
{
    VXFileSetProcessor processor(cap);
    return VXHistogramSetHolder(processor.run(&fileSet, progress));
}

// The fractions that the conversion of an index reports.
Events conversionEventsOf(VXFileSet& fileSet, std::uint32_t cap = defaultCap)
{
    VXFileSetProcessor processor(cap);
    processor.addLandmarks(&fileSet, nullptr);
    RecordingProgress progress;
    const VXHistogramSetHolder histograms(processor.convert2Histograms(&progress));
    return progress.events;
}

// A landmark as the index files it.
struct Filed {
    std::int64_t fileID;
    std::int32_t offset;
};

bool operator==(const Filed& left, const Filed& right)
{
    return left.fileID == right.fileID && left.offset == right.offset;
}

std::ostream& operator<<(std::ostream& stream, const Filed& filed)
{
    return stream << "file " << filed.fileID << " frame " << filed.offset;
}

// The landmarks of the index by key, each list in the order in which it was filed.
std::map<std::uint32_t, std::vector<Filed>> indexOf(const VXFileSetProcessor& processor)
{
    std::map<std::uint32_t, std::vector<Filed>> index;
    const VXKeyIndex& filed = processor.landmarkIndex;
    for (const auto& partition : filed.partitions) {
        for (const auto* block : partition.blocks) {
            for (const auto* posting = block; posting != block + partition.blockSize; ++posting) {
                if (posting == partition.next) break;
                const auto& position = filed.positions[posting->position];
                index[VXKeyIndex::keyOf(posting->mixedKey)].push_back(
                    {filed.fileID(position.file), position.offset});
            }
        }
    }
    return index;
}

std::set<std::uint32_t> keysOf(const VXFileSetProcessor& processor)
{
    std::set<std::uint32_t> keys;
    for (const auto& entry : indexOf(processor))
        keys.insert(entry.first);
    return keys;
}

std::vector<KeyAtFrame> marksOfOneKey(std::uint32_t key, std::int32_t count)
{
    std::vector<KeyAtFrame> marks;
    for (std::int32_t frame = 0; frame < count; ++frame)
        marks.push_back({key, frame});
    return marks;
}

// Two files that share the keys 1 to `count`, each at one frame.
void addTwoFilesSharing(VXFileSet& fileSet, std::uint32_t count)
{
    std::vector<KeyAtFrame> marks;
    for (std::uint32_t key = 1; key <= count; ++key)
        marks.push_back({key, 10});
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);
}

TEST(VXFileSetProcessor, NewProcessorHoldsItsCapAndAnEmptyIndex)
{
    const VXFileSetProcessor processor(17);

    EXPECT_EQ(processor.maxLandmarkCount, 17u);
    EXPECT_TRUE(indexOf(processor).empty());
}

TEST(VXFileSetProcessor, LandmarksOfAFileAreFiledUnderTheirKeys)
{
    VXFileSet fileSet;
    VXFile* file = addFileWith(fileSet, 1, {{7, 10}, {9, 10}, {7, 12}});
    VXFileSetProcessor processor(defaultCap);

    processor.addLandmarks(file);

    EXPECT_EQ(keysOf(processor), (std::set<std::uint32_t>{7, 9}));
    EXPECT_EQ(indexOf(processor).at(7), (std::vector<Filed>{{1, 10}, {1, 12}}));
    EXPECT_EQ(indexOf(processor).at(9), (std::vector<Filed>{{1, 10}}));
}

TEST(VXFileSetProcessor, KeysListStandsByFileThenFrameThenPlaceInTheFrame)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 3, {{7, 1}});
    addFileWith(fileSet, 1, {{7, 20}, {7, 5}, {7, 20}});
    VXFileSetProcessor processor(defaultCap);

    processor.addLandmarks(&fileSet, nullptr);

    EXPECT_EQ(indexOf(processor).at(7), (std::vector<Filed>{{1, 5}, {1, 20}, {1, 20}, {3, 1}}));
}

TEST(VXFileSetProcessor, EqualLandmarksStaySeparateEntries)
{
    VXFileSet fileSet;
    VXFile* file = addFileWith(fileSet, 1, {{7, 10}, {7, 10}, {7, 10}});
    VXFileSetProcessor processor(defaultCap);

    processor.addLandmarks(file);

    EXPECT_EQ(indexOf(processor).at(7).size(), 3u);
}

TEST(VXFileSetProcessor, EmptyFramesOfACountedFileAddNothing)
{
    VXFileSet fileSet;
    VXFile* file = addFileWith(fileSet, 1, {{7, 10}, {9, 50}});
    file->computeCLF();
    VXFileSetProcessor processor(defaultCap);

    processor.addLandmarks(file);

    EXPECT_EQ(indexOf(processor).size(), 2u);
    EXPECT_EQ(indexOf(processor).at(7).size(), 1u);
    EXPECT_EQ(indexOf(processor).at(9).size(), 1u);
}

TEST(VXFileSetProcessor, AddingLandmarksCapsNothing)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, marksOfOneKey(7, 5));
    VXFileSetProcessor processor(2);

    processor.addLandmarks(&fileSet, nullptr);

    EXPECT_EQ(indexOf(processor).at(7).size(), 5u);
}

TEST(VXFileSetProcessor, AddingLandmarksReportsTheShareOfFilesDone)
{
    VXFileSet fileSet;
    support::addEmptyFiles(fileSet, {1, 2, 3});
    VXFileSetProcessor processor(defaultCap);
    RecordingProgress progress;

    processor.addLandmarks(&fileSet, &progress);

    EXPECT_EQ(progress.events, (Events{fractionEvent(0.0f), fractionEvent(1.0f / 3.0f),
                                       fractionEvent(2.0f / 3.0f), fractionEvent(1.0f)}));
}

TEST(VXFileSetProcessor, ShareIsReportedAfterTheFileIsFiled)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 1}});
    addFileWith(fileSet, 2, {{9, 1}});
    VXFileSetProcessor processor(defaultCap);
    RecordingProgress progress;
    std::vector<std::size_t> keysAtEvent;
    progress.onEvent = [&](const ProgressEvent&) {
        keysAtEvent.push_back(indexOf(processor).size());
    };

    processor.addLandmarks(&fileSet, &progress);

    EXPECT_EQ(keysAtEvent, (std::vector<std::size_t>{0, 1, 2}));
}

TEST(VXFileSetProcessor, AddingANullSetReportsNothing)
{
    VXFileSetProcessor processor(defaultCap);
    RecordingProgress progress;

    processor.addLandmarks(static_cast<VXFileSet*>(nullptr), &progress);

    EXPECT_TRUE(progress.events.empty());
    EXPECT_TRUE(indexOf(processor).empty());
}

TEST(VXFileSetProcessor, AddingAnEmptySetReportsZeroAlone)
{
    VXFileSet fileSet;
    VXFileSetProcessor processor(defaultCap);
    RecordingProgress progress;

    processor.addLandmarks(&fileSet, &progress);

    EXPECT_EQ(progress.events, (Events{fractionEvent(0.0f)}));
}

TEST(VXFileSetProcessor, FileWithoutLandmarksCountsInTheShare)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {});
    addFileWith(fileSet, 2, {{7, 1}});
    VXFileSetProcessor processor(defaultCap);
    RecordingProgress progress;

    processor.addLandmarks(&fileSet, &progress);

    EXPECT_EQ(progress.events,
              (Events{fractionEvent(0.0f), fractionEvent(0.5f), fractionEvent(1.0f)}));
    EXPECT_EQ(keysOf(processor), (std::set<std::uint32_t>{7}));
}

TEST(VXFileSetProcessor, NullFileIsPassedOverAndCountsInTheShare)
{
    VXFileSet fileSet;
    fileSet.getFiles()[1] = nullptr;
    addFileWith(fileSet, 2, {{7, 1}});
    VXFileSetProcessor processor(defaultCap);
    RecordingProgress progress;

    processor.addLandmarks(&fileSet, &progress);

    EXPECT_EQ(progress.events,
              (Events{fractionEvent(0.0f), fractionEvent(0.5f), fractionEvent(1.0f)}));
    EXPECT_EQ(keysOf(processor), (std::set<std::uint32_t>{7}));
}

TEST(VXFileSetProcessor, PurgeErasesAKeyHeldByOneLandmark)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 1}, {8, 1}});
    addFileWith(fileSet, 2, {{8, 1}, {9, 1}});
    VXFileSetProcessor processor(defaultCap);
    processor.addLandmarks(&fileSet, nullptr);

    processor.purgeSingletons();

    EXPECT_EQ(keysOf(processor), (std::set<std::uint32_t>{8}));
}

TEST(VXFileSetProcessor, PurgeLeavesAKeyHeldTwiceByOneFile)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 1}, {7, 5}});
    VXFileSetProcessor processor(defaultCap);
    processor.addLandmarks(&fileSet, nullptr);

    processor.purgeSingletons();

    EXPECT_EQ(keysOf(processor), (std::set<std::uint32_t>{7}));
}

TEST(VXFileSetProcessor, PurgeOfAnEmptyIndexDoesNothing)
{
    VXFileSetProcessor processor(defaultCap);

    processor.purgeSingletons();

    EXPECT_TRUE(indexOf(processor).empty());
}

TEST(VXFileSetProcessor, ErasingAKeyLeavesItsLandmarksAlone)
{
    VXFileSet fileSet;
    VXFile* file = addFileWith(fileSet, 1, {{7, 4}});
    VXFileSetProcessor processor(defaultCap);
    processor.addLandmarks(&fileSet, nullptr);

    processor.purgeSingletons();

    EXPECT_EQ(landmarkAt(*file, 4)->getOffset(), 4);
}

TEST(VXFileSetProcessor, OffsetIsThePositionInTheLowerFileMinusThatInTheHigher)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 3, {{7, 100}});
    addFileWith(fileSet, 7, {{7, 130}});

    const auto histograms = histogramsOf(fileSet);

    // 100 - 130
    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{3, 7}, {{-30, 1}}}}));
}

TEST(VXFileSetProcessor, VoteIsTheLandmarkOfTheLowerFile)
{
    VXFileSet fileSet;
    VXFile* lower = addFileWith(fileSet, 3, {{7, 100}});
    addFileWith(fileSet, 7, {{7, 130}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ(leastVoteIn(*histograms->at({3, 7}), -30), landmarkAt(*lower, 100));
    EXPECT_EQ(greatestVoteIn(*histograms->at({3, 7}), -30), landmarkAt(*lower, 100));
}

TEST(VXFileSetProcessor, ThreeFilesSharingAKeyVoteInThreePairs)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 10}});
    addFileWith(fileSet, 2, {{7, 20}});
    addFileWith(fileSet, 3, {{7, 40}});

    const auto histograms = histogramsOf(fileSet);

    // 10 - 20, 10 - 40 and 20 - 40
    EXPECT_EQ(voteCountsOf(*histograms),
              (PairVotes{{{1, 2}, {{-10, 1}}}, {{1, 3}, {{-30, 1}}}, {{2, 3}, {{-20, 1}}}}));
}

TEST(VXFileSetProcessor, AllPairsVoteAndNotOnlyNeighbours)
{
    VXFileSet fileSet;
    for (const std::int64_t fileID : {1, 2, 3, 4})
        addFileWith(fileSet, fileID, {{7, 10}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ(histograms->size(), 6u);
    EXPECT_EQ(votesIn(*histograms->at({1, 4}), 0), 1u);
}

TEST(VXFileSetProcessor, KeyHeldTwiceAndThreeTimesGivesSixVotes)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 10}, {7, 20}});
    addFileWith(fileSet, 2, {{7, 1}, {7, 2}, {7, 3}});

    const auto histograms = histogramsOf(fileSet);

    // 10 - 1, 10 - 2, 10 - 3, 20 - 1, 20 - 2, 20 - 3
    EXPECT_EQ(voteCountsOf(*histograms),
              (PairVotes{{{1, 2}, {{9, 1}, {8, 1}, {7, 1}, {19, 1}, {18, 1}, {17, 1}}}}));
}

TEST(VXFileSetProcessor, OneLandmarkMayVoteSeveralTimesInOneBin)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 10}});
    addFileWith(fileSet, 2, {{7, 4}, {7, 4}, {7, 4}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{1, 2}, {{6, 3}}}}));
}

TEST(VXFileSetProcessor, KeysOfOneOffsetShareABin)
{
    VXFileSet fileSet;
    VXFile* lower = addFileWith(fileSet, 1, {{7, 30}, {8, 10}, {9, 20}});
    addFileWith(fileSet, 2, {{7, 25}, {8, 5}, {9, 15}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{1, 2}, {{5, 3}}}}));
    EXPECT_EQ(leastVoteIn(*histograms->at({1, 2}), 5), landmarkAt(*lower, 10));
    EXPECT_EQ(greatestVoteIn(*histograms->at({1, 2}), 5), landmarkAt(*lower, 30));
}

TEST(VXFileSetProcessor, KeysVoteInAscendingOrder)
{
    VXFileSet fileSet;
    VXFile* lower = addFileWith(fileSet, 1, {{9, 10}, {7, 10}, {8, 10}});
    addFileWith(fileSet, 2, {{8, 4}, {9, 4}, {7, 4}});

    const auto histograms = histogramsOf(fileSet);

    // All three stand at frame 10: the last vote is that of the greatest key.
    EXPECT_EQ(leastVoteIn(*histograms->at({1, 2}), 6), landmarkAt(*lower, 10, 0));
    EXPECT_EQ(landmarkAt(*lower, 10, 0)->key, 9u);
}

TEST(VXFileSetProcessor, LandmarksOfOneKeyAndFrameVoteInTheirOrder)
{
    VXFileSet fileSet;
    VXFile* lower = addFileWith(fileSet, 1, {{7, 10}, {7, 10}});
    addFileWith(fileSet, 2, {{7, 4}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ(greatestVoteIn(*histograms->at({1, 2}), 6), landmarkAt(*lower, 10, 1));
}

TEST(VXFileSetProcessor, NeighbouringOffsetsAreNotMerged)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 10}, {8, 20}});
    addFileWith(fileSet, 2, {{7, 5}, {8, 16}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_TRUE(hasBin(*histograms->at({1, 2}), 5));
    EXPECT_TRUE(hasBin(*histograms->at({1, 2}), 4));
    EXPECT_EQ(histograms->at({1, 2})->size(), 2u);
}

TEST(VXFileSetProcessor, OffsetOfTheExtremesNeeds64Bits)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, INT32_MAX}});
    addFileWith(fileSet, 2, {{7, INT32_MIN}});

    const auto histograms = histogramsOf(fileSet);

    // 2147483647 + 2147483648
    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{1, 2}, {{INT64_C(4294967295), 1}}}}));
}

TEST(VXFileSetProcessor, PairsAreWrittenLowerIdFirstForAny64BitId)
{
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    VXFileSet fileSet;
    addFileWith(fileSet, highest, {{7, 1}});
    addFileWith(fileSet, -1, {{7, 10}});
    addFileWith(fileSet, lowest, {{7, 100}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{lowest, -1}, {{90, 1}}},
                                                    {{lowest, highest}, {{99, 1}}},
                                                    {{-1, highest}, {{9, 1}}}}));
}

TEST(VXFileSetProcessor, KeyHeldByOneFileAloneCastsNoVote)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 10}, {7, 20}});
    addFileWith(fileSet, 2, {{8, 10}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_TRUE(histograms->empty());
}

TEST(VXFileSetProcessor, PairWithoutACommonKeyHasNoEntry)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 10}});
    addFileWith(fileSet, 2, {{7, 10}, {8, 10}});
    addFileWith(fileSet, 3, {{8, 10}});

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{1, 2}, {{0, 1}}}, {{2, 3}, {{0, 1}}}}));
}

TEST(VXFileSetProcessor, LandmarkWithoutAFileVotesForNobody)
{
    VXFileSet fileSet;
    VXFile* first = addFileWith(fileSet, 1, {{7, 10}, {7, 12}});
    addFileWith(fileSet, 2, {{7, 4}});
    landmarkAt(*first, 12)->file = nullptr;

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{1, 2}, {{6, 1}}}}));
}

TEST(VXFileSetProcessor, LandmarkWithoutAFileIsNoSecondFile)
{
    VXFileSet fileSet;
    VXFile* first = addFileWith(fileSet, 1, {{7, 10}, {7, 12}});
    landmarkAt(*first, 12)->file = nullptr;

    const auto histograms = histogramsOf(fileSet);

    EXPECT_TRUE(histograms->empty());
}

TEST(VXFileSetProcessor, NullAmongTheLandmarksIsPassedOver)
{
    VXFileSet fileSet;
    VXFile* first = addFileWith(fileSet, 1, {{7, 10}});
    addFileWith(fileSet, 2, {{7, 4}});
    auto& frame = first->getLandmarkMap().at(10);
    frame.insert(frame.begin(), nullptr);
    frame.push_back(nullptr);

    const auto histograms = histogramsOf(fileSet);

    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{1, 2}, {{6, 1}}}}));
}

// A voter is coded in 32 bits where its file and frame fit, and these frames need all 32.
TEST(VXFileSetProcessor, FramesAtBothEndsOfTheirRangeLeaveTheVotesAsTheyAre)
{
    constexpr std::int32_t last = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t first = std::numeric_limits<std::int32_t>::min();
    VXFileSet fileSet;
    VXFile* lower = addFileWith(fileSet, 1, {{7, 10}, {8, last}, {9, 12}, {9, 15}});
    addFileWith(fileSet, 2, {{6, first}, {7, 4}, {9, 6}, {9, 9}});

    const auto histograms = histogramsOf(fileSet);

    // 10 - 4, 12 - 6 and 15 - 9 are 6, 12 - 9 is 3 and 15 - 6 is 9.
    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{1, 2}, {{3, 1}, {6, 3}, {9, 1}}}}));
    const auto ends = histograms->at({1, 2})->endsOf(6);
    EXPECT_EQ(ends.least, landmarkAt(*lower, 10));
    EXPECT_EQ(ends.greatest, landmarkAt(*lower, 15));
}

TEST(VXFileSetProcessor, KeyOf250LandmarksOverAllFilesVotes)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, marksOfOneKey(7, 125));
    addFileWith(fileSet, 2, marksOfOneKey(7, 125));

    const auto histograms = histogramsOf(fileSet);

    // At offset 0 every one of the 125 frames agrees with itself; offset 124 is 124 - 0 alone.
    ASSERT_EQ(histograms->size(), 1u);
    EXPECT_EQ(votesIn(*histograms->at({1, 2}), 0), 125u);
    EXPECT_EQ(votesIn(*histograms->at({1, 2}), 124), 1u);
}

TEST(VXFileSetProcessor, KeyOf251LandmarksOverAllFilesCastsNoVote)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, marksOfOneKey(7, 126));
    addFileWith(fileSet, 2, marksOfOneKey(7, 125));

    const auto histograms = histogramsOf(fileSet);

    EXPECT_TRUE(histograms->empty());
}

TEST(VXFileSetProcessor, CappedKeyLeavesOtherKeysTheirVotes)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 10}, {8, 10}, {8, 11}});
    addFileWith(fileSet, 2, {{7, 4}, {8, 10}});

    const auto histograms = histogramsOf(fileSet, 2);

    // Key 8 stands at three landmarks, one too many.
    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{1, 2}, {{6, 1}}}}));
}

TEST(VXFileSetProcessor, CapOfZeroLeavesNoVote)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 3);

    EXPECT_TRUE(histogramsOf(fileSet, 0)->empty());
}

TEST(VXFileSetProcessor, CapOfOneLeavesNoVote)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 3);

    EXPECT_TRUE(histogramsOf(fileSet, 1)->empty());
}

TEST(VXFileSetProcessor, CapOfTwoLetsAPairVote)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 3);

    EXPECT_EQ(voteCountsOf(*histogramsOf(fileSet, 2)), (PairVotes{{{1, 2}, {{0, 3}}}}));
}

TEST(VXFileSetProcessor, ConversionTakesEveryKeyOutOfTheIndex)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 4);
    addFileWith(fileSet, 3, {{100, 1}, {100, 2}});
    VXFileSetProcessor processor(defaultCap);
    processor.addLandmarks(&fileSet, nullptr);

    const VXHistogramSetHolder histograms(processor.convert2Histograms(nullptr));

    EXPECT_EQ(keysOf(processor), (std::set<std::uint32_t>{}));
    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{1, 2}, {{0, 4}}}}));
}

TEST(VXFileSetProcessor, ConversionOfThreeKeysReportsThirdsInWholePercent)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 3);

    // 100 / 3 = 33.3, 200 / 3 = 66.7 and 300 / 3 = 100, cut to whole percent.
    EXPECT_EQ(conversionEventsOf(fileSet),
              (Events{fractionEvent(0.0f), fractionEvent(33.0f / 100.0f),
                      fractionEvent(66.0f / 100.0f), fractionEvent(1.0f)}));
}

TEST(VXFileSetProcessor, ConversionReportsKeysThatTheCapDrops)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 3);

    EXPECT_EQ(conversionEventsOf(fileSet, 1),
              (Events{fractionEvent(0.0f), fractionEvent(33.0f / 100.0f),
                      fractionEvent(66.0f / 100.0f), fractionEvent(1.0f)}));
}

TEST(VXFileSetProcessor, ConversionReportsKeysOfOneFileAlone)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 1}, {7, 2}, {8, 1}, {8, 2}});

    EXPECT_EQ(conversionEventsOf(fileSet),
              (Events{fractionEvent(0.0f), fractionEvent(0.5f), fractionEvent(1.0f)}));
}

TEST(VXFileSetProcessor, ConversionCountsTheKeysThatAreLeftAfterThePurge)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{5, 1}, {6, 1}, {7, 1}, {8, 1}});
    addFileWith(fileSet, 2, {{7, 1}, {8, 1}, {9, 1}});

    EXPECT_EQ(conversionEventsOf(fileSet),
              (Events{fractionEvent(0.0f), fractionEvent(0.5f), fractionEvent(1.0f)}));
}

TEST(VXFileSetProcessor, ConversionOfOneKeyReportsZeroAndOne)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 1);

    EXPECT_EQ(conversionEventsOf(fileSet), (Events{fractionEvent(0.0f), fractionEvent(1.0f)}));
}

TEST(VXFileSetProcessor, ConversionOfSevenKeysCutsEachShareToWholePercent)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 7);

    // 14.3, 28.6, 42.9, 57.1, 71.4, 85.7 and 100 percent
    EXPECT_EQ(conversionEventsOf(fileSet),
              (Events{fractionEvent(0.0f), fractionEvent(14.0f / 100.0f),
                      fractionEvent(28.0f / 100.0f), fractionEvent(42.0f / 100.0f),
                      fractionEvent(57.0f / 100.0f), fractionEvent(71.0f / 100.0f),
                      fractionEvent(85.0f / 100.0f), fractionEvent(1.0f)}));
}

TEST(VXFileSetProcessor, ConversionOfManyKeysReportsEachPercentOnceAndNoneForZero)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 350);
    // Of 350 keys each percent is 3.5 keys wide, so that none is left out.
    Events expected{fractionEvent(0.0f)};
    for (int percentage = 1; percentage <= 100; ++percentage)
        expected.push_back(fractionEvent(static_cast<float>(percentage) / 100.0f));

    EXPECT_EQ(conversionEventsOf(fileSet), expected);
}

TEST(VXFileSetProcessor, ConversionWithAllKeysPurgedReportsZeroAlone)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, {{7, 1}});
    addFileWith(fileSet, 2, {{8, 1}});

    EXPECT_EQ(conversionEventsOf(fileSet), (Events{fractionEvent(0.0f)}));
}

TEST(VXFileSetProcessor, ConversionOfAnEmptyIndexGivesAnEmptySet)
{
    VXFileSetProcessor processor(defaultCap);

    const VXHistogramSetHolder histograms(processor.convert2Histograms(nullptr));

    ASSERT_NE(histograms, nullptr);
    EXPECT_TRUE(histograms->empty());
}

TEST(VXFileSetProcessor, RunOnANullSetGivesAnEmptySetAndReportsZeroOnce)
{
    VXFileSetProcessor processor(defaultCap);
    RecordingProgress progress;

    const VXHistogramSetHolder histograms(processor.run(nullptr, &progress));

    ASSERT_NE(histograms, nullptr);
    EXPECT_TRUE(histograms->empty());
    EXPECT_EQ(progress.events, (Events{fractionEvent(0.0f)}));
}

TEST(VXFileSetProcessor, RunOnAnEmptySetGivesAnEmptySetAndReportsZeroTwice)
{
    VXFileSet fileSet;
    RecordingProgress progress;

    const auto histograms = histogramsOf(fileSet, defaultCap, &progress);

    ASSERT_NE(histograms, nullptr);
    EXPECT_TRUE(histograms->empty());
    EXPECT_EQ(progress.events, (Events{fractionEvent(0.0f), fractionEvent(0.0f)}));
}

TEST(VXFileSetProcessor, RunReportsTwoRampsOneAfterTheOther)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 4);
    RecordingProgress progress;

    const auto histograms = histogramsOf(fileSet, defaultCap, &progress);

    EXPECT_EQ(progress.events,
              (Events{fractionEvent(0.0f), fractionEvent(0.5f), fractionEvent(1.0f),
                      fractionEvent(0.0f), fractionEvent(0.25f), fractionEvent(0.5f),
                      fractionEvent(0.75f), fractionEvent(1.0f)}));
}

TEST(VXFileSetProcessor, RunGivesTheSameWithAndWithoutProgress)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 4);
    RecordingProgress progress;

    const auto reported = histogramsOf(fileSet, defaultCap, &progress);
    const auto silent = histogramsOf(fileSet);

    EXPECT_EQ(voteCountsOf(*reported), voteCountsOf(*silent));
    EXPECT_EQ(voteCountsOf(*silent), (PairVotes{{{1, 2}, {{0, 4}}}}));
}

TEST(VXFileSetProcessor, RunLeavesTheIndexEmpty)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 4);
    VXFileSetProcessor processor(defaultCap);

    const VXHistogramSetHolder histograms(processor.run(&fileSet, nullptr));

    EXPECT_TRUE(indexOf(processor).empty());
}

TEST(VXFileSetProcessor, RunStartsFromAnEmptyIndex)
{
    VXFileSet other;
    addTwoFilesSharing(other, 4);
    VXFileSet fileSet;
    addFileWith(fileSet, 5, {{1, 10}});
    VXFileSetProcessor processor(defaultCap);
    processor.addLandmarks(&other, nullptr);

    const VXHistogramSetHolder histograms(processor.run(&fileSet, nullptr));

    EXPECT_TRUE(histograms->empty());
}

TEST(VXFileSetProcessor, RunTwiceGivesTheSameTwice)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 4);
    VXFileSetProcessor processor(defaultCap);

    const VXHistogramSetHolder first(processor.run(&fileSet, nullptr));
    const VXHistogramSetHolder second(processor.run(&fileSet, nullptr));

    EXPECT_NE(first, second);
    EXPECT_EQ(voteCountsOf(*first), (PairVotes{{{1, 2}, {{0, 4}}}}));
    EXPECT_EQ(voteCountsOf(*second), voteCountsOf(*first));
}

TEST(VXFileSetProcessor, ExceptionOfTheProgressLeavesTheProcessorUsable)
{
    VXFileSet fileSet;
    addTwoFilesSharing(fileSet, 4);
    VXFileSetProcessor processor(defaultCap);
    RecordingProgress progress;
    progress.onEvent = [](const ProgressEvent& event) {
        if (event.fraction == 0.75f) throw 75;
    };

    EXPECT_THROW(processor.run(&fileSet, &progress), int);
    const VXHistogramSetHolder histograms(processor.run(&fileSet, nullptr));

    EXPECT_EQ(voteCountsOf(*histograms), (PairVotes{{{1, 2}, {{0, 4}}}}));
}

} // namespace
} // namespace VXS
