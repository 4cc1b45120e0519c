#ifndef VXL_SYNC_TRANSFORM_H
#define VXL_SYNC_TRANSFORM_H

#include <complex>
#include <cstddef>
#include <memory>
#include <vector>

#include "running/Interrupt.h"

namespace vxlsync
{

using Spectrum = std::vector<std::complex<float>>;

// The least length of a transform that is not below `samples`: a power of two.
std::size_t fastLength(std::size_t samples);

// Real transform of one length and its inverse. An object has scratch space of its own, so that
// each thread needs its own object. The inverse of the forward gives the samples times the length.
class Transform
{
public:
    // Requires a length that fastLength gives.
    explicit Transform(std::size_t newLength);
    // The same for a transform that asks whether the job shall end, at its start and, if it is
    // long, now and then: forward and inverse throw Cancelled then, and leave anything in `out`.
    // Borrows the interrupt.
    Transform(std::size_t newLength, const Interrupt& newInterrupt);
    ~Transform();
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;

    std::size_t length() const { return samples; }
    std::size_t bins() const { return samples / 2 + 1; }
    // `in` holds length() samples, `out` takes bins() values.
    void forward(const float* in, std::complex<float>* out);
    // `in` holds bins() values, `out` takes length() samples.
    void inverse(const std::complex<float>* in, float* out);

private:
    struct Plan;

    Transform(std::size_t newLength, const Interrupt* newInterrupt);

    std::size_t samples;
    const Interrupt* interrupt;
    std::unique_ptr<Plan> plan;
};

} // namespace vxlsync

#endif
