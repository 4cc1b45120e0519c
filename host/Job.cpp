#include "Job.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include <vxl_audio/VXClusterSync.h>
#include <vxl_audio/VXExtractParams.h>
#include <vxl_audio/VXFileSet.h>
#include <vxl_audio/VXLandmarkExtract.h>

#include "ConsoleRedirect.h"
#include "FailureReason.h"
#include "Paths.h"
#include "ProgressBar.h"
#include "SyncProgress.h"

namespace vxlsync
{

namespace
{

// The host frees a result level by level.
struct ResultDeleter {
    void operator()(VXS::VXClusterResult* result) const
    {
        for (VXS::VXClusterMembers* members : *result) {
            for (VXS::VXClusterMember* member : *members)
                delete member;
            delete members;
        }
        delete result;
    }
};

std::unique_ptr<VXS::VXFileSet> extract(const std::vector<std::string>& paths,
                                        const VXS::VXExtractParams& params, ProgressBar& bar)
{
    const auto total = std::count_if(paths.begin(), paths.end(), hasWavExtension);
    const std::string label = "Extracting";
    const std::string doneLine = "FEATURE EXTRACTION COMPLETE: ";
    int done = 0;
    bar.show(label, 0.0f);
    const ConsoleRedirect redirect([&](const std::string& line) {
        bar.printLine(line);
        if (line.compare(0, doneLine.size(), doneLine) == 0) ++done;
        if (total > 0) bar.show(label, static_cast<float>(done) / static_cast<float>(total));
    });
    VXS::VXLandmarkExtract extractor(params);
    return std::unique_ptr<VXS::VXFileSet>(extractor.runAll(paths));
}

std::vector<Group> synchronise(VXS::VXFileSet& fileSet, const VXS::VXExtractParams& params,
                               ProgressBar& bar)
{
    const ConsoleRedirect redirect([&bar](const std::string& line) { bar.printLine(line); });
    SyncProgress progress(bar);
    VXS::VXClusterSync sync{VXS::VXClusterSyncParams(params)};
    const std::unique_ptr<VXS::VXClusterResult, ResultDeleter> result(
        sync.run(&fileSet, &progress));

    std::vector<Group> clusters;
    if (result == nullptr) return clusters;
    for (const VXS::VXClusterMembers* members : *result) {
        Group group;
        for (const VXS::VXClusterMember* member : *members) {
            group.push_back({member->fileID, member->name, fileSet.idToPath.at(member->fileID),
                             member->offsetSeconds});
        }
        clusters.push_back(std::move(group));
    }
    return clusters;
}

std::vector<Failure> failuresAmong(const std::vector<std::string>& paths,
                                   const VXS::VXFileSet& fileSet,
                                   const VXS::VXExtractParams& params)
{
    std::set<std::string> extracted;
    for (const auto& entry : fileSet.idToPath)
        extracted.insert(entry.second);

    std::vector<Failure> failures;
    for (const std::string& path : paths) {
        if (extracted.count(path) == 0) failures.push_back({path, failureReason(path, params)});
    }
    return failures;
}

} // namespace

Report runJob(const std::vector<std::string>& paths, ProgressBar& bar)
{
    const VXS::VXExtractParams params;
    const std::unique_ptr<VXS::VXFileSet> fileSet = extract(paths, params, bar);
    std::vector<Failure> failures = failuresAmong(paths, *fileSet, params);
    return makeReport(synchronise(*fileSet, params, bar), std::move(failures));
}

} // namespace vxlsync
