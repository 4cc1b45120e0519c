#ifndef VXL_SYNC_TIMECODE_H
#define VXL_SYNC_TIMECODE_H

#include <optional>
#include <string>

#include "vxl_sync/Result.h"

namespace vxlsync
{

// A time on a clock that begins again every day.
struct DayTime {
    double seconds = 0.0;
    // After which it is at 0 again. More than a day where a timecode counts fewer frames a second
    // than its numbers say.
    double daySeconds = 24.0 * 3600.0;
};

// When the frame named by a timecode such as "10:00:00:12" is: frames since 0 over their rate, so
// that the difference of two is the time that went by. With ";" before the frames the numbers leave
// out some, which keeps them on the clock on the wall. Nothing for a text that is no timecode or
// names a frame that the rate does not have.
std::optional<DayTime> dayTimeOf(const std::string& timecode, const FrameRate& rate);

} // namespace vxlsync

#endif
