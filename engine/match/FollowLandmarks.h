#ifndef VXL_SYNC_FOLLOWLANDMARKS_H
#define VXL_SYNC_FOLLOWLANDMARKS_H

#include "match/Looking.h"

namespace vxlsync
{

// Looks at what the landmarks propose, the clearest first, and at nothing whose recordings have
// come together by then: so many copies of one sound are tied by as many looks, and not by one for
// each pair. Takes the meter from the stage's begin to the share given. Throws Cancelled.
void followLandmarks(double endShare, SearchState& search);

} // namespace vxlsync

#endif
