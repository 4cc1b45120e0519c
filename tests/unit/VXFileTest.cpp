#include "VXFile.h"

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXLandmark.h"

namespace VXS
{
namespace
{

using support::countedFileWith;
using support::fileWith;
using support::landmarkAt;

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
constexpr std::int32_t lowestFrame = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highestFrame = std::numeric_limits<std::int32_t>::max();

std::vector<std::int64_t> framesOf(VXFile& file)
{
    std::vector<std::int64_t> frames;
    for (const auto& entry : file.getLandmarkMap())
        frames.push_back(entry.first);
    return frames;
}

using Counts = std::pmr::map<std::int64_t, std::int64_t>;

TEST(VXFile, NewFileHoldsItsIdAndNoLandmark)
{
    VXFile file(42);

    EXPECT_EQ(file.getFileID(), 42);
    EXPECT_TRUE(file.getLandmarkMap().empty());
    EXPECT_TRUE(file.clf.empty());
}

TEST(VXFile, IdKeepsAll64Bits)
{
    EXPECT_EQ(VXFile(lowest).getFileID(), lowest);
    EXPECT_EQ(VXFile(highest).getFileID(), highest);
}

TEST(VXFile, NewFileHasItsMinimumAboveItsMaximum)
{
    const VXFile file(1);

    EXPECT_EQ(file.getMinLandmarkOffsetTime(), INT64_C(9223372036854775807));
    EXPECT_EQ(file.getMaxLandmarkOffsetTime(), -INT64_C(9223372036854775807) - 1);
}

TEST(VXFile, NewFileIsDirtyThoughItIsEmpty)
{
    const VXFile file(1);

    EXPECT_TRUE(file.clfDirty);
}

TEST(VXFile, IsNotCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<VXFile>);
    EXPECT_FALSE(std::is_copy_assignable_v<VXFile>);
}

TEST(VXFile, QueryOnANewFileAnswersMinusOne)
{
    VXFile file(1);

    EXPECT_EQ(file.queryNumberLandmarksInBetween(0, 100), -1);
    EXPECT_EQ(file.queryNumberLandmarksInBetween(5, 2), -1);
}

TEST(VXFile, QueryBeforeComputeClfAnswersMinusOne)
{
    const auto file = fileWith({10, 10, 13});

    EXPECT_EQ(file->queryNumberLandmarksInBetween(10, 13), -1);
}

TEST(VXFile, EmptyFileAnswersZeroOnceItIsClean)
{
    VXFile file(1);

    file.computeCLF();

    EXPECT_FALSE(file.clfDirty);
    EXPECT_TRUE(file.clf.empty());
    EXPECT_EQ(file.queryNumberLandmarksInBetween(0, 100), 0);
    EXPECT_EQ(file.queryNumberLandmarksInBetween(lowest + 1, highest), 0);
}

TEST(VXFile, EmptyFileKeepsItsMinimumAboveItsMaximumOnceItIsClean)
{
    VXFile file(1);

    file.computeCLF();

    EXPECT_LT(file.getMaxLandmarkOffsetTime(), file.getMinLandmarkOffsetTime());
}

TEST(VXFile, FirstLandmarkSetsBothBounds)
{
    const auto file = fileWith({-7});

    EXPECT_EQ(file->getMinLandmarkOffsetTime(), -7);
    EXPECT_EQ(file->getMaxLandmarkOffsetTime(), -7);
}

TEST(VXFile, BoundsFollowLandmarksInAnyOrder)
{
    const auto file = fileWith({5, 20, -3, 8});

    EXPECT_EQ(file->getMinLandmarkOffsetTime(), -3);
    EXPECT_EQ(file->getMaxLandmarkOffsetTime(), 20);
}

TEST(VXFile, BoundsReachTheExtremesOf32Bits)
{
    const auto file = fileWith({lowestFrame, highestFrame});

    EXPECT_EQ(file->getMinLandmarkOffsetTime(), INT64_C(-2147483648));
    EXPECT_EQ(file->getMaxLandmarkOffsetTime(), INT64_C(2147483647));
}

TEST(VXFile, LandmarksOfOneFrameKeepTheOrderInWhichTheyCame)
{
    VXFile file(1);
    auto* first = new VXLandmark(4, &file, 30);
    auto* second = new VXLandmark(4, &file, 10);
    auto* third = new VXLandmark(4, &file, 20);

    file.addLandmark(first);
    file.addLandmark(second);
    file.addLandmark(third);

    EXPECT_EQ(file.getLandmarkMap().at(4), (std::vector<VXLandmark*>{first, second, third}));
}

TEST(VXFile, LandmarksStandUnderTheirFrames)
{
    const auto file = fileWith({13, 10, 10});

    EXPECT_EQ(framesOf(*file), (std::vector<std::int64_t>{10, 13}));
    EXPECT_EQ(file->getLandmarkMap().at(10).size(), 2u);
    EXPECT_EQ(file->getLandmarkMap().at(13).size(), 1u);
}

TEST(VXFile, LandmarkMapIsTheFilesOwn)
{
    VXFile file(1);

    file.getLandmarkMap()[3].push_back(new VXLandmark(3, &file, 0));

    EXPECT_EQ(file.landmarks.at(3).size(), 1u);
}

TEST(VXFile, NullLandmarkLeavesACleanFileClean)
{
    const auto file = countedFileWith({10});

    file->addLandmark(nullptr);

    EXPECT_FALSE(file->clfDirty);
    EXPECT_EQ(file->queryNumberLandmarksInBetween(0, 100), 1);
}

TEST(VXFile, NullLandmarkLeavesANewFileAsItWas)
{
    VXFile file(1);

    file.addLandmark(nullptr);

    EXPECT_TRUE(file.clfDirty);
    EXPECT_TRUE(file.getLandmarkMap().empty());
    EXPECT_EQ(file.getMinLandmarkOffsetTime(), highest);
    EXPECT_EQ(file.getMaxLandmarkOffsetTime(), lowest);
}

TEST(VXFile, LandmarkAddedToACleanFileMakesItDirty)
{
    const auto file = countedFileWith({10});

    file->addLandmark(new VXLandmark(12, file.get(), 0));

    EXPECT_TRUE(file->clfDirty);
    EXPECT_EQ(file->queryNumberLandmarksInBetween(0, 100), -1);
}

TEST(VXFile, SecondComputationMakesTheFileCleanAgain)
{
    const auto file = countedFileWith({10});
    file->addLandmark(new VXLandmark(12, file.get(), 0));

    file->computeCLF();

    EXPECT_EQ(file->queryNumberLandmarksInBetween(0, 100), 2);
}

TEST(VXFile, ComputeClfCountsLandmarksUpToEachFrame)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(file->clf, (Counts{{10, 2}, {11, 2}, {12, 2}, {13, 3}}));
}

