#ifndef VXL_SYNC_ORIGINS_H
#define VXL_SYNC_ORIGINS_H

#include <vector>

#include "decide/Constraints.h"
#include "model/Recording.h"
#include "model/Take.h"
#include "vxl_sync/Sync.h"

namespace vxlsync
{

// What recorded each source, and when, by what the host states and the files say. Requires a
// recording for each source.
std::vector<Origin> findOrigins(const std::vector<Source>& sources,
                                const std::vector<Recording>& recordings, const Options& options);

// Takes up what the decision may use of them: what was not stated, and the clocks.
void addOrigins(const std::vector<Origin>& origins, Constraints& constraints);

} // namespace vxlsync

#endif
