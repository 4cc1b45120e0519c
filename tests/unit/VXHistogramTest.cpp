#include "VXHistogram.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXFile.h"
#include "VXLandmark.h"

namespace VXS
{
namespace
{

using support::addVotes;
using support::landmarkAt;

TEST(VXHistogram, BinsStandByAscendingOffsetWithNegativeOnesFirst)
{
    const auto file = support::fileWith({10});
    VXHistogram histogram;
    for (const std::int64_t offset : {INT64_C(30), INT64_C(-30), INT64_C(0), INT64_C(-5000000000)})
        addVotes(histogram, offset, {landmarkAt(*file, 10)});

    std::vector<std::int64_t> offsets;
    for (const auto& bin : histogram)
        offsets.push_back(bin.offset);

    EXPECT_EQ(offsets, (std::vector<std::int64_t>{INT64_C(-5000000000), -30, 0, 30}));
}

TEST(VXHistogram, NewHistogramHasNoBins)
{
    const VXHistogram histogram;

    EXPECT_TRUE(histogram.empty());
    EXPECT_EQ(histogram.size(), 0u);
    EXPECT_EQ(histogram.begin(), histogram.end());
    EXPECT_EQ(histogram.find(0), histogram.end());
}

// Both sides of every edge of the packing: votes of one byte and of two, neighbouring offsets and
// distant ones, the ends of the range.
TEST(VXHistogram, BinsComeBackAsTheyWereAppended)
{
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    const std::vector<std::pair<std::int64_t, std::uint64_t>> appended{
        {lowest, 1}, {lowest + 1, 127}, {lowest + 2, 128},
        {-5, 0},     {-4, 16383},       {-3, 16384},
        {-1, 1},     {0, UINT64_MAX},   {126, std::uint64_t{1} << 32u},
        {254, 126},  {highest - 1, 2},  {highest, 3}};
    VXHistogram histogram;

    for (const auto& [offset, votes] : appended)
        histogram.append(offset, votes);

    std::vector<std::pair<std::int64_t, std::uint64_t>> read;
    for (const VXHistogram::Bin& bin : histogram)
        read.emplace_back(bin.offset, bin.votes);
    EXPECT_EQ(read, appended);
    EXPECT_EQ(histogram.size(), appended.size());
}

TEST(VXHistogram, FindsABinByItsOffsetAndNoOther)
{
    VXHistogram histogram;
    histogram.append(-7, 3);
    histogram.append(12, 400);

    EXPECT_EQ(histogram.find(-7)->votes, 3u);
    EXPECT_EQ(histogram.find(12)->votes, 400u);
    EXPECT_EQ(histogram.find(-8), histogram.end());
    EXPECT_EQ(histogram.find(0), histogram.end());
    EXPECT_EQ(histogram.find(13), histogram.end());
}

TEST(VXHistogram, NeighbouringBinsOfFewVotesTakeAByteEach)
{
    VXHistogram histogram;
    for (std::int64_t offset = 0; offset < 1000; ++offset)
        histogram.append(offset, 7);

    // The first bin is spelled out.
    EXPECT_EQ(histogram.packed.size(), 999u + 3u);
}

TEST(VXHistogram, BestBinOfATieIsTheHighest)
{
    VXHistogram histogram;
    histogram.append(-2, 5);
    histogram.append(10, 5);
    histogram.append(11, 4);

    EXPECT_EQ(histogram.bestBin().offset, 10);
    EXPECT_EQ(histogram.bestBin().votes, 5.0f);
}

// 2^24 and 2^24 + 1 are one float.
TEST(VXHistogram, VotesThatSinglePrecisionHoldsAlikeAreATie)
{
    VXHistogram histogram;
    histogram.append(1, (1u << 24u) + 1u);
    histogram.append(2, 1u << 24u);

    EXPECT_EQ(histogram.bestBin().offset, 2);
}

TEST(VXHistogram, BestBinOfAnEmptyHistogramHasNoVotes)
{
    const VXHistogram histogram;

    EXPECT_EQ(histogram.bestBin().offset, 0);
    EXPECT_EQ(histogram.bestBin().votes, 0.0f);
}

TEST(VXHistogram, KeepsTheEndsItIsGivenAndNoOthers)
{
    const auto file = support::fileWith({10, 20});
    VXHistogram histogram;
    histogram.append(3, 2);
    histogram.append(4, 2);

    histogram.keepEnds(4, {landmarkAt(*file, 10), landmarkAt(*file, 20)});

    EXPECT_EQ(histogram.endsOf(4).least, landmarkAt(*file, 10));
    EXPECT_EQ(histogram.endsOf(4).greatest, landmarkAt(*file, 20));
    EXPECT_EQ(histogram.endsOf(3).least, nullptr);
    EXPECT_EQ(histogram.endsOf(3).greatest, nullptr);
}

TEST(VXHistogram, PairsStandByFirstIdAndThenBySecond)
{
    auto* histograms = new VXHistogramSet();
    for (const VXHistogramSet::key_type& pair :
         {VXHistogramSet::key_type(2, 3), VXHistogramSet::key_type(1, 9),
          VXHistogramSet::key_type(-4, 8), VXHistogramSet::key_type(1, 2)})
        (*histograms)[pair] = new VXHistogram();

    std::vector<VXHistogramSet::key_type> pairs;
    for (const auto& entry : *histograms)
        pairs.push_back(entry.first);
    deleteVXHistogramSet(histograms);

    EXPECT_EQ(pairs, (std::vector<VXHistogramSet::key_type>{{-4, 8}, {1, 2}, {1, 9}, {2, 3}}));
}

TEST(VXHistogram, DeletingNullDoesNothing)
{
    VXHistogramSet* histograms = nullptr;

    deleteVXHistogramSet(histograms);

    EXPECT_EQ(histograms, nullptr);
}

TEST(VXHistogram, DeletingNullsTheCallersPointer)
{
    auto* histograms = new VXHistogramSet();

    deleteVXHistogramSet(histograms);

    EXPECT_EQ(histograms, nullptr);
}

TEST(VXHistogram, DeletingTwiceIsHarmless)
{
    auto* histograms = new VXHistogramSet();
    (*histograms)[{1, 2}] = new VXHistogram();

    deleteVXHistogramSet(histograms);
    deleteVXHistogramSet(histograms);

    EXPECT_EQ(histograms, nullptr);
}

TEST(VXHistogram, DeletingPassesOverANullHistogram)
{
    auto* histograms = new VXHistogramSet();
    (*histograms)[{1, 2}] = nullptr;
    (*histograms)[{1, 3}] = new VXHistogram();

    deleteVXHistogramSet(histograms);

    EXPECT_EQ(histograms, nullptr);
}

TEST(VXHistogram, DeletingLeavesTheLandmarksAlone)
{
    const auto file = support::fileWith({10, 20});
    auto* histograms = new VXHistogramSet();
    (*histograms)[{1, 2}] = new VXHistogram();
    addVotes(*histograms->at({1, 2}), -3, {landmarkAt(*file, 10), landmarkAt(*file, 20)});

    deleteVXHistogramSet(histograms);

    EXPECT_EQ(landmarkAt(*file, 10)->getOffset(), 10);
    EXPECT_EQ(landmarkAt(*file, 20)->getOffset(), 20);
}

TEST(VXHistogram, HolderFreesItsSet)
{
    const auto file = support::fileWith({10});
    VXHistogramSetHolder holder(new VXHistogramSet());
    (*holder)[{1, 2}] = new VXHistogram();
    addVotes(*holder->at({1, 2}), 0, {landmarkAt(*file, 10)});

    holder.reset();

    EXPECT_EQ(holder, nullptr);
}

} // namespace
} // namespace VXS
