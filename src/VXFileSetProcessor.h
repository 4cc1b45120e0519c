#ifndef VXS_VXFILESETPROCESSOR_H
#define VXS_VXFILESETPROCESSOR_H

#include <cstdint>
#include <limits>

#include "VXHistogram.h"
#include "VXKeyIndex.h"
#include "VXPostingLists.h"

namespace VXS
{

class VXFile;
class VXFileSet;
class VXProgress;

// Turns the landmarks of all recordings into one offset histogram for each pair of them. It files
// every landmark under its key first and lets only landmarks of one key vote, so that the work
// grows with the landmarks that share a key and not with the product of all landmarks of two
// recordings. The landmarks are borrowed from their files.
//
// Where there are more landmarks or files than 32 bits can number, filing them throws
// std::length_error.
class VXFileSetProcessor
{
public:
    // A key that more than `newMaxLandmarkCount` landmarks hold, over all files together, is too
    // common to tell anything and casts no vote.
    explicit VXFileSetProcessor(std::uint32_t newMaxLandmarkCount);

    // The whole stage, with the index empty before and after. The caller owns the result, which is
    // never null. `progress` may be null.
    VXHistogramSet* run(VXFileSet* fileSet, VXProgress* progress);

    // Files the landmarks of all files, in order of id.
    void addLandmarks(VXFileSet* fileSet, VXProgress* progress);
    // Files the landmarks of one file, by frame and in their order within it.
    void addLandmarks(VXFile* file);
    // Lets the keys vote, and takes them out of the index as they do. The caller owns the result,
    // which is never null. Requires: addLandmarks has run.
    VXHistogramSet* convert2Histograms(VXProgress* progress);
    // Drops every key that one landmark alone holds.
    void purgeSingletons();

private:
    template <typename Code>
    void vote(const VXPostingLayout& layout, VXHistogramSet& histograms, VXProgress* progress);

    VXKeyIndex landmarkIndex;
    std::uint32_t maxLandmarkCount;
    // So many votes at most are counted in 32 bits: no bin can hold more.
    std::uint64_t mostNarrowVotes = std::numeric_limits<std::uint32_t>::max();
};

} // namespace VXS

#endif
