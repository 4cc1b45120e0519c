#ifndef PLAIN_RECORDING_H
#define PLAIN_RECORDING_H

#include <cstdint>
#include <limits>
#include <map>
#include <vector>

namespace plain
{

// A landmark names the recording that it belongs to by id. One that belongs to none counts among
// the landmarks of its key and casts no vote.
struct Landmark {
    std::int32_t offset;
    std::uint32_t key;
    std::int64_t fileID;
    bool hasFile;
};

// The landmarks of one recording by frame, with the number of landmarks up to each frame.
struct Recording {
    explicit Recording(std::int64_t newID) : id(newID) {}

    void add(const Landmark& landmark);
    void countUp();
    // Landmarks from one frame to another, or -1 while the counts are stale.
    std::int64_t countBetween(std::int64_t start, std::int64_t end);

    std::int64_t id;
    std::map<std::int64_t, std::vector<Landmark>> landmarks;
    std::map<std::int64_t, std::int64_t> counts;
    std::int64_t last = std::numeric_limits<std::int64_t>::min();
    std::int64_t first = std::numeric_limits<std::int64_t>::max();
    bool stale = true;
};

// The recordings of a job by id. They belong to whoever made them, and one may be null.
using RecordingSet = std::map<std::int64_t, Recording*>;

} // namespace plain

#endif
