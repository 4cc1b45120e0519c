#include <cstdint>
#include <limits>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXFileSet.h"
#include "VXMergeStatsSetProcessor.h"

namespace VXS
{
namespace
{

using Groups = std::set<std::set<std::int64_t>>;

VXMerger mergerOf(const std::vector<std::int64_t>& fileIDs)
{
    VXFileSet fileSet;
    support::addEmptyFiles(fileSet, fileIDs);
    VXMerger merger;
    merger.init(&fileSet);
    return merger;
}

TEST(VXMerger, NewMergerHasNoGroups)
{
    const VXMerger merger;

    EXPECT_TRUE(merger.fileClusters.empty());
}

TEST(VXMerger, InitGivesEachFileAGroupOfItsOwn)
{
    const VXMerger merger = mergerOf({1, 2, 3});

    EXPECT_EQ(merger.fileClusters, (Groups{{1}, {2}, {3}}));
}

TEST(VXMerger, InitWithNullLeavesEarlierGroups)
{
    VXMerger merger = mergerOf({1, 2});

    merger.init(nullptr);

    EXPECT_EQ(merger.fileClusters, (Groups{{1}, {2}}));
}

TEST(VXMerger, InitWithAnEmptySetGivesNoGroups)
{
    VXMerger merger = mergerOf({1, 2});
    VXFileSet empty;

    merger.init(&empty);

    EXPECT_TRUE(merger.fileClusters.empty());
}

TEST(VXMerger, InitClearsEarlierGroups)
{
    VXMerger merger = mergerOf({1, 2, 3});
    merger.mergeClusters(1, 3);
    VXFileSet fileSet;
    support::addEmptyFiles(fileSet, {3, 4});

    merger.init(&fileSet);

    EXPECT_EQ(merger.fileClusters, (Groups{{3}, {4}}));
}

TEST(VXMerger, InitReadsOnlyTheIds)
{
    VXFileSet fileSet;
    fileSet.getFiles()[5] = nullptr;
    VXMerger merger;

    merger.init(&fileSet);

    EXPECT_EQ(merger.fileClusters, (Groups{{5}}));
}

TEST(VXMerger, MergingUnitesTwoGroupsAndKeepsTheOrderByLowestId)
{
    VXMerger merger = mergerOf({1, 2, 3});

    merger.mergeClusters(1, 3);

    const std::vector<std::set<std::int64_t>> groups(merger.fileClusters.begin(),
                                                     merger.fileClusters.end());
    EXPECT_EQ(groups, (std::vector<std::set<std::int64_t>>{{1, 3}, {2}}));
}

TEST(VXMerger, MergingCarriesTheWholeGroup)
{
    VXMerger merger = mergerOf({1, 2, 3});
    merger.mergeClusters(1, 3);

    merger.mergeClusters(3, 2);

    EXPECT_EQ(merger.fileClusters, (Groups{{1, 2, 3}}));
}

TEST(VXMerger, MergingTwoGroupsOfSeveralUnitesAll)
{
    VXMerger merger = mergerOf({1, 2, 3, 4, 5});
    merger.mergeClusters(1, 4);
    merger.mergeClusters(2, 5);

    merger.mergeClusters(5, 1);

    EXPECT_EQ(merger.fileClusters, (Groups{{1, 2, 4, 5}, {3}}));
}

TEST(VXMerger, MergingDoesNotMindTheOrderOfTheIds)
{
    VXMerger merger = mergerOf({1, 2, 3});

    merger.mergeClusters(3, 1);

    EXPECT_EQ(merger.fileClusters, (Groups{{1, 3}, {2}}));
}

TEST(VXMerger, MergingTwoIdsOfOneGroupChangesNothing)
{
    VXMerger merger = mergerOf({1, 2, 3});
    merger.mergeClusters(1, 3);

    merger.mergeClusters(3, 1);

    EXPECT_EQ(merger.fileClusters, (Groups{{1, 3}, {2}}));
}

TEST(VXMerger, MergingAnIdWithItselfChangesNothing)
{
    VXMerger merger = mergerOf({1, 2});

    merger.mergeClusters(2, 2);

    EXPECT_EQ(merger.fileClusters, (Groups{{1}, {2}}));
}

TEST(VXMerger, MergingAnUnknownIdWithItselfChangesNothing)
{
    VXMerger merger = mergerOf({1, 2});

    merger.mergeClusters(9, 9);

    EXPECT_EQ(merger.fileClusters, (Groups{{1}, {2}}));
}

TEST(VXMerger, MergingAKnownIdWithAnUnknownOneLeavesTheGroups)
{
    VXMerger merger = mergerOf({1, 2});

    merger.mergeClusters(1, 9);
    merger.mergeClusters(9, 2);

    EXPECT_EQ(merger.fileClusters, (Groups{{1}, {2}}));
}

TEST(VXMerger, MergingTwoUnknownIdsAddsAnEmptyGroupInFront)
{
    VXMerger merger = mergerOf({1, 2});

    merger.mergeClusters(8, 9);

    EXPECT_EQ(merger.fileClusters, (Groups{{}, {1}, {2}}));
    EXPECT_TRUE(merger.fileClusters.begin()->empty());
}

TEST(VXMerger, MergingTwoUnknownIdsAgainAddsNothingMore)
{
    VXMerger merger = mergerOf({1, 2});
    merger.mergeClusters(8, 9);

    merger.mergeClusters(10, 11);

    EXPECT_EQ(merger.fileClusters, (Groups{{}, {1}, {2}}));
}

TEST(VXMerger, EmptyGroupIsNoPartOfLaterMerges)
{
    VXMerger merger = mergerOf({1, 2});
    merger.mergeClusters(8, 9);

    merger.mergeClusters(1, 2);

    EXPECT_EQ(merger.fileClusters, (Groups{{}, {1, 2}}));
}

TEST(VXMerger, ExtremeIdsStandInSignedOrder)
{
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    VXMerger merger = mergerOf({lowest, 0, highest});

    merger.mergeClusters(highest, lowest);

    EXPECT_EQ(merger.fileClusters, (Groups{{lowest, highest}, {0}}));
    EXPECT_EQ(*merger.fileClusters.begin()->begin(), lowest);
}

} // namespace
} // namespace VXS
