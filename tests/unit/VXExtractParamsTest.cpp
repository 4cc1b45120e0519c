#include "VXExtractParams.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace VXS
{
namespace
{

TEST(VXExtractParams, NewRecordHoldsTheDefaultsOfPeakFinding)
{
    const VXExtractParams params;

    EXPECT_EQ(params.initialFrames, 10u);
    EXPECT_EQ(params.maxPeaksPerFrame, 5u);
    EXPECT_EQ(params.maskHeight, 40.0f);
    EXPECT_EQ(params.peakFloor, -60.0f);
    EXPECT_EQ(params.thresholdDecay, 0.2f);
    EXPECT_EQ(params.maskWidth, 25.0f);
}

TEST(VXExtractParams, NewRecordHoldsTheDefaultsOfPairing)
{
    const VXExtractParams params;

    EXPECT_EQ(params.frequencyRange, 62u);
    EXPECT_EQ(params.timeRange, 126u);
    EXPECT_EQ(params.maxPairsPerPeak, 10u);
}

TEST(VXExtractParams, GettersOfANewRecordGiveTheDefaults)
{
    VXExtractParams params;

    EXPECT_EQ(params.getFftSize(), 512u);
    EXPECT_EQ(params.getHopSize(), 256u);
    EXPECT_EQ(params.getSampleRate(), 8000u);
    EXPECT_EQ(params.getMaxPairsPerPeak(), 10u);
}

TEST(VXExtractParams, FftSizeTakesEveryPowerOfTwoFromEightUpward)
{
    for (unsigned int bit = 3; bit < 32; ++bit) {
        VXExtractParams params;

        EXPECT_TRUE(params.setFftSize(1u << bit)) << "2^" << bit;
        EXPECT_EQ(params.getFftSize(), 1u << bit);
    }
}

TEST(VXExtractParams, FftSizeRefusesPowersOfTwoBelowEight)
{
    VXExtractParams params;

    EXPECT_FALSE(params.setFftSize(4));
    EXPECT_FALSE(params.setFftSize(2));
    EXPECT_FALSE(params.setFftSize(1));
}

TEST(VXExtractParams, FftSizeRefusesZero)
{
    VXExtractParams params;

    EXPECT_FALSE(params.setFftSize(0));
}

TEST(VXExtractParams, FftSizeRefusesMoreThanOneBit)
{
    VXExtractParams params;

    for (const unsigned int size :
         {5u, 6u, 7u, 9u, 12u, 511u, 513u, 768u, 0x80000001u, 0xFFFFFFFFu})
        EXPECT_FALSE(params.setFftSize(size)) << size;
}

TEST(VXExtractParams, RefusedFftSizeLeavesTheFieldAlone)
{
    VXExtractParams params;
    params.setFftSize(1024);

    params.setFftSize(768);

    EXPECT_EQ(params.getFftSize(), 1024u);
}

TEST(VXExtractParams, HopSizeRefusesZeroAndLeavesTheFieldAlone)
{
    VXExtractParams params;

    EXPECT_FALSE(params.setHopSize(0));
    EXPECT_EQ(params.getHopSize(), 256u);
}

TEST(VXExtractParams, HopSizeTakesOne)
{
    VXExtractParams params;

    EXPECT_TRUE(params.setHopSize(1));
    EXPECT_EQ(params.getHopSize(), 1u);
}

TEST(VXExtractParams, HopSizeMayExceedTheTransform)
{
    VXExtractParams params;

    EXPECT_TRUE(params.setHopSize(513));
    EXPECT_EQ(params.getHopSize(), 513u);
    EXPECT_EQ(params.getFftSize(), 512u);
}

TEST(VXExtractParams, SampleRateRefusesBelow4000AndLeavesTheFieldAlone)
{
    VXExtractParams params;

    EXPECT_FALSE(params.setSampleRate(3999));
    EXPECT_FALSE(params.setSampleRate(0));
    EXPECT_EQ(params.getSampleRate(), 8000u);
}

TEST(VXExtractParams, SampleRateTakes4000AndAbove)
{
    VXExtractParams params;

    EXPECT_TRUE(params.setSampleRate(4000));
    EXPECT_EQ(params.getSampleRate(), 4000u);
    EXPECT_TRUE(params.setSampleRate(std::numeric_limits<unsigned int>::max()));
    EXPECT_EQ(params.getSampleRate(), std::numeric_limits<unsigned int>::max());
}

TEST(VXExtractParams, MaxPairsPerPeakTakesAnyValueWhileItIsNotZero)
{
    VXExtractParams params;

    EXPECT_TRUE(params.setMaxPairsPerPeak(1));
    EXPECT_EQ(params.getMaxPairsPerPeak(), 1u);
    EXPECT_TRUE(params.setMaxPairsPerPeak(std::numeric_limits<unsigned int>::max()));
    EXPECT_EQ(params.getMaxPairsPerPeak(), std::numeric_limits<unsigned int>::max());
}

TEST(VXExtractParams, MaxPairsPerPeakTakesZeroOnce)
{
    VXExtractParams params;

    EXPECT_TRUE(params.setMaxPairsPerPeak(0));
    EXPECT_EQ(params.getMaxPairsPerPeak(), 0u);
}

TEST(VXExtractParams, MaxPairsPerPeakIsLockedAtZero)
{
    VXExtractParams params;
    params.setMaxPairsPerPeak(0);

    EXPECT_FALSE(params.setMaxPairsPerPeak(10));
    EXPECT_FALSE(params.setMaxPairsPerPeak(0));
    EXPECT_EQ(params.getMaxPairsPerPeak(), 0u);
}

TEST(VXExtractParams, CopyDoesNotFollowItsSource)
{
    VXExtractParams source;
    VXExtractParams copy(source);

    source.setHopSize(100);

    EXPECT_EQ(copy.getHopSize(), 256u);
}

TEST(VXExtractParams, IsTwelveFieldsOf32BitsWithTheHiddenOnesFirst)
{
    const VXExtractParams params;
    const auto* start = reinterpret_cast<const unsigned char*>(&params);
    const auto place = [start](const void* field) {
        return static_cast<const unsigned char*>(field) - start;
    };

    EXPECT_EQ(sizeof(VXExtractParams), 48u);
    EXPECT_EQ(place(&params.frequencyRange), 0);
    EXPECT_EQ(place(&params.maskWidth), 28);
    EXPECT_EQ(place(&params.fftSize), 32);
    EXPECT_EQ(place(&params.maxPairsPerPeak), 44);
}

} // namespace
} // namespace VXS
