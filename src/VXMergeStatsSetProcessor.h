#ifndef VXS_VXMERGESTATSSETPROCESSOR_H
#define VXS_VXMERGESTATSSETPROCESSOR_H

#include <cstddef>
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
    // such ids enter an empty group. Changes nothing if it runs out of memory.
    void mergeClusters(std::int64_t firstID, std::int64_t secondID);

    // Disjoint, so that they stand in order of their lowest id.
    std::set<std::set<std::int64_t>> fileClusters;

private:
    // One element out of its set; empty where there is none.
    using Group = std::set<std::set<std::int64_t>>::node_type;

    Group takeGroupOf(std::int64_t fileID);
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

    // The links of one cluster that are still to be worked in. For a pair (x, y) the offset is the
    // position of y minus the position of x on the cluster's time line, in frames. Links are kept
    // by strength and by file as well, so that working one in touches only those of its two files.
    class Links
    {
    public:
        void set(const Pair& pair, float peak, float offset);
        // Finds the strongest link. Of equal ones the last in order of ids wins. Answers false if
        // no link is left, or none that can be compared.
        bool select(Pair& selected) const;
        // Moves the second file's sub-cluster onto the first file's time line and gives its links
        // to the first file.
        void apply(const Pair& selected, VXClusterInternal& cluster);

    private:
        struct Link {
            float peak = 0.0f;
            float offset = 0.0f;
            // A link that was offered without votes has none.
            bool hasOffset = false;
        };

        void offer(const Pair& pair, float peak, float offset);
        void remember(const Pair& pair, const Link& link);
        void forget(const Pair& pair, const Link& link);
        void erase(const Pair& pair);

        std::map<Pair, Link> links;
        std::set<std::pair<float, Pair>> byStrength;
        std::map<std::int64_t, std::set<std::int64_t>> partnersOf;
        std::size_t offsets = 0;
    };

    bool isAccepted(const VXMergeStats& record) const;
    void acceptPairs(VXMergeStatsSet& stats, VXMerger& merger) const;
    static Links collectLinks(const std::set<std::int64_t>& cluster, VXMergeStatsSet& stats);
    static void layOut(const std::set<std::int64_t>& fileIDs, VXMergeStatsSet& stats,
                       VXClusterInternal& cluster);
    void addToResult(const VXClusterInternal& cluster, VXClusterResult& result) const;

    std::uint32_t minLandmarksPerEstimate;
    float audioFramesPerSecond;
    float minTemplateMatchLengthInSeconds;
    float minOverlapLengthInSeconds;
    float minPercentMatch;
    // Kept with the rest of the parameters. Nothing reads it: offsets become seconds by the rate of
    // the frames alone.
    std::uint32_t hopSize;
};

} // namespace VXS

#endif
