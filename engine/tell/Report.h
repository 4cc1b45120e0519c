#ifndef VXL_SYNC_REPORT_H
#define VXL_SYNC_REPORT_H

#include <cstddef>
#include <vector>

#include "model/Decision.h"
#include "model/LandmarkGroup.h"
#include "model/Recording.h"
#include "model/Take.h"
#include "vxl_sync/Sync.h"

namespace vxlsync
{

// What a result is made of: the sources and what was read of them by position, which is the order
// in which they were worked with. The same positions stand in links and groups.
struct ReportInput {
    const std::vector<Source>& sources;
    const std::vector<Recording>& recordings;
    // The index that the host knows each source by.
    const std::vector<std::size_t>& sourceAt;
    // By position, too.
    const std::vector<Origin>& origins;
};

// The result of a whole job. Of each pair it tells the links that are used, or else the best of
// those that are not.
Result reportDecision(const ReportInput& input, const Decision& decision);

// The result of a job that went no further than the landmarks.
Result reportLandmarks(const ReportInput& input, const std::vector<LandmarkGroup>& groups);

} // namespace vxlsync

#endif
