#ifndef VXL_SYNC_LANDMARKGROUP_H
#define VXL_SYNC_LANDMARKGROUP_H

#include <cstddef>
#include <vector>

namespace vxlsync
{

// A group of two or more recordings that the landmarks tell: indices, in order, and starts in
// seconds after the group's earliest, by member.
struct LandmarkGroup {
    std::vector<std::size_t> members;
    std::vector<double> starts;
};

} // namespace vxlsync

#endif
