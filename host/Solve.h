#ifndef VXL_SYNC_SOLVE_H
#define VXL_SYNC_SOLVE_H

#include <cstddef>
#include <vector>

namespace vxlsync
{

// What one link says: a sound at `time` of the first recording stands at
// time - (offset + slope * (time - middle)) of the second.
struct Measurement {
    std::size_t first = 0;
    std::size_t second = 0;
    double middle = 0.0;
    double offset = 0.0;
    double slope = 0.0;
    double offsetError = 0.0;
    double slopeError = 0.0;
};

// Where a recording stands: its sound at `time` happened at start + (1 + drift) * time on the
// clock of the reference. Errors are standard deviations.
struct Placement {
    double start = 0.0;
    double drift = 0.0;
    double startError = 0.0;
    double driftError = 0.0;

    double at(double time) const { return start + (1.0 + drift) * time; }
};

struct Solution {
    std::vector<Placement> placements;
    // By measurement: seconds by which it misses the solution at its middle, and whether it was
    // dropped for that.
    std::vector<double> residuals;
    std::vector<bool> dropped;
};

// Places `count` recordings that the measurements tie together, by weighted least squares for
// offsets and drifts at once. With one constant for each recording, links that are right to a
// tenth of a millisecond would contradict each other by many as soon as clocks differ. A drift
// that the measurements cannot tell from none is none. Measurements that contradict the rest are
// dropped, worst first, as long as the others still tie all recordings. The reference's start is 0.
Solution solve(std::size_t count, std::size_t reference,
               const std::vector<Measurement>& measurements);

} // namespace vxlsync

#endif
