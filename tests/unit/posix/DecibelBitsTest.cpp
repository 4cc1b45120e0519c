#include <cmath>
#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

#include "VXLandmarkExtract.h"

// The library's logarithm is that of glibc to the bit, so the comparison needs glibc.

namespace
{

using VXS::VXExtractParams;
using VXS::VXLandmarkExtract;

float fromBits(std::uint32_t bits)
{
    float value = 0.0f;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

// The level by its constants' bits, one rounding a step.
float levelByBits(float magnitude)
{
    const float shifted = magnitude + fromBits(0x257FFEA4u);
    const float natural = std::log(shifted);
    const float decades = natural / fromBits(0x40135D8Eu);
    return decades * fromBits(0x41A00000u);
}

} // namespace

TEST(DecibelBits, IsWorkedOutInItsOrderAndWithItsConstantsToTheBit)
{
    VXLandmarkExtract extractor{VXExtractParams()};

    float magnitude = 1.0e-20f;
    for (int i = 0; i < 20000; ++i) {
        ASSERT_EQ(levelByBits(magnitude), extractor.dB(magnitude)) << magnitude;
        magnitude *= 1.005f;
    }
    EXPECT_EQ(levelByBits(0.0f), extractor.dB(0.0f));
}
