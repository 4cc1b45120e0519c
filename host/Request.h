#ifndef VXL_SYNC_REQUEST_H
#define VXL_SYNC_REQUEST_H

#include <stdexcept>
#include <string>
#include <vector>

#include <vxl_sync/Sync.h>

#include "Options.h"

namespace vxlsync::host
{

// A command line that contradicts itself; what() is a sentence for the user.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// What the engine is asked for.
struct Request {
    std::vector<Source> sources;
    vxlsync::Options options;
};

// The sources of these paths, in their order, and the options with recordings by index. Throws
// UsageError for an option that names a recording which is not among the paths or which the name
// does not tell from another, for two known starts of one recording that differ, for two
// devices of one recording, and for a recording that shall be apart from itself.
Request requestOf(const Options& options, const std::vector<std::string>& paths);

} // namespace vxlsync::host

#endif
