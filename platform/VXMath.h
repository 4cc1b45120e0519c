#ifndef VXS_VXMATH_H
#define VXS_VXMATH_H

#include <cmath>
#include <cstdint>
#include <cstring>

namespace VXS
{

// Mathematics that gives the same bits on every platform. The mathematics libraries of the
// platforms differ in the last bit of their functions, and a level that is another by one bit can
// be another peak. On Linux the bits are those of glibc.

// One part of the range from 0.7 to 1.4, by a number c within it.
struct LogarithmCell {
    double reciprocal;
    double logarithm;
};

inline constexpr LogarithmCell logarithmCells[16] = {
    {0x1.661ec79f8f3bep+0, -0x1.57bf7808caadep-2}, {0x1.571ed4aaf883dp+0, -0x1.2bef0a7c06ddbp-2},
    {0x1.49539f0f010bp+0, -0x1.01eae7f513a67p-2},  {0x1.3c995b0b80385p+0, -0x1.b31d8a68224e9p-3},
    {0x1.30d190c8864a5p+0, -0x1.6574f0ac07758p-3}, {0x1.25e227b0b8eap+0, -0x1.1aa2bc79c81p-3},
    {0x1.1bb4a4a1a343fp+0, -0x1.a4e76ce8c0e5ep-4}, {0x1.12358f08ae5bap+0, -0x1.1973c5a611cccp-4},
    {0x1.0953f419900a7p+0, -0x1.252f438e10c1ep-5}, {0x1p+0, 0x0p+0},
    {0x1.e608cfd9a47acp-1, 0x1.aa5aa5df25984p-5},  {0x1.ca4b31f026aap-1, 0x1.c5e53aa362eb4p-4},
    {0x1.b2036576afce6p-1, 0x1.526e57720db08p-3},  {0x1.9c2d163a1aa2dp-1, 0x1.bc2860d22477p-3},
    {0x1.886e6037841edp-1, 0x1.1058bc8a07ee1p-2},  {0x1.767dcf5534862p-1, 0x1.4043057b6ee09p-2},
};

inline constexpr std::uint32_t leastNormal = 0x00800000u;
inline constexpr std::uint32_t infinityBits = 0x7F800000u;

inline std::uint32_t bitsOf(float number)
{
    std::uint32_t bits;
    std::memcpy(&bits, &number, sizeof(bits));
    return bits;
}

inline float floatOf(std::uint32_t bits)
{
    float number;
    std::memcpy(&number, &bits, sizeof(number));
    return number;
}

// The natural logarithm in single precision. A number is 2^k times z with z from 0.7 to 1.4. With c
// and log(c) of z's cell, r = z / c - 1 is small, and the logarithm is k log(2) + log(c) + log(1 +
// r), the last by a polynomial: all in double precision, and rounded once at the end.
inline float naturalLogarithm(float number)
{
    constexpr double log2 = 0x1.62e42fefa39efp-1;
    constexpr double second = -0x1.ffffef20a4123p-2;
    constexpr double third = 0x1.5575b0be00b6ap-2;
    constexpr double fourth = -0x1.00ea348b88334p-2;
    constexpr std::uint32_t leastZ = 0x3F330000u;
    const std::uint32_t bits = bitsOf(number);
    if (bits - leastNormal >= infinityBits - leastNormal) return std::log(number);

    const std::uint32_t aboveLeastZ = bits - leastZ;
    const LogarithmCell& cell = logarithmCells[(aboveLeastZ >> 19u) & 15u];
    const std::int32_t twos = static_cast<std::int32_t>(aboveLeastZ) >> 23;
    const auto z = static_cast<double>(floatOf(bits - (aboveLeastZ & 0xFF800000u)));
    const double r = z * cell.reciprocal - 1.0;
    const double sum = cell.logarithm + static_cast<double>(twos) * log2;
    const double r2 = r * r;
    const double higher = fourth * r2 + (third * r + second);
    return static_cast<float>(higher * r2 + (sum + r));
}

// e to the power of a number that is not positive, the same on every platform: double precision
// makes the one rounding at the end the right one.
inline float exponential(float exponent)
{
    constexpr double twosPerE = 1.4426950408889634;
    constexpr double log2High = 0x1.62e42fee00000p-1;
    constexpr double log2Low = 0x1.a39ef35793c76p-33;
    constexpr float leastExponent = -150.0f;
    constexpr int terms = 14;
    // Far below the least number that single precision holds.
    if (exponent < leastExponent) return 0.0f;
    if (std::isnan(exponent)) return exponent;
    const auto x = static_cast<double>(exponent);
    const double twos = std::floor(x * twosPerE + 0.5);
    const double rest = (x - twos * log2High) - twos * log2Low;
    double term = 1.0;
    double sum = 1.0;
    for (int n = 1; n <= terms; ++n) {
        term *= rest / static_cast<double>(n);
        sum += term;
    }
    return static_cast<float>(std::ldexp(sum, static_cast<int>(twos)));
}

// The level of digital silence, about -313 dB; it spares the logarithm its infinity.
inline constexpr float silence = 2.2204e-16f;

// The level in dB of a magnitude, in this order and with a rounding at each step: all that compares
// levels rests on these bits.
inline float levelOf(float magnitude)
{
    const float shifted = magnitude + silence;
    const float natural = naturalLogarithm(shifted);
    const float decades = natural / 2.3025851f;
    return decades * 20.0f;
}

} // namespace VXS

#endif
