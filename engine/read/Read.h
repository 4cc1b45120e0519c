#ifndef VXL_SYNC_READ_H
#define VXL_SYNC_READ_H

#include <vector>

#include "model/Recording.h"
#include "running/Run.h"
#include "vxl_sync/Sync.h"

namespace vxlsync
{

// Reads the sources, each into the recording of its index. Whatever goes wrong with one, memory
// that it claims among it, is told in its `failure`. Recordings that together would not fit into
// run.memory fail, the longest first, whatever the order and the number of threads; what the others
// keep stays taken from it. Throws Cancelled, and std::bad_alloc for memory that no file asked for.
std::vector<Recording> readAll(const std::vector<Source>& sources, const Options& options,
                               Run& run);

} // namespace vxlsync

#endif
