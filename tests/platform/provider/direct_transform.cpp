#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdio>
#include <vector>

#include "vxaccelerate/transform.h"

// A second provider of the transform, as plain as can be: it shows that another one takes the place
// of ours at link time, and that the tests of the interface do not depend on ours. It announces
// itself on the error stream, so that a test can tell which provider a library was linked with.
namespace vxaccelerate
{

struct FFTState_Float {
    std::size_t size;
};

namespace transform
{

namespace
{

using Complex = std::complex<double>;

constexpr double pi = 3.14159265358979323846;

// The even and the odd samples apart, each by the same rule.
std::vector<Complex> transformed(const std::vector<Complex>& samples)
{
    const std::size_t size = samples.size();
    if (size == 1) return samples;

    std::vector<Complex> even;
    std::vector<Complex> odd;
    for (std::size_t i = 0; i < size; i += 2) {
        even.push_back(samples[i]);
        odd.push_back(samples[i + 1]);
    }
    even = transformed(even);
    odd = transformed(odd);

    std::vector<Complex> bins(size);
    for (std::size_t i = 0; i < size / 2; ++i) {
        const double angle = -2.0 * pi * static_cast<double>(i) / static_cast<double>(size);
        const Complex turned = std::polar(1.0, angle) * odd[i];
        bins[i] = even[i] + turned;
        bins[i + size / 2] = even[i] - turned;
    }
    return bins;
}

} // namespace

int FFTInit(FFTState_Float** state, unsigned order)
{
    *state = nullptr;
    if (order >= 31u) return 1;
    *state = new FFTState_Float{std::size_t{1} << order};
    std::fprintf(stderr, "direct transform of order %u\n", order);
    return 0;
}

int FFTGetBufSize(const FFTState_Float* state, unsigned* bytes)
{
    *bytes = 0;
    return state == nullptr ? 1 : 0;
}

int FFTFwd(const float* in, float* out, const FFTState_Float* state, unsigned char*)
{
    if (in == nullptr || out == nullptr || state == nullptr) return 1;
    const std::vector<Complex> bins = transformed(std::vector<Complex>(in, in + state->size));
    for (std::size_t i = 0; i < state->size / 2; ++i) {
        out[2 * i] = static_cast<float>(bins[i].real());
        out[2 * i + 1] = static_cast<float>(bins[i].imag());
    }
    return 0;
}

int FFTFree(FFTState_Float* state)
{
    delete state;
    return 0;
}

} // namespace transform

} // namespace vxaccelerate
