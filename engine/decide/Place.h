#ifndef VXL_SYNC_PLACE_H
#define VXL_SYNC_PLACE_H

#include "decide/Assemble.h"
#include "decide/Constraints.h"
#include "model/Decision.h"
#include "running/Interrupt.h"

namespace vxlsync
{

// Solves each group of two or more from its used links; those that turn out to contradict the rest
// become Verdict::contradicted. The reference that is asked for is taken where it is a member, else
// the recording that most of the evidence hangs on. Known starts are kept.
// Throws Cancelled.
Decision placeGroups(Assembly assembly, const Constraints& constraints, const Interrupt& interrupt);

} // namespace vxlsync

#endif
