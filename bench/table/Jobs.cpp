#include "Jobs.h"

#include <algorithm>
#include <stdexcept>

#include "Measure.h"
#include "VXClusterSyncParams.h"
#include "VXFile.h"
#include "VXFileSetProcessor.h"
#include "VXHistogramSetProcessor.h"
#include "VXLandmarkExtract.h"
#include "VXMergeStatsSetProcessor.h"

namespace bench
{

std::unique_ptr<VXS::VXFileSet> extractFiles(const std::vector<std::string>& paths)
{
    auto fileSet = std::make_unique<VXS::VXFileSet>();
    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
    std::int64_t fileID = 0;
    for (const std::string& path : paths) {
        VXS::VXFile* file = extractor.run(path, ++fileID);
        if (file == nullptr) throw std::runtime_error(path + ": cannot be extracted");
        fileSet->addFile(file);
    }
    return fileSet;
}

std::size_t landmarksIn(VXS::VXFileSet& fileSet)
{
    std::size_t count = 0;
    for (const auto& file : fileSet.getFiles()) {
        for (const auto& frame : file.second->getLandmarkMap())
            count += frame.second.size();
    }
    return count;
}

void forgetCounts(VXS::VXFileSet& fileSet)
{
    for (const auto& entry : fileSet.getFiles()) {
        VXS::VXFile& file = *entry.second;
        file.clf.clear();
        file.clfDirty = true;
        for (auto frame = file.landmarks.begin(); frame != file.landmarks.end();) {
            frame = frame->second.empty() ? file.landmarks.erase(frame) : std::next(frame);
        }
    }
}

Synchronisation synchronise(VXS::VXFileSet& fileSet)
{
    const VXS::VXClusterSyncParams params{VXS::VXExtractParams()};
    Synchronisation done;
    StageTimes& times = done.times;
    VXS::VXHistogramSetHolder histograms;
    VXS::VXMergeStatsSetHolder stats;
    VXS::VXClusterResultHolder result;
    forgetCounts(fileSet);

    times.counts = secondsOf([&] { fileSet.computeAllCLFs(); });
    VXS::VXFileSetProcessor fileSetProcessor(params.getMaxLandmarkCount());
    times.index = secondsOf([&] { fileSetProcessor.addLandmarks(&fileSet, nullptr); });
    times.votes = secondsOf([&] {
        histograms.reset(fileSetProcessor.convert2Histograms(nullptr));
        fileSetProcessor.landmarkIndex.clear();
    });
    for (const auto& histogram : *histograms) {
        for (const auto& bin : *histogram.second)
            done.votes += bin.votes;
    }
    times.evaluation = secondsOf([&] {
        VXS::VXHistogramSetProcessor histogramSetProcessor;
        stats.reset(histogramSetProcessor.run(&fileSet, histograms.get()));
    });
    times.release = secondsOf([&] { histograms.reset(); });
    times.merge = secondsOf([&] {
        VXS::VXMergeStatsSetProcessor mergeStatsSetProcessor(params);
        result.reset(mergeStatsSetProcessor.run(&fileSet, stats.get()));
    });
    times.release += secondsOf([&] { stats.reset(); });

    done.clusters = result->size();
    for (const auto* members : *result)
        done.largestCluster = std::max(done.largestCluster, members->size());
    return done;
}

Synchronisation synchroniseRepeatedly(VXS::VXFileSet& fileSet, int runs)
{
    std::vector<Synchronisation> all;
    for (int i = 0; i < runs; ++i)
        all.push_back(synchronise(fileSet));
    std::sort(all.begin(), all.end(),
              [](const Synchronisation& left, const Synchronisation& right) {
                  return left.times.all() < right.times.all();
              });
    return all[all.size() / 2];
}

} // namespace bench
