#ifndef VXL_SYNC_DECISION_H
#define VXL_SYNC_DECISION_H

#include <cstddef>
#include <vector>

#include "model/Link.h"

namespace vxlsync
{

// Where a recording stands: its sound at `time` happened at start + (1 + drift) * time on the
// clock of the reference. Errors are standard deviations.
struct Placement {
    double start = 0.0;
    double drift = 0.0;
    double startError = 0.0;
    double driftError = 0.0;

    double at(double time) const { return start + (1.0 + drift) * time; }
};

// One group with all its recordings placed on one clock.
struct PlacedGroup {
    // Indices of recordings, in order.
    std::vector<std::size_t> members;
    // By member. Drifts are against the reference's clock; the earliest start is 0.
    std::vector<Placement> placements;
    // The recording whose clock counts.
    std::size_t reference = 0;
};

// What deciding hands to telling.
struct Decision {
    // Of two members or more.
    std::vector<PlacedGroup> groups;
    // With their verdicts.
    Links links;
};

} // namespace vxlsync

#endif
