#ifndef VXL_SYNC_READWITHIN_H
#define VXL_SYNC_READWITHIN_H

#include <vector>

#include "read/Limits.h"
#include "read/Read.h"

namespace vxlsync
{

// readAll with limits of the caller's.
std::vector<Recording> readWithin(const std::vector<Source>& sources, const Options& options,
                                  Run& run, const ReadLimits& limits);

} // namespace vxlsync

#endif
