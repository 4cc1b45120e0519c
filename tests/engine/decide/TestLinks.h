#ifndef VXL_SYNC_TESTS_TESTLINKS_H
#define VXL_SYNC_TESTS_TESTLINKS_H

#include <algorithm>
#include <cstddef>

#include "decide/Constraints.h"
#include "model/Link.h"

// Links and constraints of recordings that all last a minute.
namespace links
{

constexpr double minute = 60.0;

// A link of much evidence: 300 times its coherence in significance.
inline vxlsync::Link linkOf(std::size_t first, std::size_t second, double offset, double coherence,
                            double agreement = 1.0)
{
    vxlsync::Link link;
    link.first = first;
    link.second = second;
    link.line.start = std::max(0.0, offset);
    link.line.end = std::min(minute, minute + offset);
    link.line.middle = (link.line.start + link.line.end) / 2.0;
    link.line.offset = offset;
    link.line.offsetError = 1e-5;
    link.line.slopeError = 1e-6;
    link.line.coherence = coherence;
    link.line.significance = 300.0 * coherence;
    link.line.sharpness = 10.0;
    link.line.agreement = agreement;
    link.line.bands = 30;
    link.line.allBands = 30;
    link.line.heardSeconds = link.line.overlap() / 2.0;
    link.line.windows.resize(20);
    return link;
}

// No devices are known, no starts, and nothing is to be kept apart.
inline vxlsync::Constraints constraintsOf(std::size_t recordings)
{
    vxlsync::Constraints constraints;
    constraints.durations.assign(recordings, minute);
    constraints.devices.resize(recordings);
    return constraints;
}

} // namespace links

#endif
