#include "match/Landmarks.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include <vxl_audio/VXClusterSync.h>
#include <vxl_audio/VXExtractParams.h>
#include <vxl_audio/VXFile.h>
#include <vxl_audio/VXFileSet.h>

#include "match/LandmarkFiles.h"
#include "match/LandmarkWatch.h"

namespace vxlsync
{

namespace
{

// A result is freed level by level.
struct DeleteResult {
    void operator()(VXS::VXClusterResult* result) const
    {
        const std::unique_ptr<VXS::VXClusterResult> owned(result);
        for (VXS::VXClusterMembers* members : *result) {
            const std::unique_ptr<VXS::VXClusterMembers> ownedMembers(members);
            for (VXS::VXClusterMember* member : *members)
                std::default_delete<VXS::VXClusterMember>()(member);
        }
    }
};

void giveTo(VXS::VXFileSet& set, LandmarkFile file)
{
    const std::int64_t id = file->getFileID();
    const std::string name = std::to_string(id);
    set.idToName[id] = name;
    set.nameToId[name] = id;
    set.idToPath[id] = name;
    set.addFile(file.get());
    // The set owns it now; until then a failure must not free it twice.
    file.release();
}

std::vector<LandmarkGroup> groupsOf(const VXS::VXClusterResult& result)
{
    std::vector<LandmarkGroup> groups;
    for (const VXS::VXClusterMembers* members : result) {
        if (members->size() < 2) continue;
        LandmarkGroup group;
        for (const VXS::VXClusterMember* member : *members) {
            group.members.push_back(static_cast<std::size_t>(member->fileID - 1));
            group.starts.push_back(static_cast<double>(member->offsetSeconds));
        }
        groups.push_back(group);
    }
    // The result is ordered by address.
    std::sort(groups.begin(), groups.end(),
              [](const LandmarkGroup& left, const LandmarkGroup& right) {
                  return left.members.front() < right.members.front();
              });
    return groups;
}

} // namespace

std::vector<LandmarkGroup> groupByLandmarks(const std::vector<Recording>& recordings, Run& run)
{
    // Grouping is the last step.
    run.meter.begin(Stage::landmarks, recordings.size() + 1);
    VXS::VXFileSet set;
    for (LandmarkFile& file : extractLandmarks(recordings, run)) {
        if (file) giveTo(set, std::move(file));
    }
    VXS::VXClusterSync sync{VXS::VXClusterSyncParams(VXS::VXExtractParams())};
    LandmarkWatch watch(run.interrupt);
    // Null would be the answer to no set only.
    const std::unique_ptr<VXS::VXClusterResult, DeleteResult> result(sync.run(&set, &watch));
    run.meter.step();
    return groupsOf(*result);
}

} // namespace vxlsync
