#ifndef VXL_SYNC_LINEFIT_H
#define VXL_SYNC_LINEFIT_H

#include "match/Line.h"
#include "match/Rows.h"
#include "match/Windows.h"

namespace vxlsync
{

// A peak within so many seconds of a line is on the line.
constexpr double onLineSeconds = 0.001;

struct FittedLine {
    Line line;
    // Standard deviations.
    double offsetError = 0.0;
    double slopeError = 0.0;
};

// The line through the windows' own peaks near the line that the rows are about, each counted by
// how far it stands out; windows off the line are dropped. The line stays, with errors as wide as
// what counts as on it, where no window stands out.
FittedLine fitLine(const Rows& rows, const Windows& windows, const Line& about);

} // namespace vxlsync

#endif
