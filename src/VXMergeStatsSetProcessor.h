#ifndef VXS_VXMERGESTATSSETPROCESSOR_H
#define VXS_VXMERGESTATSSETPROCESSOR_H

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "VXClusterSync.h"
#include "VXMergeStats.h"

namespace VXS
{

class VXClusterInternal;
class VXClusterSyncParams;
class VXFileSet;

// Which recordings belong together. It starts with each recording alone and unites the groups of
// two recordings at a time. It knows nothing of offsets.
class VXMerger
{
public:
    // One group for each file of the set. A null set leaves the groups as they are.
    void init(VXFileSet* fileSet);

    // Unites the groups of the two ids. An id that no group holds counts as an empty group, and two
    // such ids enter an empty group.
    void mergeClusters(std::int64_t firstID, std::int64_t secondID);

    // Disjoint, so that they stand in order of their lowest id.
    std::set<std::set<std::int64_t>> fileClusters;

private:
    void moveGroupOf(std::int64_t fileID, std::set<std::int64_t>& merged);
};

// Frees a result with its clusters and members and nulls the caller's pointer. Null is nothing to
// do.
void deleteVXClusterResult(VXClusterResult*& result);

// Holds a result until it is handed on, so that an exception cannot leak it.
struct VXClusterResultDeleter {
    void operator()(VXClusterResult* result) const { deleteVXClusterResult(result); }
};
using VXClusterResultHolder = std::unique_ptr<VXClusterResult, VXClusterResultDeleter>;

// Decides which pairs of recordings match, ties the recordings into clusters by the accepted pairs,
// here called links, and takes the links of each cluster strongest first to set its offsets.
class VXMergeStatsSetProcessor
{
public:
    explicit VXMergeStatsSetProcessor(const VXClusterSyncParams& params);

    // The clusters of all files of the set, owned by the caller; null if either argument is null.
    // Sets `merged` of each accepted record, and enters null in `stats` for every pair of one
    // cluster that has no record.
    VXClusterResult* run(VXFileSet* fileSet, VXMergeStatsSet* stats);

private:
    using Pair = std::pair<std::int64_t, std::int64_t>;

    // The links of one cluster that are still to be worked in. For a key (x, y) the offset is the
    // position of y minus the position of x on the cluster's time line, in frames. The two tables
    // hold the same keys.
    struct Links {
        std::map<Pair, float> linkPeaks;
        std::map<Pair, float> linkOffsets;
    };

    bool isAccepted(const VXMergeStats& record) const;
    void acceptPairs(VXMergeStatsSet& stats, VXMerger& merger) const;
    static Links collectLinks(const std::set<std::int64_t>& cluster, VXMergeStatsSet& stats);
    static bool selectLink(const Links& links, Pair& selected);
    static void applyLink(const Pair& selected, Links& links, VXClusterInternal& cluster);
    static void layOut(const std::set<std::int64_t>& fileIDs, VXMergeStatsSet& stats,
                       VXClusterInternal& cluster);
    void addToResult(const VXClusterInternal& cluster, VXClusterResult& result) const;

    std::uint32_t minLandmarksPerEstimate;
    float audioFramesPerSecond;
    float minTemplateMatchLengthInSeconds;
    float minOverlapLengthInSeconds;
    float minPercentMatch;
    std::uint32_t hopSize;
};

} // namespace VXS

#endif
