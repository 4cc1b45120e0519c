#include "VXLandmark.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "VXFile.h"

namespace VXS
{
namespace
{

TEST(VXLandmark, KeepsWhatItIsGiven)
{
    VXFile file(7);

    const VXLandmark landmark(-3, &file, 0x12345678u);

    EXPECT_EQ(landmark.offset, -3);
    EXPECT_EQ(landmark.file, &file);
    EXPECT_EQ(landmark.key, 0x12345678u);
}

TEST(VXLandmark, OffsetIsSignExtended)
{
    const VXLandmark least(std::numeric_limits<std::int32_t>::min(), nullptr, 0);
    const VXLandmark greatest(std::numeric_limits<std::int32_t>::max(), nullptr, 0);

    EXPECT_EQ(least.getOffset(), INT64_C(-2147483648));
    EXPECT_EQ(greatest.getOffset(), INT64_C(2147483647));
}

TEST(VXLandmark, FileIdIsThatOfTheFile)
{
    VXFile file(INT64_C(-5000000000));

    const VXLandmark landmark(0, &file, 0);

    EXPECT_EQ(landmark.getFileID(), INT64_C(-5000000000));
}

TEST(VXLandmark, FileIdWithoutAFileIsZero)
{
    const VXLandmark landmark(10, nullptr, 0);

    EXPECT_EQ(landmark.getFileID(), 0);
}

TEST(VXLandmark, KeyHoldsTheNeighboursBinInBits0To9)
{
    EXPECT_EQ(VXLandmark::packKey(0, 1, 0), 0x00000001u);
    EXPECT_EQ(VXLandmark::packKey(0, 1023, 0), 0x000003FFu);
}

TEST(VXLandmark, KeyHoldsTheAnchorsBinInBits10To19)
{
    EXPECT_EQ(VXLandmark::packKey(1, 0, 0), 0x00000400u);
    EXPECT_EQ(VXLandmark::packKey(1023, 0, 0), 0x000FFC00u);
}

TEST(VXLandmark, KeyHoldsTheFramesBetweenInBits20To29)
{
    EXPECT_EQ(VXLandmark::packKey(0, 0, 1), 0x00100000u);
    EXPECT_EQ(VXLandmark::packKey(0, 0, 1023), 0x3FF00000u);
}

TEST(VXLandmark, KeyPacksAllThreeSideBySide)
{
    // 126 * 2^20 + 254 * 2^10 + 47
    EXPECT_EQ(VXLandmark::packKey(254, 47, 126), 0x07E3F82Fu);
}

TEST(VXLandmark, KeyWrapsABinOf1024ToZero)
{
    EXPECT_EQ(VXLandmark::packKey(1024, 1024, 1024), VXLandmark::packKey(0, 0, 0));
    EXPECT_EQ(VXLandmark::packKey(1025, 1026, 1027), VXLandmark::packKey(1, 2, 3));
}

TEST(VXLandmark, KeyLeavesBits30And31AtZero)
{
    EXPECT_EQ(VXLandmark::packKey(-1, -1, -1), 0x3FFFFFFFu);
}

TEST(VXLandmark, FieldsStandInTheirOrder)
{
    const VXLandmark landmark(0, nullptr, 0);

    EXPECT_LT(static_cast<const void*>(&landmark.offset), static_cast<const void*>(&landmark.file));
    EXPECT_LT(static_cast<const void*>(&landmark.file), static_cast<const void*>(&landmark.key));
}

} // namespace
} // namespace VXS
