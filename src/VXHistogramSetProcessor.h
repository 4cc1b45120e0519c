#ifndef VXS_VXHISTOGRAMSETPROCESSOR_H
#define VXS_VXHISTOGRAMSETPROCESSOR_H

#include <cstdint>
#include <utility>

#include "VXHistogram.h"
#include "VXMergeStats.h"

namespace VXS
{

class VXFile;
class VXFileSet;

// Reduces each pair's histogram to one record: its best offset, the overlap of the two recordings
// at that offset, and how far the best bin stands out from the rest. It decides nothing. Lengths
// and offsets count frames. Requires the CLF of every file: a stale one would count as -1.
class VXHistogramSetProcessor
{
public:
    // One record for every pair of `histograms`, owned by the caller. The records keep a borrowed
    // pointer to their histogram. Null if either argument is null.
    VXMergeStatsSet* run(VXFileSet* fileSet, VXHistogramSet* histograms);

    // Returns the length of the overlap of two files at an offset, negative if there is none, and
    // stores how many landmarks of each file lie in it. Without one of the files it returns 0 and
    // stores nothing.
    float proposedOverlapRegion(VXFile* first, VXFile* second, float offset,
                                float& landmarksInFirst, float& landmarksInSecond);

    // Measures the bin at `offset`: the share of each file's landmarks within the bin's span that
    // voted for it, as fractions, and the span itself. Stores nothing if there is no such bin. Ends
    // the process with status 1, after a line on the error stream, if the bin is without landmarks.
    void offset2Percetage(const std::pair<std::int64_t, std::int64_t>& pair, VXHistogram* histogram,
                          std::int64_t offset, float& percentA, float& percentB,
                          float& templateMatchLength, VXFileSet* fileSet);
};

} // namespace VXS

#endif
