#ifndef VXL_SYNC_PREPARE_H
#define VXL_SYNC_PREPARE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Transform.h"

namespace vxlsync
{

// The band, in Hz, in which recordings are compared. Below is hum and handling, above is what
// cheap recorders and lossy codecs cut off.
constexpr double lowestFrequency = 100.0;
constexpr double highestFrequency = 3600.0;

// The samples without what lies below 80 Hz, faded in and out over a quarter of a second: a hum
// that is cut off is a click, and a click correlates with any other.
std::vector<float> highPassed(const std::vector<float>& samples, int rate);

// The phases of a whole recording's spectrum within the band: every frequency counts the same,
// however loud it is. Two bytes a bin keep the phase to half a degree and let many long recordings
// stay in memory.
struct Phases {
    // Transform length that the bins belong to.
    std::size_t length = 0;
    std::size_t firstBin = 0;
    // Real and imaginary part in turns, 127 for 1.
    std::vector<std::int8_t> parts;
};

// Requires transform.length() >= samples.size().
Phases phasesOf(const std::vector<float>& samples, int rate, Transform& transform);

} // namespace vxlsync

#endif
