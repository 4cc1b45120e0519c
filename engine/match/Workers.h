#ifndef VXL_SYNC_WORKERS_H
#define VXL_SYNC_WORKERS_H

#include <algorithm>
#include <cstddef>

namespace vxlsync
{

// How many threads may hold so much memory each: at least one, at most `threads`.
inline std::size_t workersWithin(std::size_t memory, std::size_t bytesEach, std::size_t threads)
{
    return std::clamp<std::size_t>(memory / bytesEach, 1, threads);
}

} // namespace vxlsync

#endif
