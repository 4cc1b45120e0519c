#ifndef VXL_SYNC_LANDMARKFILES_H
#define VXL_SYNC_LANDMARKFILES_H

#include <memory>
#include <vector>

#include "model/Recording.h"
#include "running/Run.h"

namespace VXS
{
class VXFile;
}

namespace vxlsync
{

struct DeleteLandmarkFile {
    void operator()(VXS::VXFile* file) const;
};
// The landmarks of one recording; its id is the recording's index and one.
using LandmarkFile = std::unique_ptr<VXS::VXFile, DeleteLandmarkFile>;

// By recording; null for one without samples. Makes a step of the meter for each. Throws Cancelled.
std::vector<LandmarkFile> extractLandmarks(const std::vector<Recording>& recordings, Run& run);

} // namespace vxlsync

#endif
