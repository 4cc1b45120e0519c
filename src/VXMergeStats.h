#ifndef VXS_VXMERGESTATS_H
#define VXS_VXMERGESTATS_H

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "VXHistogram.h"

namespace VXS
{

// One pair's best offset and the numbers by which it is judged. Lengths count frames, counts count
// votes or landmarks. A plain record: the evaluation of the histograms fills it, and the merge
// decision reads it and sets `merged`.
class VXMergeStats
{
public:
    // Leaves meanCount and stdDevCount unset; the evaluation writes both before anyone reads them.
    explicit VXMergeStats(VXHistogram* pairHistogram);

    std::int64_t fileA;
    std::int64_t fileB;
    float peakCount;
    float overlapLength;
    // Fractions of 1, in spite of their names.
    float percentMatchA;
    float percentMatchB;
    // What the shares were worked out from. The decision does not read them; they tell whoever
    // looks at a record why its shares are what they are.
    float landmarksInOverlapA;
    float landmarksInOverlapB;
    float templateMatchLength;
    float meanCount;
    float stdDevCount;
    bool merged;
    float bestOffset;
    // Borrowed, and read by nobody: it tells whoever looks at a record where its numbers are from
    // while they are worked out. It dangles once the histogram set is freed, which is before the
    // merge decision, so nothing after the evaluation may follow it.
    VXHistogram* histogram;
};

// The records by pair of file ids, lower id first. Owns them. A value may be null: the merge
// decision enters null for a pair that it asks for and that has no record.
using VXMergeStatsSet = std::map<std::pair<std::int64_t, std::int64_t>, VXMergeStats*>;

// Frees the set with its records and nulls the caller's pointer. Null is nothing to do.
void deleteVXMergeStatsSet(VXMergeStatsSet*& stats);

// Holds a set until it is handed on, so that an exception cannot leak it.
struct VXMergeStatsSetDeleter {
    void operator()(VXMergeStatsSet* stats) const { deleteVXMergeStatsSet(stats); }
};
using VXMergeStatsSetHolder = std::unique_ptr<VXMergeStatsSet, VXMergeStatsSetDeleter>;

} // namespace VXS

#endif
