#ifndef VXL_SYNC_MACHINE_H
#define VXL_SYNC_MACHINE_H

#include <cstddef>

#include "vxl_sync/Sync.h"

namespace vxlsync
{

// Threads of a job, at least 1.
std::size_t threadsOf(const Options& options);

// Bytes of memory that the machine has, or 0 where it does not say.
std::size_t machineMemory();

// Bytes of memory that a job may take on a machine that has so many, or 0 for unknown; at least
// leastMemoryBytes.
std::size_t memoryOf(const Options& options, std::size_t machineBytes);

} // namespace vxlsync

#endif
