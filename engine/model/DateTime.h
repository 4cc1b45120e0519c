#ifndef VXL_SYNC_DATETIME_H
#define VXL_SYNC_DATETIME_H

#include <optional>
#include <string>

namespace vxlsync
{

// A date and a time of day as a file has them.
struct DateTime {
    // Since the start of 1970: in universal time if the file says how its zone lies to it, and by
    // the device's own clock if it does not.
    double seconds = 0.0;
    // How far its zone is ahead of universal time, 0 for that time itself.
    std::optional<int> zoneMinutes;
};

// Reads year, month, day, hour, minute and second, in this order with one sign between any two, and
// where they follow a fraction of the second and a zone: "2026-06-01T10:00:37.5+02:00",
// "2026:06:01 10:00:37", "2026-06-01 10-00-37Z". Nothing for what is no time, and for years in
// which nothing recorded to files: they are the zeros of clocks that nobody set.
std::optional<DateTime> parseDateTime(const std::string& text);

// As "2026-06-01T10:00:37+02:00", with "Z" for universal time and nothing behind the seconds for a
// zone that is not known. Requires what parseDateTime gave.
std::string textOf(const DateTime& time);

} // namespace vxlsync

#endif
