#include "match/Rotations.h"

#include <cmath>

#include <gtest/gtest.h>

namespace
{

using vxlsync::Rotations;

TEST(Rotations, AreRightToTheLastBitOfAFloatAndALittle)
{
    constexpr std::size_t order = 3u << 20u;
    // Half a step of a float below 1, and what double precision adds.
    constexpr double rounding = 0.6e-7 / 2.0 + 1e-14;
    const Rotations rotations(order);

    for (std::size_t index = 0; index < order; index += 997) {
        const double angle =
            -2.0 * std::acos(-1.0) * static_cast<double>(index) / static_cast<double>(order);
        const std::complex<float> root = rotations.at(index);
        ASSERT_NEAR(root.real(), std::cos(angle), rounding) << index;
        ASSERT_NEAR(root.imag(), std::sin(angle), rounding) << index;
    }
}

TEST(Rotations, OfSmallOrdersAreWhole)
{
    EXPECT_EQ(Rotations(1).at(0), std::complex<float>(1.0f, 0.0f));
    const Rotations quarters(4);
    EXPECT_NEAR(quarters.at(1).imag(), -1.0f, 1e-7f);
    EXPECT_NEAR(quarters.at(3).imag(), 1.0f, 1e-7f);
    EXPECT_NEAR(quarters.at(2).real(), -1.0f, 1e-7f);
}

} // namespace
