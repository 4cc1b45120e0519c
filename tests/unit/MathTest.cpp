// The functions of the platform's own mathematics, each alone.
#include "VXMath.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace VXS
{
namespace
{

constexpr float infinity = std::numeric_limits<float>::infinity();

TEST(NaturalLogarithm, OfOneIsZero)
{
    EXPECT_EQ(0.0f, naturalLogarithm(1.0f));
}

// 88.72283905..., and 88.722839355 is the nearest number of single precision.
TEST(NaturalLogarithm, OfTheGreatestNumber)
{
    EXPECT_EQ(0x1.62e43p+6f, naturalLogarithm(std::numeric_limits<float>::max()));
}

TEST(NaturalLogarithm, OfWhatHasNoneIsThatOfTheStandard)
{
    EXPECT_EQ(-infinity, naturalLogarithm(0.0f));
    EXPECT_EQ(infinity, naturalLogarithm(infinity));
    EXPECT_TRUE(std::isnan(naturalLogarithm(-1.0f)));
}

TEST(Exponential, OfZeroIsOne)
{
    EXPECT_EQ(1.0f, exponential(0.0f));
}

// 0.36787944117..., which lies between 0x1.78b562p-2 and 0x1.78b564p-2, nearer to the second.
TEST(Exponential, OfMinusOne)
{
    EXPECT_EQ(0x1.78b564p-2f, exponential(-1.0f));
}

TEST(Exponential, FarBelowZeroIsZero)
{
    EXPECT_EQ(0.0f, exponential(-150.5f));
    EXPECT_EQ(0.0f, exponential(-infinity));
}

TEST(Exponential, OfNotANumberIsNotANumber)
{
    EXPECT_TRUE(std::isnan(exponential(std::numeric_limits<float>::quiet_NaN())));
}

// The addend is lost beside 1, and nothing is left beside it of a magnitude of 0:
// 20 * ln(2.2204e-16) / 2.3025851 = -313.07.
TEST(LevelOf, OneIsZeroAndSilenceIsTheLeast)
{
    EXPECT_EQ(0.0f, levelOf(1.0f));
    EXPECT_NEAR(-313.07f, levelOf(0.0f), 0.005f);
}

} // namespace
} // namespace VXS
