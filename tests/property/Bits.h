#ifndef PROPERTY_BITS_H
#define PROPERTY_BITS_H

#include <cstddef>
#include <ios>
#include <vector>

#include <gtest/gtest.h>

#include "support/Bits.h"

namespace property
{

using support::bitsOf;
using support::sameBits;

inline testing::AssertionResult sameFloat(float left, float right)
{
    if (sameBits(left, right)) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << left << " (0x" << std::hex << bitsOf(left) << ") and " << std::dec << right << " (0x"
           << std::hex << bitsOf(right) << ")";
}

inline testing::AssertionResult sameFloats(const float* left, const float* right, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (!sameBits(left[i], right[i])) {
            return testing::AssertionFailure()
                   << "element " << i << ": " << sameFloat(left[i], right[i]).message();
        }
    }
    return testing::AssertionSuccess();
}

inline testing::AssertionResult sameFloats(const std::vector<float>& left,
                                           const std::vector<float>& right)
{
    if (left.size() != right.size()) {
        return testing::AssertionFailure() << left.size() << " and " << right.size() << " elements";
    }
    return sameFloats(left.data(), right.data(), left.size());
}

} // namespace property

#endif
