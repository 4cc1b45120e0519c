#ifndef VXL_SYNC_MIX_H
#define VXL_SYNC_MIX_H

#include <cstddef>
#include <vector>

#include "match/Gathering.h"
#include "match/Prepared.h"
#include "running/Interrupt.h"

namespace vxlsync
{

// The sound of a group on its clock, from its earliest start on.
struct Mix {
    Prepared sound;
    // What the group's clock reads at the first sample.
    double start = 0.0;
};

// Adds up the members, each as loud as the others, at their places: what they share adds, and their
// noises do not. Of several at one moment the mean counts, so that no part is louder for being
// recorded more often. The sound has no energy and no floor; it is for correlating only. Throws
// Cancelled.
Mix mixOf(const std::vector<Prepared>& recordings, const Gathering& gathering, std::size_t group,
          const Interrupt& interrupt);

// Every fourth sample, without what lies above the band that is left: for a first look at long
// sounds, at a quarter of the length.
Prepared coarse(const Prepared& sound, const Interrupt& interrupt);

} // namespace vxlsync

#endif
