#ifndef VXL_SYNC_BETWEENGROUPS_H
#define VXL_SYNC_BETWEENGROUPS_H

#include <cstddef>
#include <set>
#include <utility>
#include <vector>

#include "match/Looking.h"

namespace vxlsync
{

// Two groups by their members, each in order; first the group whose name is lower.
using MemberLists = std::pair<std::vector<std::size_t>, std::vector<std::size_t>>;

// Searches each group against each other by correlation, single recordings as groups of one, looks
// at what that proposes, and again with what has grown by it. Left out are pairs of groups that
// were `searched` before as they are. Takes the meter from share to share of the stage. Throws
// Cancelled.
void searchBetweenGroups(double beginShare, double endShare, SearchState& search,
                         std::set<MemberLists> searched = {});

} // namespace vxlsync

#endif
