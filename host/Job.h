#ifndef VXL_SYNC_JOB_H
#define VXL_SYNC_JOB_H

#include <string>
#include <vector>

#include "Report.h"

namespace vxlsync
{

class ProgressBar;

// Extracts and synchronises the recordings, which lead to different files. The library's console
// lines go to the bar while it works. Throws what the library throws.
Report runJob(const std::vector<std::string>& paths, ProgressBar& bar);

} // namespace vxlsync

#endif
