#ifndef VXL_SYNC_GROUPCANDIDATES_H
#define VXL_SYNC_GROUPCANDIDATES_H

#include <cstddef>
#include <vector>

#include "match/Looking.h"

namespace vxlsync
{

// Two groups by name.
using GroupPair = RecordingPair;

// A place where two groups may lie: what their clocks have between them, so that a sound at some
// time of the first's clock stands `shift` seconds earlier on the second's.
struct GroupCandidate {
    GroupPair pair;
    double shift = 0.0;
    // In units of the correlation's rms.
    double height = 0.0;
};

// What a correlation of groups found.
struct GroupCandidates {
    // By pair in order.
    std::vector<GroupCandidate> candidates;
    // True if all was so little that it was done at the full rate.
    bool isThorough = false;
};

// Adds the members of each group up at their places and correlates the sums: the edges, where a
// short overlap lies, at the full rate, and the whole at the full rate or, where there is much to
// correlate, at a coarser one. Makes steps of the meter between two shares of the stage. Requires a
// pair. Throws Cancelled.
GroupCandidates candidatesOfGroups(const std::vector<GroupPair>& pairs, double beginShare,
                                   double endShare, SearchState& search);

} // namespace vxlsync

#endif
