#include "match/Transform.h"

#include <optional>

#include "match/KissPlan.h"
#include "match/LongTransform.h"

namespace vxlsync
{

namespace
{

// Beyond this length, which takes two megabytes there and as much back, the caches next to a
// processor no longer hold a transform at once, and going by rows and columns is the faster way.
constexpr std::size_t longestAtOnce = std::size_t{1} << 19U;

using OptionalPlan = std::optional<RealPlan>;

// Most threads need one direction only, so that each is made when it is first asked for.
kiss_fftr_state* stateOf(OptionalPlan& plan, std::size_t length, bool isInverse)
{
    if (!plan) plan.emplace(length, isInverse);
    return plan->get();
}

bool isSmooth(std::size_t number)
{
    for (const std::size_t factor : {std::size_t{2}, std::size_t{3}, std::size_t{5}}) {
        while (number % factor == 0)
            number /= factor;
    }
    return number == 1;
}

} // namespace

struct Transform::Plan {
    // Null for short lengths.
    std::unique_ptr<LongTransform> byParts;
    OptionalPlan ahead;
    OptionalPlan back;
};

std::size_t fastLength(std::size_t samples)
{
    std::size_t length = samples < 2 ? 2 : samples + samples % 2;
    while (!isSmooth(length))
        length += 2;
    return length;
}

Transform::Transform(std::size_t newLength) : Transform(newLength, nullptr) {}

Transform::Transform(std::size_t newLength, const Interrupt& newInterrupt)
    : Transform(newLength, &newInterrupt)
{
}

Transform::Transform(std::size_t newLength, const Interrupt* newInterrupt)
    : samples(newLength), interrupt(newInterrupt), plan(std::make_unique<Plan>())
{
    if (samples > longestAtOnce)
        plan->byParts = std::make_unique<LongTransform>(samples, newInterrupt);
}

Transform::~Transform() = default;

void Transform::forward(const float* in, std::complex<float>* out)
{
    if (interrupt) interrupt->check();
    if (plan->byParts) {
        plan->byParts->forward(in, out);
        return;
    }
    kiss_fftr(stateOf(plan->ahead, samples, false), in, reinterpret_cast<kiss_fft_cpx*>(out));
}

void Transform::inverse(const std::complex<float>* in, float* out)
{
    if (interrupt) interrupt->check();
    if (plan->byParts) {
        plan->byParts->inverse(in, out);
        return;
    }
    kiss_fftri(stateOf(plan->back, samples, true), reinterpret_cast<const kiss_fft_cpx*>(in), out);
}

} // namespace vxlsync
