#include "VXClusterInternal.h"

#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace VXS
{
namespace
{

using Offsets = std::map<std::int64_t, float>;
using Clusters = std::map<std::int32_t, Offsets>;
using OffsetsSet = std::set<Offsets>;

VXClusterInternal clusterOf(const std::set<std::int64_t>& fileIDs)
{
    VXClusterInternal cluster;
    cluster.init(fileIDs);
    return cluster;
}

TEST(VXClusterInternal, NewObjectGivesAnEmptySet)
{
    const VXClusterInternal cluster;

    EXPECT_TRUE(cluster.getCluster().empty());
}

TEST(VXClusterInternal, InitNumbersTheIdsInAscendingOrder)
{
    const VXClusterInternal cluster = clusterOf({9, 4});

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{4, 0.0f}}}, {1, {{9, 0.0f}}}}));
}

TEST(VXClusterInternal, InitWithNoIdsGivesNoCluster)
{
    const VXClusterInternal cluster = clusterOf({});

    EXPECT_TRUE(cluster.clusters.empty());
}

TEST(VXClusterInternal, InitAgainReplacesNumbersAndRemovesNone)
{
    VXClusterInternal cluster = clusterOf({1, 2, 3});

    cluster.init({9});

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{9, 0.0f}}}, {1, {{2, 0.0f}}}, {2, {{3, 0.0f}}}}));
}

TEST(VXClusterInternal, MergeMovesTheSecondFileByTheOffset)
{
    VXClusterInternal cluster = clusterOf({4, 9});

    cluster.merge(4, 9, 12.5f);

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{4, 0.0f}, {9, 12.5f}}}}));
}

TEST(VXClusterInternal, MergeKeepsTheNumberOfTheFirstFilesCluster)
{
    VXClusterInternal cluster = clusterOf({4, 9});

    cluster.merge(9, 4, 12.5f);

    EXPECT_EQ(cluster.clusters, (Clusters{{1, {{4, 12.5f}, {9, 0.0f}}}}));
}

TEST(VXClusterInternal, MergeLeavesGapsInTheNumbers)
{
    VXClusterInternal cluster = clusterOf({1, 2, 3});

    cluster.merge(1, 2, 5.0f);

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{1, 0.0f}, {2, 5.0f}}}, {2, {{3, 0.0f}}}}));
}

TEST(VXClusterInternal, MergeMovesTheWholeSecondCluster)
{
    VXClusterInternal cluster = clusterOf({1, 2, 3});
    cluster.merge(2, 3, 7.0f);

    cluster.merge(1, 2, 100.0f);

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{1, 0.0f}, {2, 100.0f}, {3, 107.0f}}}}));
}

TEST(VXClusterInternal, MergeLeavesTheWholeFirstClusterWhereItIs)
{
    VXClusterInternal cluster = clusterOf({1, 2, 3});
    cluster.merge(1, 2, 7.0f);

    cluster.merge(1, 3, -4.0f);

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{1, 0.0f}, {2, 7.0f}, {3, -4.0f}}}}));
}

TEST(VXClusterInternal, OffsetsInsideTheClustersDoNotEnterAMerge)
{
    VXClusterInternal cluster = clusterOf({1, 2, 3, 4});
    cluster.merge(1, 2, 7.0f);
    cluster.merge(3, 4, 20.0f);

    cluster.merge(2, 4, 100.0f);

    // 100 lies between the zeros of the two, where 1 and 3 stand, and not between 2 and 4.
    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{1, 0.0f}, {2, 7.0f}, {3, 100.0f}, {4, 120.0f}}}}));
}

TEST(VXClusterInternal, MergeAddsInSinglePrecision)
{
    VXClusterInternal cluster = clusterOf({1, 2, 3});
    cluster.merge(2, 3, 1.0f);

    cluster.merge(1, 2, 16777216.0f);

    // 1 + 2^24 lies half way between two floats and goes to the even one, 2^24.
    EXPECT_EQ(cluster.clusters.at(0).at(3), 16777216.0f);
}

TEST(VXClusterInternal, MergeOfAFileWithItselfDoesNothing)
{
    VXClusterInternal cluster = clusterOf({4, 9});

    cluster.merge(4, 4, 12.5f);
    cluster.merge(7, 7, 12.5f);

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{4, 0.0f}}}, {1, {{9, 0.0f}}}}));
}

TEST(VXClusterInternal, MergeOfTwoFilesOfOneClusterMovesAllOfIt)
{
    VXClusterInternal cluster = clusterOf({4, 9});
    cluster.merge(4, 9, 12.5f);

    cluster.merge(4, 9, 100.0f);

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{4, 100.0f}, {9, 112.5f}}}}));
}

TEST(VXClusterInternal, NormalisingRemovesTheShiftOfAMergeInsideOneCluster)
{
    VXClusterInternal cluster = clusterOf({4, 9});
    cluster.merge(4, 9, 12.5f);
    cluster.merge(4, 9, 100.0f);

    cluster.normalizeOffsets();

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{4, 0.0f}, {9, 12.5f}}}}));
}

