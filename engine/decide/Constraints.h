#ifndef VXL_SYNC_CONSTRAINTS_H
#define VXL_SYNC_CONSTRAINTS_H

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vxlsync
{

// What holds of the recordings whatever they sound like; by index.
struct Constraints {
    // Length of each, in seconds.
    std::vector<double> durations;
    // What recorded each; empty where that is not known. One device is never in two places at once.
    std::vector<std::string> devices;
    // What their files say of what recorded them; empty where they say nothing, and where `devices`
    // says it. Two devices may look alike, so that much sound overrules it.
    std::vector<std::string> likelyDevices;
    // When each began by its device's clock, in seconds; to be compared within a device only, and
    // true to a second or two if that clock runs and was not set in between.
    std::vector<std::optional<double>> clockStarts;
    // Recordings whose starts are known, in seconds on one common clock.
    std::vector<std::pair<std::size_t, double>> known;
    // Pairs that must not be in one group.
    std::vector<std::pair<std::size_t, std::size_t>> apart;
    // The recording whose clock counts in its group.
    std::optional<std::size_t> reference;
};

} // namespace vxlsync

#endif
