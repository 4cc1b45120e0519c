#ifndef VXL_SYNC_JUMPS_H
#define VXL_SYNC_JUMPS_H

#include "Search.h"

namespace vxlsync
{

// Recognises sound that one recording of the pair dropped in the middle: one line holds up to some
// moment, another of nearly the same offset from there on, and each is as coherent as the other.
// The two become one hypothesis that stands where the earlier part stands, with the jump noted.
// Does nothing for a pair without such lines.
void joinJumps(PairFinding& finding);

} // namespace vxlsync

#endif
