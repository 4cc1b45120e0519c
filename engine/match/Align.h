#ifndef VXL_SYNC_ALIGN_H
#define VXL_SYNC_ALIGN_H

#include <cstddef>

#include "match/AlignWorkspace.h"
#include "match/Band.h"
#include "match/Prepared.h"
#include "model/Alignment.h"
#include "running/Interrupt.h"

namespace vxlsync
{

// What is measured about. Where nothing else is told, the values are those of a first look at a
// place that a correlation proposes.
struct AlignRequest {
    // Offset at the middle of the shared time, in seconds, and how far to either side of it is
    // searched.
    double offset = 0.0;
    double reach = 0.04;
    // The same for the slope. Clocks of recorders are hardly ever further apart than this.
    double slope = 0.0;
    double slopeReach = 170e-6;
    // 1 or -1 if it is known, 0 to find out.
    double sign = 0.0;
    // At least 1. Forty of 4 s tell a line to a few microseconds however long the overlap is.
    std::size_t mostWindows = 40;
    // Upper end of the band that counts, in Hz.
    double highest = highestFrequency;
    // A line whose significance is below is not looked at further: of the places that chance
    // proposes few reach this.
    double leastSignificance = 6.0;
    // The line is known to a fraction of a millisecond: it is fitted, and none is searched for.
    bool isKnown = false;
};

// Measures how two recordings lie to each other: places windows over the shared time, correlates
// each by its phases, searches the line on which most of them agree, and fits it to their peaks.
//
// Requires recordings of one rate, and a request whose reaches are not negative. No windows if the
// two would share less than a second. A line of less than the least significance is given with its
// place, its significance and its windows' times and weights, and nothing else. `work` is the
// calling thread's. Throws Cancelled.
Alignment align(const Prepared& first, const Prepared& second, const AlignRequest& request,
                const Interrupt& interrupt, AlignWorkspace& work);

} // namespace vxlsync

#endif
