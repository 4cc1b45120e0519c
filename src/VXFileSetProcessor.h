#ifndef VXS_VXFILESETPROCESSOR_H
#define VXS_VXFILESETPROCESSOR_H

#include <cstdint>
#include <map>
#include <vector>

#include "VXHistogram.h"

namespace VXS
{

class VXFile;
class VXFileSet;
class VXLandmark;
class VXProgress;

// Turns the landmarks of all recordings into one offset histogram for each pair of them. It files
// every landmark under its key first, an inverted file, so that the work grows with the landmarks
// that share a key and not with the product of all landmarks of two recordings. The landmarks are
// borrowed from their files.
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
    // Lets the keys vote, in ascending order. The caller owns the result, which is never null. Keys
    // that may not vote leave the index. Requires: addLandmarks has run.
    VXHistogramSet* convert2Histograms(VXProgress* progress);
    // Drops every key that one landmark alone holds.
    void purgeSingletons();

private:
    std::map<std::uint32_t, std::vector<VXLandmark*>> landmarkIndex;
    std::uint32_t maxLandmarkCount;
};

} // namespace VXS

#endif
