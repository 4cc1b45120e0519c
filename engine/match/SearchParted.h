#ifndef VXL_SYNC_SEARCHPARTED_H
#define VXL_SYNC_SEARCHPARTED_H

#include <cstddef>
#include <string>
#include <vector>

#include "match/LandmarkOffsets.h"
#include "match/Prepared.h"
#include "model/Link.h"
#include "running/Run.h"

namespace vxlsync
{

// Which recordings belong together, and by which of the links. Borrows both.
struct Parted {
    // By members; every recording is in one.
    const std::vector<std::vector<std::size_t>>& groups;
    // Of all pairs, with their verdicts.
    const Links& links;
};

// The links, not judged, and those that are found where a search had taken groups for one: it asked
// within them only for what a wrong tie implied. Such groups are searched against each other, and
// the ties that were not believed tie nothing any more. Makes steps of the meter between two shares
// of the stage. Throws Cancelled. The result does not depend on the number of threads.
Links searchParted(const std::vector<Prepared>& recordings, const std::vector<std::string>& devices,
                   const std::vector<LandmarkOffset>& landmarks, const Parted& parted,
                   double beginShare, double endShare, Run& run);

} // namespace vxlsync

#endif
