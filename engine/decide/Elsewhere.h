#ifndef VXL_SYNC_ELSEWHERE_H
#define VXL_SYNC_ELSEWHERE_H

#include <cstddef>
#include <vector>

#include "decide/Arrangement.h"

namespace vxlsync
{

// A place that links tell for a part of a group, or for a group.
struct Place {
    // From the part's group, which it fills, to another.
    Join join;
    // Where the part's first recording begins then, on the other group's clock.
    double start = 0.0;
    // The link that tells it most clearly.
    std::size_t link = 0;
    // Of all links that speak for it.
    double weight = 0.0;
};

// Places that are nearer to each other, in seconds, are one: what short windows and clocks that
// differ leave open.
constexpr double samePlaceSeconds = 0.02;

// The places that most links speak for, the best first; few of many. Links that are partial speak
// for none. Requires all recordings of a group.
std::vector<Place> placesFor(const std::vector<std::size_t>& part, const Arrangement& arrangement);

} // namespace vxlsync

#endif
