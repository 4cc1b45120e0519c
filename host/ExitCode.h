#ifndef VXL_SYNC_EXITCODE_H
#define VXL_SYNC_EXITCODE_H

#include <vxl_sync/Result.h>

namespace vxlsync::host
{

// What the program ends with. Where several hold, an unreadable file comes before no match. The
// help text lists the codes, and those of the signals that end the program.
enum class ExitCode {
    grouped = 0,
    internalError = 1,
    usage = 2,
    unreadableFile = 3,
    nothingMatched = 4,
};

inline ExitCode exitCodeOf(const Result& result)
{
    if (!result.failed.empty()) return ExitCode::unreadableFile;
    if (result.groups.empty()) return ExitCode::nothingMatched;
    return ExitCode::grouped;
}

} // namespace vxlsync::host

#endif
