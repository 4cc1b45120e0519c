#ifndef VXL_SYNC_ASSEMBLE_H
#define VXL_SYNC_ASSEMBLE_H

#include <cstddef>
#include <vector>

#include "decide/Constraints.h"
#include "decide/Weigh.h"
#include "model/Decision.h"
#include "running/Interrupt.h"

namespace vxlsync
{

struct Assembly {
    // Each recording is in exactly one group; members and groups in order of index.
    std::vector<std::vector<std::size_t>> groups;
    Links links;
    // By recording.
    std::vector<Certainty> certainties;
    // In order of index.
    std::vector<Doubtful> doubtful;
};

// Decides which links are true and which recordings belong together. Fills in what the links lack
// of judgement; their order stays. Links that are not finite are left out. A join that brings two
// recordings of one device to one time, or that the user does not want, is refused; known starts
// are taken as they are. Throws Cancelled and what `examine` throws.
Assembly assemble(Links links, const Constraints& constraints, const Examine& examine,
                  const Interrupt& interrupt);

} // namespace vxlsync

#endif
