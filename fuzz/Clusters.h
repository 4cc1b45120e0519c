#ifndef FUZZ_CLUSTERS_H
#define FUZZ_CLUSTERS_H

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "VXClusterSync.h"

namespace fuzz
{

using Pair = std::pair<std::int64_t, std::int64_t>;

// What decides about one pair of recordings.
struct PairRecord {
    float peakCount;
    float bestOffset;
    float templateMatchLength;
    float overlapLength;
    float percentMatchA;
    float percentMatchB;
    float meanCount;
    float stdDevCount;
    bool isAccepted = false;
};

// Seconds by id, as they come out for one cluster.
using Cluster = std::map<std::int64_t, float>;

// From the records of the pairs to the clusters with their offsets, in the plainest form: each
// table a map that is walked from its front for each step. What it gives the library must give.
class Clusters
{
public:
    explicit Clusters(float newFramesPerSecond) : framesPerSecond(newFramesPerSecond) {}

    // Marks the records that are accepted. In order of the lowest id of each cluster.
    std::vector<Cluster> run(const std::set<std::int64_t>& ids,
                             std::map<Pair, PairRecord>& records) const;

private:
    bool isAccepted(const PairRecord& record) const;
    std::set<std::set<std::int64_t>> groups(const std::set<std::int64_t>& ids,
                                            const std::map<Pair, PairRecord>& records) const;
    std::map<std::int64_t, float> offsets(const std::set<std::int64_t>& group,
                                          const std::map<Pair, PairRecord>& records) const;

    float framesPerSecond;
};

// The library's clusters in the same form and order.
std::vector<Cluster> clustersOf(const VXS::VXClusterResult& result);

void requireSameClusters(const VXS::VXClusterResult& library, const std::vector<Cluster>& twin);

} // namespace fuzz

#endif
