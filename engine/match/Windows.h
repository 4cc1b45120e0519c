#ifndef VXL_SYNC_WINDOWS_H
#define VXL_SYNC_WINDOWS_H

#include <cstddef>
#include <vector>

#include "match/Overlap.h"
#include "match/Prepared.h"
#include "model/Alignment.h"

namespace vxlsync
{

// The stretches of the shared time that are correlated one by one: all of one length, evenly
// spaced, half overlapped where there is time for that many.
struct Windows {
    Overlap overlap;
    double seconds = 0.0;
    // Middles, in seconds of the first recording, and what each counts.
    std::vector<double> times;
    std::vector<double> weights;
    // Mean over the windows of how far both recordings are above their own noise, 0 to 1.
    double activity = 0.0;
    // Seconds of the shared time in which both are above their own noise.
    double heardSeconds = 0.0;

    std::size_t count() const { return times.size(); }
    double start(std::size_t index) const { return times[index] - seconds / 2.0; }
    double totalWeight() const;
};

// At most `most` of them, at least one. Requires an overlap of some length, and `most` of at
// least 1.
Windows placeWindows(const Prepared& first, const Prepared& second, double offset,
                     std::size_t most);

// Windows that overlap by half share half their sound, so that chance adds up to more in the sum of
// them: its variance against that of as many windows apart.
constexpr double overlappedVariance = 1.5;

// Standard deviation of the weighted sum of the windows, each of a standard deviation of 1.
double chanceOfSum(const Windows& windows);

// What a window counts where windows vote: a pause has no opinion.
double voiceOf(const AlignmentWindow& window);

} // namespace vxlsync

#endif
