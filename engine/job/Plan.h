#ifndef VXL_SYNC_PLAN_H
#define VXL_SYNC_PLAN_H

#include <cstddef>
#include <vector>

#include "decide/Constraints.h"
#include "vxl_sync/Sync.h"

namespace vxlsync
{

// The sources in the order in which they are worked with. It depends on what they are and not on
// how they were given: sums of floating point depend on the order of their terms, and a result must
// not depend on that of the arguments.
struct Plan {
    // By position.
    std::vector<Source> sources;
    // The index that the host knows the source by.
    std::vector<std::size_t> sourceAt;
    // By position; the durations are known only after reading.
    Constraints constraints;

    // Frees the samples of the sources, for when they have been read.
    void letSamplesGo();
};

// Requires sources and options that requireUsable took.
Plan planOf(std::vector<Source> sources, const Options& options);

} // namespace vxlsync

#endif
