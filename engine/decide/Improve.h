#ifndef VXL_SYNC_IMPROVE_H
#define VXL_SYNC_IMPROVE_H

#include <cstddef>
#include <vector>

#include "decide/Arrangement.h"

namespace vxlsync
{

// What speaks for the place of a part of a group, and for the best that it may have elsewhere.
struct Standing {
    double here = 0.0;
    // 0 if nothing speaks for any other.
    double elsewhere = 0.0;
    // True if several pairs say the same of the place, or one that can be no repeat.
    bool isWitnessed = false;
    // True if a single pair says it that is doubtful without others.
    bool isDoubted = false;

    // 1 where no other place comes into question, 0 where one is as good.
    double margin() const { return here > 0.0 && !isDoubted ? 1.0 - elsewhere / here : 0.0; }
};

// Takes out single recordings and parts of groups, puts them where more speaks for them, and leaves
// them parted where more speaks against their place than for it, until nothing gets better. Throws
// what looks throw.
void improve(Arrangement& arrangement);

// How the part stands. Requires some recordings of a group that is tied without them, as partsOf
// answers them; the arrangement is in the end as it was.
Standing standingOf(const std::vector<std::size_t>& part, Arrangement& arrangement);

} // namespace vxlsync

#endif
