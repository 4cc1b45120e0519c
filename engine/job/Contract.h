#ifndef VXL_SYNC_CONTRACT_H
#define VXL_SYNC_CONTRACT_H

#include <vector>

#include "vxl_sync/Sync.h"

namespace vxlsync
{

// Throws std::invalid_argument, with a sentence that names the value seen, for sources and options
// that synchronise does not take.
void requireUsable(const std::vector<Source>& sources, const Options& options);

} // namespace vxlsync

#endif
