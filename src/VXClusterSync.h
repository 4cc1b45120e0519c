#ifndef VXS_VXCLUSTERSYNC_H
#define VXS_VXCLUSTERSYNC_H

#include <cstdint>
#include <set>
#include <string>

#include "VXClusterSyncParams.h"
#include "VXExport.h"

namespace VXS
{

class VXFileSet;

// Tells a host how far VXClusterSync::run is. The host implements it; the library only calls it, on
// the thread that called run, and never deletes it. It cannot stop a run. What it throws passes
// through run to the caller. It is called in the default floating-point environment, and leaves it
// so.
class VXS_API VXProgress
{
public:
    // The work with this code is about to start. Each code comes once in every run, in this order:
    // 0 cumulative counts, 1 index of landmarks and offset histograms, 2 evaluation of the
    // histograms, 3 release of the histograms, 4 merging into clusters, 5 release of the rest.
    virtual void setStage(int stage) = 0;
    // Completed share of the stage, 0.0 to 1.0. Called in stage 1 only, where it rises from 0 to 1
    // twice: once over the recordings, once over the keys.
    virtual void setFraction(float fraction) = 0;

protected:
    ~VXProgress() = default;
};

// One recording of a cluster.
struct VXClusterMember {
    // Short name, from VXFileSet::idToName.
    std::string name;
    // Id of the recording, cut to its low 32 bits and sign-extended.
    std::int64_t fileID;
    // Seconds from the start of the cluster's earliest recording to the start of this one.
    float offsetSeconds;
};

struct VXClusterMemberOrder {
    bool operator()(const VXClusterMember* left, const VXClusterMember* right) const
    {
        return left->fileID < right->fileID;
    }
};

// The recordings of one cluster in order of id. Owns them in the sense told at VXClusterResult.
using VXClusterMembers = std::set<VXClusterMember*, VXClusterMemberOrder>;

// The clusters, in no order that carries a meaning. It belongs to whoever called run, with
// everything in it: delete each member, then each inner set, then the outer set.
using VXClusterResult = std::set<VXClusterMembers*>;

// Lines up the recordings of a VXFileSet: equal landmark keys in two recordings vote for the offset
// between them, in one histogram for each pair; a pair whose best bin stands out ties its two
// recordings together, and the strongest ties set the offsets of each cluster. The voting is that
// of fingerprinting by landmarks, as described by A. Wang, "An Industrial-Strength Audio Search
// Algorithm" (ISMIR 2003), used here between recordings of one event.
//
// The object holds a copy of its parameters and no state between runs, so one object may serve any
// number of file sets. Separate objects may run on separate threads, on separate file sets.
class VXClusterSync
{
public:
    // Takes a copy of the parameters, which convert: they are all that makes a VXClusterSync.
    VXS_API VXClusterSync(const VXClusterSyncParams& newParams);

    // Returns the clusters of the set's recordings; a recording that matches nothing is a cluster
    // of its own. The caller owns the result (see VXClusterResult) and keeps `fileSet` and
    // `progress`; the result holds no pointer into the set. `progress` may be null. The set is not
    // to be touched by another thread meanwhile: run completes the counts of its files and enters
    // an empty name in idToName for a member that has none. Throws std::bad_alloc when memory runs
    // out, and std::length_error for more landmarks than 32 bits number or more files than 31; it
    // leaks nothing then.
    VXS_API VXClusterResult* run(VXFileSet* fileSet, VXProgress* progress);

private:
    VXClusterSyncParams params;
};

} // namespace VXS

#endif
