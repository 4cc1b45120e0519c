#ifndef VXL_SYNC_FAILUREREASON_H
#define VXL_SYNC_FAILUREREASON_H

#include <string>

#include <vxl_audio/VXExtractParams.h>

namespace vxlsync
{

// Why the path cannot be opened as a file, or empty if it can: a phrase that goes behind the path
// and a colon. Only regular files count; opening a pipe or a device could wait for ever.
std::string obstacleOf(const std::string& path);

// Finds out why the library, working with `params`, made no recording of the file: a phrase that
// goes behind the path and a colon. The library itself only tells apart what it cannot load and
// what has another sample rate.
std::string failureReason(const std::string& path, const VXS::VXExtractParams& params);

} // namespace vxlsync

#endif
