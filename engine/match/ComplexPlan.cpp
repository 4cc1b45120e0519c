#include "match/ComplexPlan.h"

namespace vxlsync
{

ComplexPlan::ComplexPlan(std::size_t length, bool newIsInverse)
    : isInverse(newIsInverse),
      plan(length),
      samples(length),
      ofReal(length / 2 + 1),
      ofImaginary(length / 2 + 1)
{
}

// The inverse is the transform of the conjugated numbers, itself conjugated.
void ComplexPlan::transform(const std::complex<float>* in, std::complex<float>* out)
{
    const std::size_t count = samples.size();
    const std::size_t half = count / 2;
    const float sense = isInverse ? -1.0f : 1.0f;
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = in[i].real();
    plan.forward(samples.data(), ofReal.data());
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = sense * in[i].imag();
    plan.forward(samples.data(), ofImaginary.data());

    out[0] = {ofReal[0].real(), sense * ofImaginary[0].real()};
    out[half] = {ofReal[half].real(), sense * ofImaginary[half].real()};
    for (std::size_t k = 1; k < half; ++k) {
        const std::complex<float> real = ofReal[k];
        const std::complex<float> imaginary = ofImaginary[k];
        out[k] = {real.real() - imaginary.imag(), sense * (real.imag() + imaginary.real())};
        out[count - k] = {real.real() + imaginary.imag(), sense * (imaginary.real() - real.imag())};
    }
}

} // namespace vxlsync
