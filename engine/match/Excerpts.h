#ifndef VXL_SYNC_EXCERPTS_H
#define VXL_SYNC_EXCERPTS_H

#include <cstddef>
#include <vector>

#include "match/Look.h"

namespace vxlsync
{

// Between clocks that differ, a long overlap blurs until nothing of it stands out; a short excerpt
// does not. True if the pair is long enough for that to matter.
bool mayBlur(const PairInHand& pair);

// Memory that proposeExcerpts takes.
std::size_t bytesOfExcerpts(const PairInHand& pair);

// Places at which short pieces of the shorter recording fit into the longer one. Requires
// mayBlur(pair). Throws Cancelled.
std::vector<Proposal> proposeExcerpts(const PairInHand& pair, const Interrupt& interrupt);

} // namespace vxlsync

#endif
