#ifndef VXL_SYNC_RIVALS_H
#define VXL_SYNC_RIVALS_H

#include "match/Looking.h"

namespace vxlsync
{

// Looks over their whole range at pairs that hold a group together and that no third recording
// backs: the landmarks may have led to one turn of a loop, and nobody has asked for the others.
// Takes the meter from share to share of the stage. Throws Cancelled.
void lookForRivals(double beginShare, double endShare, SearchState& search);

} // namespace vxlsync

#endif
