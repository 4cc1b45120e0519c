#ifndef VXL_SYNC_WEIGH_H
#define VXL_SYNC_WEIGH_H

#include <cstddef>
#include <functional>
#include <vector>

#include "decide/Groups.h"
#include "model/Link.h"

namespace vxlsync
{

// Measures how two recordings lie to each other about a line that other links imply: no windows if
// they would share too little time. The first index is the lower or the higher.
using Examine =
    std::function<Alignment(std::size_t first, std::size_t second, double offset, double slope)>;

// What is known of the recordings and their pairs.
struct PairKnowledge {
    // As judgeLinks leaves them.
    const Links& links;
    // bestCoherences of the links.
    const std::vector<double>& best;
    // Of the recordings, in seconds.
    const std::vector<double>& durations;
    const Examine& examine;
};

// What speaks for and against a join.
struct Evidence {
    double support = 0.0;
    double against = 0.0;
};

// What the pairs across two groups say of the join that implies their lines: by their links, or
// where there is none that says the same, by a closer look.
Evidence weigh(const std::vector<ImpliedPair>& pairs, const PairKnowledge& known);

// True if several of the pairs have links of their own that say what the join implies, clear enough
// together.
bool areBackedByLinks(const std::vector<ImpliedPair>& pairs, const PairKnowledge& known);

} // namespace vxlsync

#endif
