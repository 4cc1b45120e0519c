#include "VXClusterInternal.h"

#include <limits>

namespace VXS
{

namespace
{

using Offsets = std::map<std::int64_t, float>;

// A file that no sub-cluster holds is found as an empty one under the number -1, so that a merge
// with it keeps the other file's sub-cluster.
struct SubCluster {
    std::int32_t number = -1;
    Offsets offsets;
};

SubCluster subClusterOf(const std::map<std::int32_t, Offsets>& clusters, std::int64_t file)
{
    for (const auto& cluster : clusters) {
        if (cluster.second.count(file) != 0) return {cluster.first, cluster.second};
    }
    return {};
}

} // namespace

void VXClusterInternal::init(std::set<std::int64_t> fileIDs)
{
    std::int32_t number = 0;
    for (const std::int64_t id : fileIDs) {
        clusters[number] = Offsets{{id, 0.0f}};
        ++number;
    }
}

void VXClusterInternal::merge(std::int64_t firstFile, std::int64_t secondFile, float offset)
{
    if (firstFile == secondFile) return;
    const SubCluster first = subClusterOf(clusters, firstFile);
    const SubCluster second = subClusterOf(clusters, secondFile);

    Offsets merged = first.offsets;
    // Replaces what stands there: two files of one sub-cluster move it as a whole.
    for (const auto& entry : second.offsets)
        merged[entry.first] = entry.second + offset;
    clusters[first.number].swap(merged);
    // Last, so that no file is lost for want of memory.
    if (second.number != first.number) clusters.erase(second.number);
}

void VXClusterInternal::normalizeOffsets()
{
    for (auto& cluster : clusters) {
        float least = std::numeric_limits<float>::infinity();
        for (const auto& entry : cluster.second) {
            if (entry.second <= least) least = entry.second;
        }
        for (auto& entry : cluster.second)
            entry.second -= least;
    }
}

std::set<std::map<std::int64_t, float>> VXClusterInternal::getCluster() const
{
    std::set<Offsets> result;
    for (const auto& cluster : clusters)
        result.insert(cluster.second);
    return result;
}

} // namespace VXS
