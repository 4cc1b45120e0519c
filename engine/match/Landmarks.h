#ifndef VXL_SYNC_LANDMARKS_H
#define VXL_SYNC_LANDMARKS_H

#include <cstddef>
#include <vector>

#include "model/LandmarkGroup.h"
#include "model/Recording.h"
#include "running/Run.h"

namespace vxlsync
{

// An offset that the landmarks tell, first to second, in seconds.
struct LandmarkOffset {
    std::size_t first = 0;
    std::size_t second = 0;
    double offset = 0.0;
};

// What the landmark library makes of the recordings' samples: its groups of two and more, in order
// of their first member. Recordings without samples find nobody. Throws Cancelled.
std::vector<LandmarkGroup> groupByLandmarks(const std::vector<Recording>& recordings, Run& run);

// The offsets of all pairs within the groups.
std::vector<LandmarkOffset> offsetsOf(const std::vector<LandmarkGroup>& groups);

} // namespace vxlsync

#endif
