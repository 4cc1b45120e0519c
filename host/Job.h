#ifndef VXL_SYNC_JOB_H
#define VXL_SYNC_JOB_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "Decode.h"
#include "Report.h"

namespace vxlsync
{

class Progress;

struct JobOptions {
    DecodeOptions decode;
    // Read with the library's own WAV reader.
    bool native = false;
    // Tell what the landmarks say and nothing more.
    bool landmarksOnly = false;
    // Threads; at least 1.
    std::size_t jobs = 1;
    // By index of the path: known starts in seconds on a common clock, pairs that must not share a
    // group, and the recording whose clock counts (the number of paths for none).
    std::vector<std::pair<std::size_t, double>> fixed;
    std::vector<std::pair<std::size_t, std::size_t>> apart;
    std::size_t reference = 0;
};

// Reads, compares and places the recordings, which lead to different files. What the library writes
// to standard output goes to the progress.
Report runJob(const std::vector<std::string>& paths, const JobOptions& options, Progress& progress);

} // namespace vxlsync

#endif
