#include "VXClusterSyncParams.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

#include <gtest/gtest.h>

#include "VXExtractParams.h"

namespace VXS
{
namespace
{

std::uint32_t bitsOf(float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

VXExtractParams extractParams(unsigned int sampleRate, unsigned int hopSize)
{
    VXExtractParams params;
    params.setSampleRate(sampleRate);
    params.setHopSize(hopSize);
    return params;
}

TEST(VXClusterSyncParams, MinPercentMatchHasTheBitsOfAQuarterPercent)
{
    const VXClusterSyncParams params{VXExtractParams()};

    EXPECT_EQ(bitsOf(params.getMinPercentMatch()), 0x3B23D70Au);
}

TEST(VXClusterSyncParams, ConstantsDoNotDependOnTheExtraction)
{
    const VXClusterSyncParams params(extractParams(44100, 441));

    EXPECT_EQ(params.getMinOverlapLengthInSeconds(), 3.0f);
    EXPECT_EQ(params.getMinTemplateMatchLengthInSeconds(), 3.0f);
    EXPECT_EQ(params.getMaxLandmarkCount(), 250u);
    EXPECT_EQ(params.getMinLandmarksPerEstimate(), 5u);
    EXPECT_EQ(bitsOf(params.getMinPercentMatch()), 0x3B23D70Au);
}

TEST(VXClusterSyncParams, DefaultsGiveExactly31AndAQuarterFramesPerSecond)
{
    const VXClusterSyncParams params{VXExtractParams()};

    // 8000 / 256
    EXPECT_EQ(params.getAudioFramesPerSecond(), 31.25f);
    EXPECT_EQ(params.getHopSize(), 256u);
    EXPECT_EQ(params.sampleRate, 8000u);
}

TEST(VXClusterSyncParams, FramesPerSecondOf44100And441AreExactly100)
{
    const VXClusterSyncParams params(extractParams(44100, 441));

    EXPECT_EQ(params.getAudioFramesPerSecond(), 100.0f);
    EXPECT_EQ(params.getHopSize(), 441u);
    EXPECT_EQ(params.sampleRate, 44100u);
}

TEST(VXClusterSyncParams, FramesPerSecondAreNotRounded)
{
    const VXClusterSyncParams params(extractParams(8000, 300));

    EXPECT_EQ(params.getAudioFramesPerSecond(), 8000.0f / 300.0f);
}

TEST(VXClusterSyncParams, FramesPerSecondAreFormedInSinglePrecision)
{
    // 16777217 = 2^24 + 1 lies half way between two floats and goes to the even one, 16777216.
    const VXClusterSyncParams params(extractParams(16777217, 1));

    EXPECT_EQ(params.getAudioFramesPerSecond(), 16777216.0f);
}

TEST(VXClusterSyncParams, FramesPerSecondTakeTheRateAsUnsigned)
{
    const VXClusterSyncParams params(extractParams(0x80000000u, 0x40000000u));

    EXPECT_EQ(params.getAudioFramesPerSecond(), 2.0f);
}

TEST(VXClusterSyncParams, DoesNotFollowLaterChangesOfTheExtraction)
{
    VXExtractParams source;
    const VXClusterSyncParams params(source);

    source.setHopSize(100);
    source.setSampleRate(48000);

    EXPECT_EQ(params.getHopSize(), 256u);
    EXPECT_EQ(params.getAudioFramesPerSecond(), 31.25f);
}

TEST(VXClusterSyncParams, IsMadeFromAnExtractionAlone)
{
    EXPECT_FALSE(std::is_default_constructible_v<VXClusterSyncParams>);
    EXPECT_TRUE((std::is_constructible_v<VXClusterSyncParams, const VXExtractParams&>));
    EXPECT_TRUE(std::is_copy_constructible_v<VXClusterSyncParams>);
}

TEST(VXClusterSyncParams, IsEightFieldsOf32BitsInTheirOrder)
{
    const VXClusterSyncParams params{VXExtractParams()};
    const auto* start = reinterpret_cast<const unsigned char*>(&params);
    const auto place = [start](const void* field) {
        return static_cast<const unsigned char*>(field) - start;
    };

    EXPECT_EQ(sizeof(VXClusterSyncParams), 32u);
    EXPECT_EQ(place(&params.minPercentMatch), 0);
    EXPECT_EQ(place(&params.minOverlapLengthInSeconds), 4);
    EXPECT_EQ(place(&params.minTemplateMatchLengthInSeconds), 8);
    EXPECT_EQ(place(&params.maxLandmarkCount), 12);
    EXPECT_EQ(place(&params.minLandmarksPerEstimate), 16);
    EXPECT_EQ(place(&params.audioFramesPerSecond), 20);
    EXPECT_EQ(place(&params.hopSize), 24);
    EXPECT_EQ(place(&params.sampleRate), 28);
}

} // namespace
} // namespace VXS
