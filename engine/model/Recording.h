#ifndef VXL_SYNC_RECORDING_H
#define VXL_SYNC_RECORDING_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "model/FileFacts.h"
#include "model/SampleStore.h"

namespace vxlsync
{

// Rate at which recordings are compared. Speech and music have nearly all that ties two recordings
// together below 4 kHz, and the landmarks are made at this rate.
constexpr int analysisRate = 8000;

// One source as it was read: a single channel whose sample 0 is the start of its file. What reading
// hands to matching.
struct Recording {
    // At analysisRate.
    SampleStore<float> samples;
    // The same sound at fineRate for the last refinement. Empty if the source has nothing above
    // what `samples` can hold; then fineRate equals analysisRate.
    SampleStore<std::uint16_t> fine;
    int fineRate = analysisRate;
    double durationSeconds = 0.0;
    // Of the samples without their mean.
    double meanSquare = 0.0;
    FileFacts facts;
    // Empty, or why the source could not be read; then there are no samples.
    std::string failure;
    // Remarks for the user on what was odd or was mended while reading.
    std::vector<std::string> notes;
};

} // namespace vxlsync

#endif
