#include "match/Transform.h"

#include "match/LongTransform.h"
#include "match/RealPlan.h"

namespace vxlsync
{

namespace
{

// Beyond this length, which takes eight megabytes there and as much back, a processor's caches no
// longer help a transform at once, and going by rows and columns is the faster way.
constexpr std::size_t longestAtOnce = std::size_t{1} << 21U;

} // namespace

struct Transform::Plan {
    // One of the two.
    std::unique_ptr<LongTransform> byParts;
    std::unique_ptr<RealPlan> atOnce;
};

std::size_t fastLength(std::size_t samples)
{
    std::size_t length = shortestPlan;
    while (length < samples)
        length *= 2;
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
    if (samples <= longestAtOnce)
        plan->atOnce = std::make_unique<RealPlan>(samples);
    else
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
    plan->atOnce->forward(in, out);
}

void Transform::inverse(const std::complex<float>* in, float* out)
{
    if (interrupt) interrupt->check();
    if (plan->byParts) {
        plan->byParts->inverse(in, out);
        return;
    }
    plan->atOnce->inverse(in, out);
}

} // namespace vxlsync
