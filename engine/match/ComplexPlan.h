#ifndef VXL_SYNC_COMPLEXPLAN_H
#define VXL_SYNC_COMPLEXPLAN_H

#include <complex>
#include <cstddef>
#include <vector>

#include "match/RealPlan.h"

namespace vxlsync
{

// Complex transform, one way or the other, of a power of two of numbers: real and imaginary parts
// are two real transforms. Works in buffers of its own.
class ComplexPlan
{
public:
    // Requires a power of two of at least shortestPlan.
    ComplexPlan(std::size_t length, bool newIsInverse);

    // `in` and `out` hold as many numbers as the length and may not overlap.
    void transform(const std::complex<float>* in, std::complex<float>* out);

private:
    bool isInverse;
    RealPlan plan;
    std::vector<float> samples;
    std::vector<std::complex<float>> ofReal;
    std::vector<std::complex<float>> ofImaginary;
};

} // namespace vxlsync

#endif
