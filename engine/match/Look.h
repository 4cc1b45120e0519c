#ifndef VXL_SYNC_LOOK_H
#define VXL_SYNC_LOOK_H

#include "match/Align.h"
#include "match/Pairs.h"
#include "model/Link.h"

namespace vxlsync
{

// A place at which a pair may be tied.
struct Proposal {
    // About which is looked; the number of windows does not count.
    AlignRequest request;
    Method method = Method::correlation;
    // Height of the whole correlation in units of its rms; 0 if nothing was correlated.
    double height = 0.0;
    // True for one of many that are mostly chance: very few windows say so.
    bool isDoubtful = false;
};

// The pair that is looked at.
struct PairInHand {
    RecordingPair pair;
    const Prepared& first;
    const Prepared& second;
};

// The links of the pair that were known, and the one at the place proposed if a few windows stand
// out of chance there and it is not one of them; the more coherent line of the two stays. Throws
// Cancelled.
Links lookAt(const Proposal& proposal, const PairInHand& pair, Links known,
             const Interrupt& interrupt, AlignWorkspace& work);

// Measures the best of a pair's links with all windows, drops those that are no evidence, and joins
// what a jump has parted. The most coherent first. Throws Cancelled.
Links lookClosely(const PairInHand& pair, Links ofPair, const Interrupt& interrupt,
                  AlignWorkspace& work);

} // namespace vxlsync

#endif
