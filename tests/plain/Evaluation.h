#ifndef PLAIN_EVALUATION_H
#define PLAIN_EVALUATION_H

#include <cstdint>
#include <map>

#include "plain/Histograms.h"
#include "plain/Recording.h"

namespace plain
{

struct Statistics {
    std::int64_t fileA;
    std::int64_t fileB;
    float peakCount;
    float overlapLength;
    float percentMatchA;
    float percentMatchB;
    float landmarksInOverlapA;
    float landmarksInOverlapB;
    float templateMatchLength;
    float meanCount;
    float stdDevCount;
    float bestOffset;
};

struct BestBin {
    float count;
    std::int64_t offset;
};

// The bin with the most votes; of a tie that of the highest offset.
BestBin bestBin(const Histogram& histogram);

// Length of the overlap of two recordings, and how many landmarks of each lie in it. Without one of
// the recordings the length is 0 and the counts stay.
float overlapRegion(Recording* first, Recording* second, float offset, float& landmarksInFirst,
                    float& landmarksInSecond);

// Measures the bin at an offset; without such a bin the three values stay.
void measureBin(const Pair& pair, const Histogram& histogram, std::int64_t offset, float& percentA,
                float& percentB, float& templateMatchLength, RecordingSet& recordings);

// One record for each pair. A recording that the set lacks becomes a null entry of it.
std::map<Pair, Statistics> evaluate(RecordingSet& recordings, const HistogramSet& histograms);

} // namespace plain

#endif
