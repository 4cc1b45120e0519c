#ifndef VXL_SYNC_DISAGREEMENTS_H
#define VXL_SYNC_DISAGREEMENTS_H

#include <vector>

#include "decide/Constraints.h"
#include "model/Decision.h"

namespace vxlsync
{

// Where sound that stands on its own contradicts starts that are known, which are taken as given
// all the same. The first of a group in the order of `known`, which is not that of the arguments,
// counts as the clock, and a group with one alone contradicts nothing. Requires judged links and
// all groups of two and more.
std::vector<Disagreement> disagreementsOf(const Links& links,
                                          const std::vector<PlacedGroup>& groups,
                                          const Constraints& constraints);

} // namespace vxlsync

#endif
