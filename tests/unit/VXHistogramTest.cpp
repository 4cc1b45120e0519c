#include "VXHistogram.h"

#include <cstdint>
#include <limits>
#include <memory>
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
        offsets.push_back(bin.first);

    EXPECT_EQ(offsets, (std::vector<std::int64_t>{INT64_C(-5000000000), -30, 0, 30}));
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
