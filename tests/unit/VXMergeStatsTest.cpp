#include "VXMergeStats.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXFile.h"

namespace VXS
{
namespace
{

using Pair = std::pair<std::int64_t, std::int64_t>;

TEST(VXMergeStats, NewRecordIsZeroAndNotMerged)
{
    const VXMergeStats record(nullptr);

    EXPECT_EQ(record.fileA, 0);
    EXPECT_EQ(record.fileB, 0);
    EXPECT_EQ(record.peakCount, 0.0f);
    EXPECT_EQ(record.overlapLength, 0.0f);
    EXPECT_EQ(record.percentMatchA, 0.0f);
    EXPECT_EQ(record.percentMatchB, 0.0f);
    EXPECT_EQ(record.landmarksInOverlapA, 0.0f);
    EXPECT_EQ(record.landmarksInOverlapB, 0.0f);
    EXPECT_EQ(record.templateMatchLength, 0.0f);
    EXPECT_FALSE(record.merged);
    EXPECT_EQ(record.bestOffset, 0.0f);
}

TEST(VXMergeStats, KeepsThePointerToItsHistogram)
{
    VXHistogram histogram;

    const VXMergeStats record(&histogram);

    EXPECT_EQ(record.histogram, &histogram);
}

TEST(VXMergeStats, IsAPlainRecord)
{
    EXPECT_FALSE(std::is_polymorphic_v<VXMergeStats>);
    EXPECT_TRUE(std::is_trivially_destructible_v<VXMergeStats>);
}

TEST(VXMergeStats, FieldsStandInTheirOrder)
{
    const VXMergeStats record(nullptr);
    const auto address = [](const auto& field) { return static_cast<const void*>(&field); };
    const std::vector<const void*> addresses{address(record.fileA),
                                             address(record.fileB),
                                             address(record.peakCount),
                                             address(record.overlapLength),
                                             address(record.percentMatchA),
                                             address(record.percentMatchB),
                                             address(record.landmarksInOverlapA),
                                             address(record.landmarksInOverlapB),
                                             address(record.templateMatchLength),
                                             address(record.meanCount),
                                             address(record.stdDevCount),
                                             address(record.merged),
                                             address(record.bestOffset),
                                             address(record.histogram)};

    for (std::size_t field = 1; field < addresses.size(); ++field)
        EXPECT_LT(addresses[field - 1], addresses[field]) << "field " << field;
}

TEST(VXMergeStats, DeletingNullDoesNothing)
{
    VXMergeStatsSet* stats = nullptr;

    deleteVXMergeStatsSet(stats);

    EXPECT_EQ(stats, nullptr);
}

TEST(VXMergeStats, DeletingAnEmptySetNullsTheCallersPointer)
{
    auto* stats = new VXMergeStatsSet();

    deleteVXMergeStatsSet(stats);

    EXPECT_EQ(stats, nullptr);
}

TEST(VXMergeStats, DeletingTwiceIsHarmless)
{
    auto* stats = new VXMergeStatsSet();
    (*stats)[Pair(1, 2)] = new VXMergeStats(nullptr);

    deleteVXMergeStatsSet(stats);
    deleteVXMergeStatsSet(stats);

    EXPECT_EQ(stats, nullptr);
}

TEST(VXMergeStats, DeletingFreesTheRecordsAndPassesOverNull)
{
    auto* stats = new VXMergeStatsSet();
    (*stats)[Pair(1, 2)] = new VXMergeStats(nullptr);
    (*stats)[Pair(1, 3)] = nullptr;
    (*stats)[Pair(2, 3)] = new VXMergeStats(nullptr);

    deleteVXMergeStatsSet(stats);

    EXPECT_EQ(stats, nullptr);
}

TEST(VXMergeStats, DeletingLeavesTheHistogramAlone)
{
    const auto file = support::fileWith({10});
    VXHistogram histogram;
    support::addVotes(histogram, 4, {support::landmarkAt(*file, 10)});
    auto* stats = new VXMergeStatsSet();
    (*stats)[Pair(1, 2)] = new VXMergeStats(&histogram);

    deleteVXMergeStatsSet(stats);

    EXPECT_EQ(support::votesIn(histogram, 4), 1u);
}

TEST(VXMergeStats, PairsStandByFirstIdAndThenBySecond)
{
    VXMergeStatsSet stats;
    for (const Pair& pair : {Pair(2, 3), Pair(1, 9), Pair(-4, 8), Pair(1, 2)})
        stats[pair] = nullptr;

    std::vector<Pair> pairs;
    for (const auto& entry : stats)
        pairs.push_back(entry.first);

    EXPECT_EQ(pairs, (std::vector<Pair>{{-4, 8}, {1, 2}, {1, 9}, {2, 3}}));
}

TEST(VXMergeStats, HolderFreesItsSet)
{
    VXMergeStatsSetHolder holder(new VXMergeStatsSet());
    (*holder)[Pair(1, 2)] = new VXMergeStats(nullptr);

    holder.reset();

    EXPECT_EQ(holder, nullptr);
}

} // namespace
} // namespace VXS
