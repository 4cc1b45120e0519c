#ifndef VXL_SYNC_RUN_H
#define VXL_SYNC_RUN_H

#include <cstddef>

#include "running/Interrupt.h"
#include "running/MemoryBudget.h"
#include "running/Meter.h"

namespace vxlsync
{

// What the steps of one job run on.
struct Run {
    Run(std::size_t newThreads, std::size_t memoryBytes, const Callbacks& callbacks);

    // At least 1.
    const std::size_t threads;
    const Interrupt interrupt;
    Meter meter;
    MemoryBudget memory;
};

} // namespace vxlsync

#endif
