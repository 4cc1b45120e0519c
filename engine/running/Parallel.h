#ifndef VXL_SYNC_PARALLEL_H
#define VXL_SYNC_PARALLEL_H

#include <cstddef>
#include <functional>

namespace vxlsync
{

// Calls task(index, worker) once for each index below `count`, on up to `workers` threads, the
// caller's among them; worker is below `workers`. Where the system refuses threads, those that
// could be started do the work. Tasks write to places of their own by index, so that the outcome
// does not depend on the number of threads. The first exception of a task, by index, is thrown
// again after all threads have ended.
void runParallel(std::size_t count, std::size_t workers,
                 const std::function<void(std::size_t index, std::size_t worker)>& task);

} // namespace vxlsync

#endif
