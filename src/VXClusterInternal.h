#ifndef VXS_VXCLUSTERINTERNAL_H
#define VXS_VXCLUSTERINTERNAL_H

#include <cstdint>
#include <map>
#include <set>

namespace VXS
{

// The offsets of one group of recordings while its links are worked in. It starts with a
// sub-cluster for each recording and is told, one merge at a time, how two of them lie against each
// other. An offset is where a recording starts on its sub-cluster's own time line, in frames.
// Calling order: init once, merge any number of times, normalizeOffsets once, getCluster once.
class VXClusterInternal
{
public:
    // Makes a sub-cluster for each id, with the id at offset 0.
    void init(std::set<std::int64_t> fileIDs);

    // Joins the sub-clusters that hold the two files: the first stays, the second moves as a whole
    // by `offset`, the distance between the zeros of the two. The offsets that the two files have
    // inside their sub-clusters do not enter, so name files that stand at 0. A file that no
    // sub-cluster holds counts as an empty one. Changes nothing if it runs out of memory.
    void merge(std::int64_t firstFile, std::int64_t secondFile, float offset);

    // Moves the least offset of each sub-cluster to 0.
    void normalizeOffsets();

    // The offsets by file id, one map for each sub-cluster. Equal maps are one element.
    std::set<std::map<std::int64_t, float>> getCluster() const;

private:
    // By number, which is only a label; a merge keeps the number of the first file's sub-cluster.
    std::map<std::int32_t, std::map<std::int64_t, float>> clusters;
};

} // namespace VXS

#endif
