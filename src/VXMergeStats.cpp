#include "VXMergeStats.h"

namespace VXS
{

VXMergeStats::VXMergeStats(VXHistogram* pairHistogram)
    : fileA(0),
      fileB(0),
      peakCount(0.0f),
      overlapLength(0.0f),
      percentMatchA(0.0f),
      percentMatchB(0.0f),
      landmarksInOverlapA(0.0f),
      landmarksInOverlapB(0.0f),
      templateMatchLength(0.0f),
      merged(false),
      bestOffset(0.0f),
      histogram(pairHistogram)
{
}

void deleteVXMergeStatsSet(VXMergeStatsSet*& stats)
{
    if (stats == nullptr) return;
    for (auto& entry : *stats)
        delete entry.second;
    delete stats;
    stats = nullptr;
}

} // namespace VXS
