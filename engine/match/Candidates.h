#ifndef VXL_SYNC_CANDIDATES_H
#define VXL_SYNC_CANDIDATES_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "match/Phases.h"

namespace vxlsync
{

// A place where two recordings may lie. `lag` is the position of a sound in the first minus its
// position in the second, in samples.
struct Candidate {
    std::int64_t lag = 0;
    // Height of the correlation there in units of its root mean square; negative where one
    // recording is the other turned upside down.
    double height = 0.0;
};

// The lags at which the correlation of two sounds over their whole range peaks: the highest, and
// those that are high for the time shared. None where one is silent or shorter than the shortest
// overlap. Requires phases and a space of one length that is not below the sum of both counts of
// samples less the shortest overlap. Throws Cancelled.
std::vector<Candidate> findCandidates(const Phases& first, std::size_t firstSamples,
                                      const Phases& second, std::size_t secondSamples, int rate,
                                      CorrelationSpace& space);

} // namespace vxlsync

#endif
