#ifndef VXL_SYNC_JUMPS_H
#define VXL_SYNC_JUMPS_H

#include "model/Link.h"

namespace vxlsync
{

// Recognises sound that one recording of a pair dropped in the middle: one line holds up to some
// moment, another of nearly the same offset from there on, and each is as coherent as the other. Of
// the links of one pair, the first two such become one that stands where the earlier part stands,
// with the jump noted. All other links stay as they are.
Links joinJumps(Links ofPair);

} // namespace vxlsync

#endif
