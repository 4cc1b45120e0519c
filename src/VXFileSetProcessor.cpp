#include "VXFileSetProcessor.h"

#include <algorithm>
#include <cstddef>

#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXKeyProgress.h"
#include "VXPairCounter.h"

namespace VXS
{

namespace
{

// The landmarks of a file whose counts are up to date; otherwise 0.
std::size_t expectedLandmarks(VXFile& file)
{
    const std::int64_t count = file.queryNumberLandmarksInBetween(file.getMinLandmarkOffsetTime(),
                                                                  file.getMaxLandmarkOffsetTime());
    return static_cast<std::size_t>(std::max<std::int64_t>(count, 0));
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
    VXHistogramSetHolder histograms(convert2Histograms(progress));
    landmarkIndex.clear();
    return histograms.release();
}

void VXFileSetProcessor::addLandmarks(VXFileSet* fileSet, VXProgress* progress)
{
    if (fileSet == nullptr) return;
    if (progress != nullptr) progress->setFraction(0.0f);

    const auto& files = fileSet->getFiles();
    std::size_t expected = 0;
    for (const auto& entry : files) {
        if (entry.second != nullptr) expected += expectedLandmarks(*entry.second);
    }
    landmarkIndex.prepareFor(expected);

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
    landmarkIndex.add(file);
}

void VXFileSetProcessor::purgeSingletons()
{
    landmarkIndex.purgeSingletons();
}

VXHistogramSet* VXFileSetProcessor::convert2Histograms(VXProgress* progress)
{
    if (progress != nullptr) progress->setFraction(0.0f);
    VXHistogramSetHolder histograms(new VXHistogramSet());
    const VXPostingLayout layout = landmarkIndex.order();
    // One bit is the mark of a list's end.
    if (layout.fileBits + layout.offsetBits < std::numeric_limits<std::uint32_t>::digits) {
        vote<std::uint32_t>(layout, *histograms, progress);
    } else {
        vote<std::uint64_t>(layout, *histograms, progress);
    }
    return histograms.release();
}

template <typename Code>
void VXFileSetProcessor::vote(const VXPostingLayout& layout, VXHistogramSet& histograms,
                              VXProgress* progress)
{
    // Singletons are left out here, which spares a purge of its own.
    const auto lists = landmarkIndex.takeLists<Code>(layout, maxLandmarkCount);
    const std::uint64_t votes = lists.votes();
    VXKeyProgress keyProgress(progress, lists.keys, votes);
    VXPairCounter<Code> counter(landmarkIndex, lists, histograms);
    if (votes <= mostNarrowVotes) {
        counter.template countAllPairs<std::uint32_t>(keyProgress);
    } else {
        counter.template countAllPairs<std::uint64_t>(keyProgress);
    }
    keyProgress.finish();
}

} // namespace VXS
