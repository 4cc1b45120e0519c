#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXHistogram.h"
#include "VXHistogramSetProcessor.h"

// Bins and bounds that only damaged histograms and hand-made calls bring.

namespace VXS
{
namespace
{

using support::addCountedFile;
using support::countedFileWith;
using support::landmarkAt;
using support::votesIn;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

// Evaluates a bin of two votes at offset 3 of which these ends are kept, and tells whether it was
// measured at all.
bool isMeasured(VXFileSet& fileSet, const VXHistogram::Ends& ends)
{
    VXHistogram histogram;
    histogram.append(3, 2);
    histogram.keepEnds(3, ends);
    float percentA = -7.0f;
    float percentB = -7.0f;
    float length = -7.0f;
    VXHistogramSetProcessor().offset2Percetage({1, 2}, &histogram, 3, percentA, percentB, length,
                                               &fileSet);
    return percentA != -7.0f || percentB != -7.0f || length != -7.0f;
}

} // namespace

TEST(VXHistogram, NeighbouringBinWithoutVotesComesBack)
{
    VXHistogram histogram;
    histogram.append(3, 2);

    histogram.append(4, 0);

    EXPECT_EQ(2u, histogram.size());
    EXPECT_NE(histogram.end(), histogram.find(4));
    EXPECT_EQ(0u, votesIn(histogram, 4));
}

// The first bin is spelled out: its mark, its step of 0 and its votes.
TEST(VXHistogram, NeighbouringBinTakesAByteFromOneVoteTo127)
{
    VXHistogram histogram;
    histogram.append(3, 1);
    ASSERT_EQ(3u, histogram.packed.size());

    histogram.append(4, 1);
    EXPECT_EQ(4u, histogram.packed.size());
    histogram.append(5, 127);
    EXPECT_EQ(5u, histogram.packed.size());
    // Its mark, its step, and 128 in two groups of seven bits.
    histogram.append(6, 128);
    EXPECT_EQ(9u, histogram.packed.size());
}

TEST(VXHistogramSetProcessor, BinWithBothEndsIsMeasured)
{
    VXFileSet fileSet;
    VXFile* file = addCountedFile(fileSet, 1, {10, 20});
    addCountedFile(fileSet, 2, {7, 17});

    EXPECT_TRUE(isMeasured(fileSet, {landmarkAt(*file, 10), landmarkAt(*file, 20)}));
}

TEST(VXHistogramSetProcessor, BinWithoutItsGreatestEndIsNotMeasured)
{
    VXFileSet fileSet;
    VXFile* file = addCountedFile(fileSet, 1, {10, 20});
    addCountedFile(fileSet, 2, {7, 17});

    EXPECT_FALSE(isMeasured(fileSet, {landmarkAt(*file, 10), nullptr}));
}

TEST(VXHistogramSetProcessor, BinWithoutItsLeastEndIsNotMeasured)
{
    VXFileSet fileSet;
    VXFile* file = addCountedFile(fileSet, 1, {10, 20});
    addCountedFile(fileSet, 2, {7, 17});

    EXPECT_FALSE(isMeasured(fileSet, {nullptr, landmarkAt(*file, 20)}));
}

// The bounds of the counts are not numbers and so frame 0: the first file counts from its least
// frame, -5 and 0, the second to its greatest, 0, 4 and 8.
TEST(VXHistogramSetProcessor, OffsetThatIsNotANumberCountsUpToFrameZeroAndOnFromIt)
{
    const auto first = countedFileWith({-5, 0, 5}, 1);
    const auto second = countedFileWith({-3, 0, 4, 8}, 2);
    float landmarksInFirst = -7.0f;
    float landmarksInSecond = -7.0f;

    const float length = VXHistogramSetProcessor().proposedOverlapRegion(
        first.get(), second.get(), notANumber, landmarksInFirst, landmarksInSecond);

    EXPECT_TRUE(std::isnan(length));
    EXPECT_EQ(2.0f, landmarksInFirst);
    EXPECT_EQ(3.0f, landmarksInSecond);
}

} // namespace VXS
