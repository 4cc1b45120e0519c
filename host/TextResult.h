#ifndef VXL_SYNC_TEXTRESULT_H
#define VXL_SYNC_TEXTRESULT_H

#include <iosfwd>

#include <vxl_sync/Result.h>

namespace vxlsync::host
{

// For people: offsets with four decimals, names and paths as printable() shows them.
void writeText(const Result& result, std::ostream& out);

} // namespace vxlsync::host

#endif
