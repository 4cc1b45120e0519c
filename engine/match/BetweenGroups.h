#ifndef VXL_SYNC_BETWEENGROUPS_H
#define VXL_SYNC_BETWEENGROUPS_H

#include "match/Looking.h"

namespace vxlsync
{

// Searches each group against each other by correlation, single recordings as groups of one, looks
// at what that proposes, and again with what has grown by it. Takes the meter from share to share
// of the stage. Throws Cancelled.
void searchBetweenGroups(double beginShare, double endShare, SearchState& search);

} // namespace vxlsync

#endif
