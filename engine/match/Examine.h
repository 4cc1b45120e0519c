#ifndef VXL_SYNC_EXAMINE_H
#define VXL_SYNC_EXAMINE_H

#include <cstddef>
#include <vector>

#include "match/Align.h"
#include "match/Prepared.h"
#include "running/Interrupt.h"

namespace vxlsync
{

// Measures pairs of recordings about lines that other links imply. Borrows the recordings.
class Examiner
{
public:
    Examiner(const std::vector<Prepared>& newRecordings, const Interrupt& newInterrupt);

    // That there is nothing in common is an answer as well; no windows if the two would share too
    // little time. Throws Cancelled.
    Alignment operator()(std::size_t first, std::size_t second, double offset, double slope);

private:
    const std::vector<Prepared>& recordings;
    const Interrupt& interrupt;
    AlignWorkspace work;
};

} // namespace vxlsync

#endif
