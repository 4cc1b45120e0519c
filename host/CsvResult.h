#ifndef VXL_SYNC_CSVRESULT_H
#define VXL_SYNC_CSVRESULT_H

#include <iosfwd>

#include <vxl_sync/Result.h>

namespace vxlsync::host
{

// For tables: a heading and one line for each recording, in the quoting of RFC 4180. Texts stand as
// printable() shows them, behind an apostrophe if a spreadsheet would take them for a formula.
void writeCsv(const Result& result, std::ostream& out);

} // namespace vxlsync::host

#endif
