#ifndef VXL_SYNC_GATHERING_H
#define VXL_SYNC_GATHERING_H

#include <cstddef>
#include <map>
#include <vector>

#include "model/Alignment.h"

namespace vxlsync
{

// A recording's clock as the clock of its group reads it: `start` at its beginning, then `rate`
// seconds for each of its own.
struct Clock {
    double start = 0.0;
    double rate = 1.0;

    double at(double seconds) const { return start + rate * seconds; }
};

// How two recordings of one group lie to each other: offset at the middle of what they share, its
// slope, and how much they share, in seconds; negative if they are apart.
struct KnownLine {
    double offset = 0.0;
    double slope = 0.0;
    double overlap = 0.0;
};

// Which recordings the links found so far hold together, and where they lie. It serves the search,
// which asks only for what is not known; what is true of it is decided later. At first each
// recording is a group of its own.
class Gathering
{
public:
    // By recording, in seconds.
    explicit Gathering(std::vector<double> newDurations);

    // The group's name: the lowest of its members.
    std::size_t groupOf(std::size_t recording) const { return groups[recording]; }
    // In order. Requires the name of a group.
    const std::vector<std::size_t>& membersOf(std::size_t group) const { return members.at(group); }
    bool isSingle(std::size_t recording) const { return members.at(groups[recording]).size() == 1; }
    // In order.
    std::vector<std::size_t> names() const;
    const Clock& clockOf(std::size_t recording) const { return clocks[recording]; }
    double endOf(std::size_t recording) const { return clocks[recording].at(durations[recording]); }
    // Requires two recordings of one group.
    KnownLine lineOf(std::size_t first, std::size_t second) const;
    // Lays the two groups to each other as the line says; nothing if they are one. False then.
    bool join(std::size_t first, std::size_t second, const Alignment& line);

private:
    std::vector<double> durations;
    std::vector<Clock> clocks;
    std::vector<std::size_t> groups;
    std::map<std::size_t, std::vector<std::size_t>> members;
};

} // namespace vxlsync

#endif
