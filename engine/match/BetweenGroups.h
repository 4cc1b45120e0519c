#ifndef VXL_SYNC_BETWEENGROUPS_H
#define VXL_SYNC_BETWEENGROUPS_H

#include <vector>

#include "match/GroupCandidates.h"
#include "match/Looking.h"

namespace vxlsync
{

// Searches each group against each other by correlation, single recordings as groups of one, looks
// at what that proposes, and again with what has grown by it. Takes the meter from share to share
// of the stage, as the next does. Throws Cancelled.
void searchBetweenGroups(double beginShare, double endShare, SearchState& search);

// The same for some pairs of groups, and once only.
void searchBetween(const std::vector<GroupPair>& pairs, double beginShare, double endShare,
                   SearchState& search);

// True if the two groups, by name, have sound and may be compared.
bool maySearchBetween(const GroupPair& pair, const SearchState& search);

} // namespace vxlsync

#endif
