#ifndef VXL_SYNC_PAIRS_H
#define VXL_SYNC_PAIRS_H

#include <cstddef>
#include <string>
#include <vector>

#include "match/Prepared.h"

namespace vxlsync
{

// Two recordings by index, the lower first.
struct RecordingPair {
    std::size_t first = 0;
    std::size_t second = 0;
};

// All pairs of recordings with sound, in order, but for those whose devices are stated and the
// same.
std::vector<RecordingPair> pairsToCompare(const std::vector<Prepared>& recordings,
                                          const std::vector<std::string>& devices);

} // namespace vxlsync

#endif
