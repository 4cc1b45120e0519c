#include "VXFileSetProcessor.h"

#include <memory>

#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmark.h"

namespace VXS
{

namespace
{

using LandmarksByFile = std::map<std::int64_t, std::vector<VXLandmark*>>;

LandmarksByFile groupByFile(const std::vector<VXLandmark*>& landmarks)
{
    LandmarksByFile landmarksByFile;
    for (VXLandmark* landmark : landmarks) {
        // A landmark without a recording has nobody to vote for.
        if (landmark->file != nullptr) landmarksByFile[landmark->getFileID()].push_back(landmark);
    }
    return landmarksByFile;
}

VXHistogram& histogramOf(VXHistogramSet& histograms, std::int64_t fileA, std::int64_t fileB)
{
    VXHistogram*& histogram = histograms[{fileA, fileB}];
    if (histogram == nullptr) histogram = new VXHistogram();
    return *histogram;
}

// Every landmark of the one file votes against every landmark of the other. The vote that is kept
// is the landmark of the file with the lower id.
void vote(VXHistogram& histogram, const std::vector<VXLandmark*>& landmarksOfA,
          const std::vector<VXLandmark*>& landmarksOfB)
{
    for (VXLandmark* a : landmarksOfA) {
        for (const VXLandmark* b : landmarksOfB) {
            histogram[a->getOffset() - b->getOffset()].push_back(a);
        }
    }
}

} // namespace

VXFileSetProcessor::VXFileSetProcessor(std::uint32_t newMaxLandmarkCount)
    : maxLandmarkCount(newMaxLandmarkCount)
{
}

VXHistogramSet* VXFileSetProcessor::run(VXFileSet* fileSet, VXProgress* progress)
{
    landmarkIndex.clear();
    addLandmarks(fileSet, progress);
    VXHistogramSet* histograms = convert2Histograms(progress);
    landmarkIndex.clear();
    return histograms;
}

void VXFileSetProcessor::addLandmarks(VXFileSet* fileSet, VXProgress* progress)
{
    if (fileSet == nullptr) return;
    if (progress != nullptr) progress->setFraction(0.0f);

    const auto& files = fileSet->getFiles();
    std::int32_t done = 0;
    for (const auto& entry : files) {
        if (entry.second != nullptr) addLandmarks(entry.second);
        ++done;
        if (progress != nullptr) {
            progress->setFraction(static_cast<float>(done) / static_cast<float>(files.size()));
        }
    }
}

void VXFileSetProcessor::addLandmarks(VXFile* file)
{
    for (const auto& frame : file->getLandmarkMap()) {
        for (VXLandmark* landmark : frame.second)
            landmarkIndex[landmark->key].push_back(landmark);
    }
}

void VXFileSetProcessor::purgeSingletons()
{
    for (auto key = landmarkIndex.begin(); key != landmarkIndex.end();) {
        key = key->second.size() < 2 ? landmarkIndex.erase(key) : std::next(key);
    }
}

VXHistogramSet* VXFileSetProcessor::convert2Histograms(VXProgress* progress)
{
    if (progress != nullptr) progress->setFraction(0.0f);
    VXHistogramSetHolder histograms(new VXHistogramSet());
    purgeSingletons();

    // Fixed here: keys that are dropped further down still count.
    const auto total = static_cast<float>(landmarkIndex.size());
    std::int32_t lastPercentage = 0;
    std::uint64_t counter = 0;
    for (auto key = landmarkIndex.begin(); key != landmarkIndex.end();) {
        ++counter;
        if (progress != nullptr) {
            const float share = static_cast<float>(counter) * 100.0f / total;
            const auto percentage = static_cast<std::int32_t>(share);
            if (lastPercentage < percentage) {
                progress->setFraction(static_cast<float>(percentage) / 100.0f);
                lastPercentage = percentage;
            }
        }
        if (key->second.size() > maxLandmarkCount) {
            key = landmarkIndex.erase(key);
            continue;
        }
        const LandmarksByFile landmarksByFile = groupByFile(key->second);
        if (landmarksByFile.size() < 2) {
            key = landmarkIndex.erase(key);
            continue;
        }
        for (auto a = landmarksByFile.begin(); a != landmarksByFile.end(); ++a) {
            for (auto b = std::next(a); b != landmarksByFile.end(); ++b) {
                vote(histogramOf(*histograms, a->first, b->first), a->second, b->second);
            }
        }
        ++key;
    }
    return histograms.release();
}

} // namespace VXS
