#ifndef VXL_SYNC_CERTAIN_H
#define VXL_SYNC_CERTAIN_H

#include <vector>

#include "decide/Arrangement.h"
#include "model/Decision.h"

namespace vxlsync
{

// Parts from their groups what may as well be elsewhere.
void partDoubtful(Arrangement& arrangement);

// By recording; of one in no group it says nothing. The arrangement is in the end as it was.
std::vector<Certainty> certaintiesOf(Arrangement& arrangement);

// The recordings that are in no group though their sound is known from others, with the places that
// it tells.
std::vector<Doubtful> doubtfulOf(const Arrangement& arrangement);

} // namespace vxlsync

#endif
