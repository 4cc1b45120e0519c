#ifndef VXL_SYNC_COMPLETEGROUPS_H
#define VXL_SYNC_COMPLETEGROUPS_H

#include "match/Looking.h"

namespace vxlsync
{

// Looks at recordings of one group where the group says that they lie, those first that share most,
// until each has been measured against a few others. Takes the meter from share to share of the
// stage. Throws Cancelled.
void completeGroups(double beginShare, double endShare, SearchState& search);

} // namespace vxlsync

#endif
