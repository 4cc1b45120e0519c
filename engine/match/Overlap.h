#ifndef VXL_SYNC_OVERLAP_H
#define VXL_SYNC_OVERLAP_H

#include <algorithm>

#include "model/Alignment.h"

namespace vxlsync
{

// The time that two recordings share, in seconds of the first.
struct Overlap {
    double start = 0.0;
    double end = 0.0;

    // Negative if they share none.
    double seconds() const { return end - start; }
    double middle() const { return (start + end) / 2.0; }
};

inline Overlap overlapOf(double firstSeconds, double secondSeconds, double offset)
{
    return {std::max(0.0, offset), std::min(firstSeconds, secondSeconds + offset)};
}

} // namespace vxlsync

#endif
