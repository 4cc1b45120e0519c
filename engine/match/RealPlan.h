#ifndef VXL_SYNC_REALPLAN_H
#define VXL_SYNC_REALPLAN_H

#include <complex>
#include <cstddef>
#include <memory>
#include <vector>

#include <vxaccelerate/transform.h>

namespace vxlsync
{

// The shortest length that the provider of the transform serves.
constexpr std::size_t shortestPlan = 8;

// Real transform of a power of two of samples by the provider that the landmark library has too,
// and its inverse. Works in buffers of its own.
class RealPlan
{
public:
    // Requires a power of two of at least shortestPlan.
    explicit RealPlan(std::size_t newLength);

    std::size_t length() const { return samples; }
    // `in` holds length() samples, `out` takes length() / 2 + 1 bins.
    void forward(const float* in, std::complex<float>* out);
    // The samples times the length. The imaginary parts of the first and the last bin do not count.
    void inverse(const std::complex<float>* in, float* out);

private:
    struct Free {
        void operator()(vxaccelerate::FFTState_Float* owned) const
        {
            vxaccelerate::transform::FFTFree(owned);
        }
    };

    std::size_t samples;
    std::unique_ptr<vxaccelerate::FFTState_Float, Free> state;
    std::unique_ptr<unsigned char[]> work;
    // Of the inverse, made when it is first asked for.
    std::vector<float> folded;
    std::vector<std::complex<float>> bins;
};

} // namespace vxlsync

#endif
