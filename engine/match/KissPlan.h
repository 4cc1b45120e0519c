#ifndef VXL_SYNC_KISSPLAN_H
#define VXL_SYNC_KISSPLAN_H

#include <cstddef>
#include <memory>

#include <kiss_fftr.h>

namespace vxlsync
{

// A plan of KissFFT in memory of ours, so that there being none is std::bad_alloc. `allocate` is
// the function of the library that makes such plans.
template <typename State, State* (*allocate)(int, int, void*, std::size_t*)>
class KissPlan
{
public:
    KissPlan(std::size_t length, bool isInverse)
    {
        std::size_t bytes = 0;
        allocate(static_cast<int>(length), isInverse ? 1 : 0, nullptr, &bytes);
        memory = std::make_unique<std::byte[]>(bytes);
        state = allocate(static_cast<int>(length), isInverse ? 1 : 0, memory.get(), &bytes);
    }

    State* get() const { return state; }

private:
    std::unique_ptr<std::byte[]> memory;
    State* state;
};

using ComplexPlan = KissPlan<kiss_fft_state, kiss_fft_alloc>;
using RealPlan = KissPlan<kiss_fftr_state, kiss_fftr_alloc>;

} // namespace vxlsync

#endif
