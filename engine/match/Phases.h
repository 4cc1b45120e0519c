#ifndef VXL_SYNC_PHASES_H
#define VXL_SYNC_PHASES_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "match/Transform.h"
#include "model/SampleStore.h"
#include "running/Interrupt.h"

namespace vxlsync
{

// What one thread needs to correlate sounds by one long transform.
struct CorrelationSpace {
    CorrelationSpace(std::size_t length, const Interrupt& interrupt);

    Transform transform;
    // transform.bins() and transform.length() of them.
    Spectrum spectrum;
    std::vector<float> samples;
};

// Memory that a space for this length takes, within a few hundredths.
std::size_t bytesOfSpace(std::size_t length);

// The phases of a sound's spectrum within the band: every frequency counts the same, however loud
// it is. Two bytes a bin keep the phase to half a degree and let many long recordings stay in
// memory.
struct Phases {
    // Transform length that the bins belong to.
    std::size_t length = 0;
    std::size_t firstBin = 0;
    // Real and imaginary part in turns, 127 for 1. Empty for silence.
    std::vector<std::int8_t> parts;
};

// Memory that phases of this length take.
std::size_t bytesOfPhases(std::size_t length, int rate);

// Of `count` samples from `start` on. Requires start + count <= samples.size() and
// space.transform.length() >= count. Throws Cancelled.
Phases phasesOf(const SampleStore<float>& samples, std::size_t start, std::size_t count, int rate,
                CorrelationSpace& space);

} // namespace vxlsync

#endif