TEST(VXFile, ComputeClfGivesTheLandmarkMapAKeyForEveryFrame)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(framesOf(*file), (std::vector<std::int64_t>{10, 11, 12, 13}));
    EXPECT_TRUE(file->getLandmarkMap().at(11).empty());
    EXPECT_TRUE(file->getLandmarkMap().at(12).empty());
}

TEST(VXFile, ComputeClfKeepsTheLandmarksWhereTheyAre)
{
    const auto file = fileWith({10, 10, 13});
    const auto* first = landmarkAt(*file, 10, 0);
    const auto* last = landmarkAt(*file, 13);

    file->computeCLF();

    EXPECT_EQ(landmarkAt(*file, 10, 0), first);
    EXPECT_EQ(landmarkAt(*file, 13), last);
}

TEST(VXFile, ComputeClfCountsFromNegativeFramesOn)
{
    const auto file = countedFileWith({-2, 1, 1});

    EXPECT_EQ(file->clf, (Counts{{-2, 1}, {-1, 1}, {0, 1}, {1, 3}}));
}

TEST(VXFile, ComputeClfReachesTheLastFrameOf32Bits)
{
    const auto file = countedFileWith({highestFrame - 1, highestFrame});

    EXPECT_EQ(file->clf, (Counts{{highestFrame - 1, 1}, {highestFrame, 2}}));
}

TEST(VXFile, ComputeClfOnACleanFileDoesNothing)
{
    const auto file = countedFileWith({10, 13});
    file->clf.clear();

    file->computeCLF();

    EXPECT_TRUE(file->clf.empty());
}

TEST(VXFile, QueryOverTheWholeRangeCountsAll)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(file->queryNumberLandmarksInBetween(10, 13), 3);
}

TEST(VXFile, QueryFromWithinLeavesOutWhatIsBefore)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(file->queryNumberLandmarksInBetween(11, 13), 1);
}

TEST(VXFile, QueryIncludesBothEnds)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(file->queryNumberLandmarksInBetween(10, 10), 2);
    EXPECT_EQ(file->queryNumberLandmarksInBetween(13, 13), 1);
}

TEST(VXFile, QueryBeforeTheFirstLandmarkCountsNone)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(file->queryNumberLandmarksInBetween(0, 9), 0);
}

TEST(VXFile, QueryIsClippedToTheFilesRange)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(file->queryNumberLandmarksInBetween(0, 1000), 3);
    EXPECT_EQ(file->queryNumberLandmarksInBetween(0, 12), 2);
    EXPECT_EQ(file->queryNumberLandmarksInBetween(12, 1000), 1);
}

TEST(VXFile, QueryAfterTheLastLandmarkCountsNone)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(file->queryNumberLandmarksInBetween(14, 20), 0);
    EXPECT_EQ(file->queryNumberLandmarksInBetween(15, 20), 0);
}

