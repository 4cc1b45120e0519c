#ifndef VXL_SYNC_SOLVE_H
#define VXL_SYNC_SOLVE_H

#include <cstddef>
#include <vector>

#include "model/Decision.h"
#include "running/Interrupt.h"

namespace vxlsync
{

// What one link says: a sound at `time` of the first recording stands at
// time - (offset + slope * (time - middle)) of the second. Errors are standard deviations.
struct Measurement {
    std::size_t first = 0;
    std::size_t second = 0;
    double middle = 0.0;
    double offset = 0.0;
    double slope = 0.0;
    double offsetError = 0.0;
    double slopeError = 0.0;
};

struct Solution {
    std::vector<Placement> placements;
    // By measurement: true if it contradicts the rest.
    std::vector<bool> dropped;
};

// Places `count` recordings by weighted least squares for offsets and drifts at once. With one
// constant for each recording, links that are right to a tenth of a millisecond would contradict
// each other by many as soon as clocks differ. A drift that the measurements cannot tell from none
// is none. Measurements that contradict the rest are dropped, worst first, as long as the others
// still tie all recordings. The reference's start and drift are 0.
//
// Requires finite measurements that tie every recording that they name to the reference. Throws
// Cancelled.
Solution solve(std::size_t count, std::size_t reference,
               const std::vector<Measurement>& measurements, const Interrupt& interrupt);

} // namespace vxlsync

#endif
