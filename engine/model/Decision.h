#ifndef VXL_SYNC_DECISION_H
#define VXL_SYNC_DECISION_H

#include <cstddef>
#include <vector>

#include "model/Link.h"

namespace vxlsync
{

// Where a recording stands: its sound at `time` happened at start + (1 + drift) * time on the
// clock of the reference. Errors are standard deviations.
struct Placement {
    double start = 0.0;
    double drift = 0.0;
    double startError = 0.0;
    double driftError = 0.0;

    double at(double time) const { return start + (1.0 + drift) * time; }
};

// How sure the place of a recording is.
struct Certainty {
    Confidence confidence = Confidence::certain;
    // 1 where no other place comes into question, 0 where one is as good.
    double margin = 1.0;
    // What speaks for the place, in seconds of sound times their worth.
    double evidence = 0.0;
};

// One group with all its recordings placed on one clock.
struct PlacedGroup {
    // Indices of recordings, in order.
    std::vector<std::size_t> members;
    // By member. Drifts are against the reference's clock. Starts count from the earliest, or on
    // the clock of the known starts if any of the members has one.
    std::vector<Placement> placements;
    // The recording whose clock counts.
    std::size_t reference = 0;
    // By member.
    std::vector<Certainty> certainties = {};
};

// A place that a recording may have, told by another.
struct DoubtfulPlace {
    std::size_t with = 0;
    // In seconds after the start of the other.
    double start = 0.0;
    // What speaks for it, in seconds of sound times their worth.
    double evidence = 0.0;
};

// A recording that has places, but none that is better than all others.
struct Doubtful {
    std::size_t recording = 0;
    // The best first.
    std::vector<DoubtfulPlace> candidates;
};

// A start that was given, and sound that says something else.
struct Disagreement {
    std::size_t recording = 0;
    // Who shares that sound.
    std::size_t with = 0;
    // How much later than given the recording started by it, in seconds.
    double laterSeconds = 0.0;
};

// What deciding hands to telling.
struct Decision {
    // Of two members or more.
    std::vector<PlacedGroup> groups;
    // In order of index.
    std::vector<Doubtful> doubtful;
    // In order of index, of each recording the clearest.
    std::vector<Disagreement> disagreements;
    // With their verdicts.
    Links links;
};

} // namespace vxlsync

#endif
