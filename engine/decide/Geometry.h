#ifndef VXL_SYNC_GEOMETRY_H
#define VXL_SYNC_GEOMETRY_H

#include "model/Alignment.h"
#include "model/Decision.h"

namespace vxlsync
{

// How two placed recordings lie to each other: the offset, in seconds of the first, at the middle
// of what the two share, and its slope. The overlap is below 0 by the gap if they share nothing.
struct ImpliedLine {
    double offset = 0.0;
    double slope = 0.0;
    double middle = 0.0;
    double overlap = 0.0;
};

// Durations in seconds of each recording's own clock.
ImpliedLine impliedLine(const Placement& first, double firstDuration, const Placement& second,
                        double secondDuration);

// The same as it is seen from the second recording.
ImpliedLine turned(const ImpliedLine& line);

// True if the line that was measured places the two recordings as the one that is implied does.
// Both are of the same first recording.
bool agree(const Alignment& measured, const ImpliedLine& implied, double firstDuration,
           double secondDuration);

// The place on a clock that `by` places on another, on that other one.
Placement moved(const Placement& place, const Placement& by);

// What the clock that `second` stands on must read as, on the one that `first` stands on, so that
// the measured line holds between the two recordings. A slope that is not certain counts as none.
Placement clockChangeFor(const Alignment& measured, const Placement& first,
                         const Placement& second);

} // namespace vxlsync

#endif
