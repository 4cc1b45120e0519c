#ifndef VXL_SYNC_LINESEARCH_H
#define VXL_SYNC_LINESEARCH_H

#include "match/Line.h"
#include "match/Rows.h"
#include "match/Windows.h"
#include "running/Interrupt.h"

namespace vxlsync
{

// How far from a line another is looked for.
struct SearchRange {
    double offset = 0.0;
    double slope = 0.0;
    // Look upside down as well.
    bool isEitherWayUp = false;
};

struct FoundLine {
    Line line;
    // Sum of the windows on the line in units of what chance gives.
    double significance = 0.0;
};

// The line, right to a sample or two, on which the weighted sum of all windows is greatest.
// Requires rows about `about` that reach as far as the range does at either end of the overlap.
// Throws Cancelled.
FoundLine searchLine(const Rows& rows, const Windows& windows, const Line& about,
                     const SearchRange& range, const Interrupt& interrupt);

} // namespace vxlsync

#endif