TEST(VXFile, QueryBetweenTwoLandmarksCountsNone)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(file->queryNumberLandmarksInBetween(11, 12), 0);
}

TEST(VXFile, QueryInvertedByOneCountsNone)
{
    const auto file = countedFileWith({10, 10, 13});

    // The difference of two equal counts: clf[11] - clf[11].
    EXPECT_EQ(file->queryNumberLandmarksInBetween(12, 11), 0);
}

TEST(VXFile, QueryInvertedByTwoCountsNone)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(file->queryNumberLandmarksInBetween(13, 11), 0);
}

TEST(VXFile, QueryInvertedByOneAtTheEdgesCountsNone)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(file->queryNumberLandmarksInBetween(10, 9), 0);
    EXPECT_EQ(file->queryNumberLandmarksInBetween(11, 10), 0);
    EXPECT_EQ(file->queryNumberLandmarksInBetween(14, 13), 0);
}

TEST(VXFile, QueryFromTheLowestFrameWrapsAndCountsNone)
{
    const auto file = countedFileWith({10, 10, 13});

    // One before the lowest 64-bit frame is the highest, which lies beyond the file.
    EXPECT_EQ(file->queryNumberLandmarksInBetween(lowest, 13), 0);
    EXPECT_EQ(file->queryNumberLandmarksInBetween(lowest, highest), 0);
}

TEST(VXFile, QueryOverAllOtherFramesCountsAll)
{
    const auto file = countedFileWith({10, 10, 13});

    EXPECT_EQ(file->queryNumberLandmarksInBetween(lowest + 1, highest), 3);
}

TEST(VXFile, QueriesAddNoEntry)
{
    const auto file = countedFileWith({10, 10, 13});

    for (std::int64_t start = 8; start < 16; ++start) {
        for (std::int64_t end = 8; end < 16; ++end)
            file->queryNumberLandmarksInBetween(start, end);
    }

    EXPECT_EQ(file->clf.size(), 4u);
    EXPECT_EQ(file->getLandmarkMap().size(), 4u);
}

TEST(VXFile, SecondComputationKeepsOldCountsAndAddsNewFrames)
{
    const auto file = countedFileWith({10, 13});
    file->addLandmark(new VXLandmark(11, file.get(), 0));
    file->addLandmark(new VXLandmark(15, file.get(), 0));

    file->computeCLF();

    // Frames 10 to 13 keep 1, 1, 1 and 2. The running total counts the new landmark at 11, so that
    // frame 14 gets 3 and frame 15 gets 4.
    EXPECT_EQ(file->clf, (Counts{{10, 1}, {11, 1}, {12, 1}, {13, 2}, {14, 3}, {15, 4}}));
}

TEST(VXFile, StaleCountsMakeANegativeDifferenceZero)
{
    const auto file = countedFileWith({10});
    for (const std::int32_t frame : {5, 6, 7})
        file->addLandmark(new VXLandmark(frame, file.get(), 0));

    file->computeCLF();

    // clf[10] keeps 1 while clf[9] is 3, and 1 - 3 is below 0.
    EXPECT_EQ(file->clf, (Counts{{5, 1}, {6, 2}, {7, 3}, {8, 3}, {9, 3}, {10, 1}}));
    EXPECT_EQ(file->queryNumberLandmarksInBetween(10, 10), 0);
}

TEST(VXFile, NegativeCountAtTheEndOfTheRangeIsZero)
{
    const auto file = countedFileWith({10});
    file->clf[10] = -4;

    EXPECT_EQ(file->queryNumberLandmarksInBetween(10, 10), 0);
}

TEST(VXFile, SpanOfAnHourIsDense)
{
    // 3600 s * 31.25 frames per second = 112500 frames
    const auto file = countedFileWith({0, 112499});

    EXPECT_EQ(file->clf.size(), 112500u);
    EXPECT_EQ(file->queryNumberLandmarksInBetween(1, 112499), 1);
}

TEST(VXFile, DestroyingFreesLandmarksAndPassesOverNull)
{
    auto file = countedFileWith({10, 10, 13});
    file->getLandmarkMap()[11].push_back(nullptr);

    file.reset();

    EXPECT_EQ(file, nullptr);
}

TEST(VXFile, FieldsStandInTheirOrder)
{
    const VXFile file(1);
    const auto address = [](const auto& field) { return static_cast<const void*>(&field); };

    EXPECT_LT(address(file.landmarks), address(file.clf));
    EXPECT_LT(address(file.clf), address(file.fileID));
    EXPECT_LT(address(file.fileID), address(file.maxLandmarkOffsetTime));
    EXPECT_LT(address(file.maxLandmarkOffsetTime), address(file.minLandmarkOffsetTime));
    EXPECT_LT(address(file.minLandmarkOffsetTime), address(file.clfDirty));
}

} // namespace
} // namespace VXS
