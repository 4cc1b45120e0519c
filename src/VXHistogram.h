#ifndef VXS_VXHISTOGRAM_H
#define VXS_VXHISTOGRAM_H

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace VXS
{

class VXLandmark;

// The votes of one pair of recordings by offset. The offset is the position of a sound in the file
// with the lower id minus its position in the other, in frames, and a bin is exactly one offset
// wide. A bin holds one entry a vote: the landmark of the lower-id file, borrowed, in the order in
// which the votes were cast.
using VXHistogram = std::map<std::int64_t, std::vector<VXLandmark*>>;

// The histograms by pair of file ids, lower id first. A pair without a vote has none. Owns the
// histograms, but no landmark: the VXFileSet must outlive it.
using VXHistogramSet = std::map<std::pair<std::int64_t, std::int64_t>, VXHistogram*>;

// Frees the set with its histograms and nulls the caller's pointer. Null is nothing to do.
void deleteVXHistogramSet(VXHistogramSet*& histograms);

// Holds a set until it is handed on, so that an exception cannot leak it.
struct VXHistogramSetDeleter {
    void operator()(VXHistogramSet* histograms) const { deleteVXHistogramSet(histograms); }
};
using VXHistogramSetHolder = std::unique_ptr<VXHistogramSet, VXHistogramSetDeleter>;

} // namespace VXS

#endif
