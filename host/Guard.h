#ifndef VXL_SYNC_GUARD_H
#define VXL_SYNC_GUARD_H

#include <functional>
#include <iosfwd>

#include "ExitCode.h"

namespace vxlsync::host
{

// Does the work and answers its code. Whatever it throws is written to `err` as a sentence, and the
// code says so.
ExitCode guarded(const std::function<ExitCode()>& work, std::ostream& err);

} // namespace vxlsync::host

#endif
