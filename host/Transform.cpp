#include "Transform.h"

#include <new>

#include <kiss_fftr.h>

namespace vxlsync
{

namespace
{

struct Free {
    void operator()(kiss_fftr_state* state) const { kiss_fftr_free(state); }
};

using State = std::unique_ptr<kiss_fftr_state, Free>;

bool isSmooth(std::size_t number)
{
    for (const std::size_t factor : {std::size_t{2}, std::size_t{3}, std::size_t{5}}) {
        while (number % factor == 0)
            number /= factor;
    }
    return number == 1;
}

} // namespace

// Both directions are made when they are first asked for: at millions of samples each costs as much
// memory as the samples themselves, and most threads need one of them only.
struct Transform::Plan {
    State ahead;
    State back;
};

std::size_t fastLength(std::size_t samples)
{
    std::size_t length = samples < 2 ? 2 : samples + samples % 2;
    while (!isSmooth(length))
        length += 2;
    return length;
}

Transform::Transform(std::size_t newLength) : samples(newLength), plan(std::make_unique<Plan>()) {}

Transform::~Transform() = default;

void Transform::forward(const float* in, std::complex<float>* out)
{
    if (!plan->ahead)
        plan->ahead.reset(kiss_fftr_alloc(static_cast<int>(samples), 0, nullptr, nullptr));
    if (!plan->ahead) throw std::bad_alloc();
    kiss_fftr(plan->ahead.get(), in, reinterpret_cast<kiss_fft_cpx*>(out));
}

void Transform::inverse(const std::complex<float>* in, float* out)
{
    if (!plan->back)
        plan->back.reset(kiss_fftr_alloc(static_cast<int>(samples), 1, nullptr, nullptr));
    if (!plan->back) throw std::bad_alloc();
    kiss_fftri(plan->back.get(), reinterpret_cast<const kiss_fft_cpx*>(in), out);
}

} // namespace vxlsync
