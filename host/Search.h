#ifndef VXL_SYNC_SEARCH_H
#define VXL_SYNC_SEARCH_H

#include <cstddef>
#include <functional>
#include <vector>

#include "Align.h"

namespace vxlsync
{

enum class Method { landmarks, correlation };

// Sound that one of two recordings lacks: from `at`, in seconds of the first, the offset is greater
// by `size`.
struct OffsetJump {
    double at = 0.0;
    double size = 0.0;
};

// One way in which two recordings may lie to each other, looked at closely.
struct Hypothesis {
    Alignment line;
    Method method = Method::correlation;
    // Height of the whole correlation in units of its rms; 0 if the landmarks alone had it.
    double height = 0.0;
    std::vector<OffsetJump> jumps;
};

// All that was found for one pair of recordings, the most coherent first. Those of too little
// evidence to be told from chance, tones or hum are left out.
struct PairFinding {
    std::size_t first = 0;
    std::size_t second = 0;
    std::vector<Hypothesis> hypotheses;
};

// An offset that the landmarks tell, first to second, in seconds.
struct LandmarkOffset {
    std::size_t first = 0;
    std::size_t second = 0;
    double offset = 0.0;
};

// True if more than chance, hum or a pure tone must be behind the line.
bool isSound(const Alignment& line);

// Looks for every pair over its whole range and at what the landmarks tell. Recordings without
// samples find nobody. `progress` is told the share done, from one thread at a time. The result
// does not depend on `workers`.
std::vector<PairFinding> searchPairs(const std::vector<Prepared>& recordings,
                                     const std::vector<LandmarkOffset>& landmarks,
                                     std::size_t workers,
                                     const std::function<void(double)>& progress);

} // namespace vxlsync

#endif
