#include "match/RealPlan.h"

#include <algorithm>
#include <array>

namespace vxlsync
{

namespace
{

// Samples whose sums are kept apart, so that rounding grows with the root of the length at most.
constexpr std::size_t samplesPerSum = 4096;

// The bin at half the rate, which the provider does not deliver: the samples added up with
// alternating signs.
float alternatingSum(const float* samples, std::size_t count)
{
    double whole = 0.0;
    for (std::size_t from = 0; from < count; from += samplesPerSum) {
        std::array<float, shortestPlan> sums{};
        const std::size_t to = std::min(count, from + samplesPerSum);
        for (std::size_t at = from; at < to; at += shortestPlan) {
            for (std::size_t i = 0; i < shortestPlan; ++i)
                sums[i] += samples[at + i];
        }
        for (std::size_t i = 0; i < shortestPlan; i += 2)
            whole += static_cast<double>(sums[i] - sums[i + 1]);
    }
    return static_cast<float>(whole);
}

unsigned orderOf(std::size_t length)
{
    unsigned order = 0;
    while ((std::size_t{1} << order) < length)
        ++order;
    return order;
}

} // namespace

RealPlan::RealPlan(std::size_t newLength) : samples(newLength)
{
    vxaccelerate::FFTState_Float* made = nullptr;
    vxaccelerate::transform::FFTInit(&made, orderOf(samples));
    state.reset(made);
    unsigned bytes = 0;
    vxaccelerate::transform::FFTGetBufSize(made, &bytes);
    work.reset(new unsigned char[bytes]);
}

void RealPlan::forward(const float* in, std::complex<float>* out)
{
    vxaccelerate::transform::FFTFwd(in, reinterpret_cast<float*>(out), state.get(), work.get());
    out[samples / 2] = alternatingSum(in, samples);
}

// By the Hartley transform, which is its own inverse: the samples are the sum of real and imaginary
// part of a transform of the bins' real less their imaginary parts (R. Bracewell, "Discrete Hartley
// transform", Journal of the Optical Society of America, 1983).
void RealPlan::inverse(const std::complex<float>* in, float* out)
{
    const std::size_t half = samples / 2;
    folded.resize(samples);
    bins.resize(half);
    folded[0] = in[0].real();
    folded[half] = in[half].real();
    for (std::size_t k = 1; k < half; ++k) {
        folded[k] = in[k].real() - in[k].imag();
        folded[samples - k] = in[k].real() + in[k].imag();
    }
    vxaccelerate::transform::FFTFwd(folded.data(), reinterpret_cast<float*>(bins.data()),
                                    state.get(), work.get());
    out[0] = bins[0].real();
    out[half] = alternatingSum(folded.data(), samples);
    for (std::size_t n = 1; n < half; ++n) {
        out[n] = bins[n].real() - bins[n].imag();
        out[samples - n] = bins[n].real() + bins[n].imag();
    }
}

} // namespace vxlsync
