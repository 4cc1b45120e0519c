#ifndef VXL_SYNC_LANDMARKGROUPS_H
#define VXL_SYNC_LANDMARKGROUPS_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <vxl_audio/VXClusterSync.h>

#include "Search.h"

namespace VXS
{
class VXFile;
}

namespace vxlsync
{

// The landmarks of one recording; empty where there was nothing to extract.
struct DeleteFile {
    void operator()(VXS::VXFile* file) const;
};
using Landmarks = std::unique_ptr<VXS::VXFile, DeleteFile>;

// Extracts the landmarks of samples at 8 kHz under the id `index` + 1. Threads may run it side by
// side.
Landmarks extractLandmarks(const std::vector<float>& samples, std::size_t index);

// A group that the landmarks tell: indices and starts in seconds after the group's earliest.
struct LandmarkGroup {
    std::vector<std::size_t> members;
    std::vector<double> starts;
};

// What the library makes of the landmarks, groups of one left out. Takes the landmarks over;
// `progress` may be null.
std::vector<LandmarkGroup> groupByLandmarks(std::vector<Landmarks> landmarks,
                                            const std::vector<std::string>& names,
                                            VXS::VXProgress* progress);

// The offsets of all pairs within the groups.
std::vector<LandmarkOffset> offsetsOf(const std::vector<LandmarkGroup>& groups);

// A recording's samples as the library's own reader of WAV files gives them, or why it does not.
// The reader writes to standard output what it dislikes. Not for several threads.
struct NativeSound {
    std::vector<float> samples;
    std::string failure;
};
NativeSound readNative(const std::string& path);

} // namespace vxlsync

#endif
