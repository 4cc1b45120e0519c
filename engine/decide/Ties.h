#ifndef VXL_SYNC_TIES_H
#define VXL_SYNC_TIES_H

#include <cstddef>
#include <vector>

#include "decide/Arrangement.h"

namespace vxlsync
{

// The parts that a group may be taken apart into, each once and in order of index: every recording
// without which the others are still tied together, and the smaller side of every tie of the tree
// that the heaviest links of the group span. Empty for a group of one. Requires the name of a
// group.
std::vector<std::vector<std::size_t>> partsOf(std::size_t group, const Arrangement& arrangement);

} // namespace vxlsync

#endif
