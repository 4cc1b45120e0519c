#include "VXClusterSync.h"

#include "VXFileSet.h"
#include "VXFileSetProcessor.h"
#include "VXFloatingPoint.h"
#include "VXHistogram.h"
#include "VXHistogramSetProcessor.h"
#include "VXMergeStats.h"
#include "VXMergeStatsSetProcessor.h"

namespace VXS
{

namespace
{

void report(VXProgress* progress, int stage)
{
    if (progress != nullptr) progress->setStage(stage);
}

// An id without a name gets an empty one, in the map as well.
void nameMembers(const VXClusterResult& result, std::map<std::int64_t, std::string>& idToName)
{
    for (VXClusterMembers* members : result) {
        for (VXClusterMember* member : *members)
            member->name = idToName[member->fileID];
    }
}

} // namespace

VXClusterSync::VXClusterSync(const VXClusterSyncParams& newParams) : params(newParams) {}

VXClusterResult* VXClusterSync::run(VXFileSet* fileSet, VXProgress* progress)
{
    const DefaultFloatingPoint environment;
    report(progress, 0);
    if (fileSet != nullptr) fileSet->computeAllCLFs();

    report(progress, 1);
    VXFileSetProcessor fileSetProcessor(params.getMaxLandmarkCount());
    VXHistogramSetHolder histograms(fileSetProcessor.run(fileSet, progress));

    report(progress, 2);
    VXHistogramSetProcessor histogramSetProcessor;
    VXMergeStatsSetHolder stats(histogramSetProcessor.run(fileSet, histograms.get()));

    report(progress, 3);
    // The votes are by far the largest thing here and nothing reads them any more.
    histograms.reset();

    report(progress, 4);
    VXMergeStatsSetProcessor mergeStatsSetProcessor(params);
    VXClusterResultHolder result(mergeStatsSetProcessor.run(fileSet, stats.get()));
    if (result != nullptr) nameMembers(*result, fileSet->idToName);

    report(progress, 5);
    stats.reset();
    return result.release();
}

} // namespace VXS
