#ifndef VXL_SYNC_EXITCODE_H
#define VXL_SYNC_EXITCODE_H

#include "Report.h"

namespace vxlsync
{

// What the program ends with. Where several hold, an unreadable file comes before no match. The
// help text lists the codes.
enum class ExitCode {
    grouped = 0,
    internalError = 1,
    usage = 2,
    unreadableFile = 3,
    nothingMatched = 4,
};

inline ExitCode exitCodeOf(const Report& report)
{
    if (!report.failed.empty()) return ExitCode::unreadableFile;
    if (report.groups.empty()) return ExitCode::nothingMatched;
    return ExitCode::grouped;
}

} // namespace vxlsync

#endif