TEST(VXClusterInternal, MergeWithAnUnknownFirstFileMovesTheSecondToNumberMinusOne)
{
    VXClusterInternal cluster = clusterOf({4, 9});

    cluster.merge(7, 9, 12.5f);

    EXPECT_EQ(cluster.clusters, (Clusters{{-1, {{9, 12.5f}}}, {0, {{4, 0.0f}}}}));
}

TEST(VXClusterInternal, MergeWithAnUnknownSecondFileLeavesTheFirstAsItWas)
{
    VXClusterInternal cluster = clusterOf({4, 9});

    cluster.merge(4, 7, 12.5f);

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{4, 0.0f}}}, {1, {{9, 0.0f}}}}));
}

TEST(VXClusterInternal, MergeOfTwoUnknownFilesMakesAnEmptyClusterUnderMinusOne)
{
    VXClusterInternal cluster = clusterOf({4});

    cluster.merge(7, 8, 12.5f);

    EXPECT_EQ(cluster.clusters, (Clusters{{-1, {}}, {0, {{4, 0.0f}}}}));
}

TEST(VXClusterInternal, NormalisingMovesTheLeastOffsetToZero)
{
    VXClusterInternal cluster = clusterOf({4, 9});
    cluster.merge(4, 9, -12.5f);

    cluster.normalizeOffsets();

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{4, 12.5f}, {9, 0.0f}}}}));
}

TEST(VXClusterInternal, NormalisingMovesAPositiveLeastOffsetToZeroAsWell)
{
    VXClusterInternal cluster = clusterOf({4, 9});
    cluster.merge(7, 9, 30.0f);

    cluster.normalizeOffsets();

    EXPECT_EQ(cluster.clusters, (Clusters{{-1, {{9, 0.0f}}}, {0, {{4, 0.0f}}}}));
}

TEST(VXClusterInternal, NormalisingTreatsEachClusterByItself)
{
    VXClusterInternal cluster = clusterOf({1, 2, 3, 4});
    cluster.merge(1, 2, -10.0f);
    cluster.merge(3, 4, -3.0f);

    cluster.normalizeOffsets();

    EXPECT_EQ(cluster.clusters,
              (Clusters{{0, {{1, 10.0f}, {2, 0.0f}}}, {2, {{3, 3.0f}, {4, 0.0f}}}}));
}

TEST(VXClusterInternal, NormalisingLeavesOneFileAtZero)
{
    VXClusterInternal cluster = clusterOf({4});

    cluster.normalizeOffsets();

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{4, 0.0f}}}}));
}

TEST(VXClusterInternal, NormalisingLeavesAnEmptyClusterAlone)
{
    VXClusterInternal cluster;
    cluster.merge(7, 8, 12.5f);

    cluster.normalizeOffsets();

    EXPECT_EQ(cluster.clusters, (Clusters{{-1, {}}}));
}

TEST(VXClusterInternal, NormalisingTwiceChangesNothingMore)
{
    VXClusterInternal cluster = clusterOf({4, 9});
    cluster.merge(4, 9, -12.5f);
    cluster.normalizeOffsets();

    cluster.normalizeOffsets();

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{4, 12.5f}, {9, 0.0f}}}}));
}

TEST(VXClusterInternal, GetClusterGivesTheMapsWithoutTheirNumbers)
{
    VXClusterInternal cluster = clusterOf({1, 2, 3});
    cluster.merge(1, 3, 5.0f);

    EXPECT_EQ(cluster.getCluster(), (OffsetsSet{{{1, 0.0f}, {3, 5.0f}}, {{2, 0.0f}}}));
}

TEST(VXClusterInternal, GetClusterGivesACopy)
{
    VXClusterInternal cluster = clusterOf({1, 2});
    const OffsetsSet before = cluster.getCluster();

    cluster.merge(1, 2, 5.0f);

    EXPECT_EQ(before, (OffsetsSet{{{1, 0.0f}}, {{2, 0.0f}}}));
}

TEST(VXClusterInternal, EqualMapsBecomeOneElement)
{
    VXClusterInternal cluster;
    cluster.clusters = Clusters{{0, {{4, 1.0f}}}, {1, {{4, 1.0f}}}, {2, {{4, 2.0f}}}};

    EXPECT_EQ(cluster.getCluster(), (OffsetsSet{{{4, 1.0f}}, {{4, 2.0f}}}));
}

TEST(VXClusterInternal, ExtremeIdsStandInSignedOrder)
{
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    VXClusterInternal cluster = clusterOf({highest, lowest});

    cluster.merge(lowest, highest, 3.0f);

    EXPECT_EQ(cluster.clusters, (Clusters{{0, {{lowest, 0.0f}, {highest, 3.0f}}}}));
}

} // namespace
} // namespace VXS
