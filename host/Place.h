#ifndef VXL_SYNC_PLACE_H
#define VXL_SYNC_PLACE_H

#include <cstddef>
#include <vector>

#include "Assemble.h"
#include "Solve.h"

namespace vxlsync
{

// One group with all its recordings placed on one clock.
struct PlacedGroup {
    // Indices of recordings, in order.
    std::vector<std::size_t> members;
    // By member. Drifts are against the reference's clock.
    std::vector<Placement> placements;
    // The recording whose clock counts.
    std::size_t reference = 0;
};

// Solves each group of two or more from its used links; those that turn out to contradict the rest
// become Verdict::contradicted. `reference` is taken where it is a member, else the recording that
// most of the evidence hangs on. Known starts are kept.
std::vector<PlacedGroup> placeGroups(Assembly& assembly, std::size_t recordings,
                                     const std::vector<std::pair<std::size_t, double>>& known,
                                     std::size_t reference);

} // namespace vxlsync

#endif
