#ifndef VXL_SYNC_LANDMARKS_H
#define VXL_SYNC_LANDMARKS_H

#include <cstddef>
#include <vector>

#include "model/LandmarkGroup.h"
#include "model/Recording.h"
#include "running/Run.h"

namespace vxlsync
{

// What the landmark library makes of the recordings' samples: its groups of two and more, in order
// of their first member. Recordings without samples find nobody. Throws Cancelled.
std::vector<LandmarkGroup> groupByLandmarks(const std::vector<Recording>& recordings, Run& run);

} // namespace vxlsync

#endif
