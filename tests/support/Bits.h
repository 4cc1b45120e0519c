#ifndef VXS_TESTS_SUPPORT_BITS_H
#define VXS_TESTS_SUPPORT_BITS_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace support
{

inline std::uint32_t bitsOf(float value)
{
    std::uint32_t pattern;
    std::memcpy(&pattern, &value, sizeof pattern);
    return pattern;
}

// Equal to the bit. What is not a number equals what is not a number, since its sign and payload
// are the compiler's choice.
inline bool sameBits(float left, float right)
{
    if (std::isnan(left) && std::isnan(right)) return true;
    return bitsOf(left) == bitsOf(right);
}

inline bool sameBits(const float* left, const float* right, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (!sameBits(left[i], right[i])) return false;
    }
    return true;
}

} // namespace support

#endif
