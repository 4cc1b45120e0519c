#ifndef VXL_SYNC_TAKE_H
#define VXL_SYNC_TAKE_H

#include <optional>
#include <string>
#include <vector>

#include "model/FileFacts.h"
#include "vxl_sync/Result.h"

namespace vxlsync
{

// What is known of a recording besides its sound.
struct Take {
    // Empty for samples of the host.
    std::string path;
    // As it was stated, or empty.
    std::string device;
    double seconds = 0.0;
    FileFacts facts;
};

using Takes = std::vector<Take>;

// Where a recording comes from.
struct Origin {
    // The same name for all that one device recorded; empty if that is not known.
    std::string device;
    DeviceEvidence knownBy = DeviceEvidence::none;
    // When it began by the clock of its device, to be compared within the device only.
    std::optional<double> clockStart;
};

} // namespace vxlsync

#endif
