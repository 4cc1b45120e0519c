#ifndef VXL_SYNC_CLOCKS_H
#define VXL_SYNC_CLOCKS_H

#include <cstddef>
#include <optional>
#include <vector>

#include "model/Take.h"

namespace vxlsync
{

// What the clock of one device says of its takes.
struct ClockReadings {
    // By take, in seconds on one axis; nothing where the clock says nothing.
    std::vector<std::optional<double>> starts;
    // True if by their clocks two takes ran at the same time, whatever the clocks mean: then they
    // are of two devices, or the clocks are wrong, and there are no starts.
    bool isContradictory = false;
};

// Finds out from the takes themselves what their clocks mean, since one device is never in two
// places at once: whether the time of creation is the start or the end of a take, whether a
// timecode runs on between takes, and where a clock has passed midnight. `members` are indices of
// takes, in order.
ClockReadings readClocks(const Takes& takes, const std::vector<std::size_t>& members);

} // namespace vxlsync

#endif
