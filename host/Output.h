#ifndef VXL_SYNC_OUTPUT_H
#define VXL_SYNC_OUTPUT_H

#include <iosfwd>
#include <string>

#include "Report.h"

namespace vxlsync
{

// For people: offsets with four decimals.
void writeText(const Report& report, std::ostream& out);

// For programs: one JSON object, `version` 2, as result.schema.json in this folder describes it.
// Bytes of a name or path that are not UTF-8 come out as U+FFFD.
void writeJson(const Report& report, std::ostream& out);

// For tables: a heading and one line for each recording, in the quoting of RFC 4180.
void writeCsv(const Report& report, std::ostream& out);

// The text with control characters as "\x1b", so that a file name can neither break a line nor
// command the terminal.
std::string printable(const std::string& text);

} // namespace vxlsync

#endif
