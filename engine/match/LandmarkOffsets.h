#ifndef VXL_SYNC_LANDMARKOFFSETS_H
#define VXL_SYNC_LANDMARKOFFSETS_H

#include <cstddef>
#include <vector>

#include "model/Recording.h"
#include "running/Run.h"

namespace vxlsync
{

// A place that the landmarks of two recordings propose: the offset, first to second, in seconds,
// and how many standard deviations its votes stand above the mean of all offsets' votes.
struct LandmarkOffset {
    std::size_t first = 0;
    std::size_t second = 0;
    double offset = 0.0;
    double standing = 0.0;
};

// The offsets that stand out, a few of each pair, by pair in order and of each pair the one with
// most votes first. Votes are counted for so many recordings at a time as keeps their memory
// bounded; the landmarks are gone when it returns. Recordings without samples have none. Throws
// Cancelled.
std::vector<LandmarkOffset> offsetsByLandmarks(const std::vector<Recording>& recordings, Run& run);

} // namespace vxlsync

#endif
