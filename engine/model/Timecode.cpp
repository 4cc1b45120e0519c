#include "model/Timecode.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace vxlsync
{

namespace
{

constexpr int dayMinutes = 24 * 60;

// Numbers that are left out up to a minute: with 30 frames a second the first two of each minute
// that is no tenth, with 60 the first four.
std::int64_t leftOutBefore(int minutes, int framesPerSecond)
{
    constexpr int secondsWorth = 15;
    return static_cast<std::int64_t>(minutes - minutes / 10) * (framesPerSecond / secondsWorth);
}

} // namespace

std::optional<DayTime> dayTimeOf(const std::string& timecode, const FrameRate& rate)
{
    int hour = 0;
    int minute = 0;
    int second = 0;
    int frame = 0;
    char sign = '\0';
    char rest = '\0';
    constexpr int parts = 5;
    if (std::sscanf(timecode.c_str(), "%2d:%2d:%2d%c%3d%c", &hour, &minute, &second, &sign, &frame,
                    &rest) != parts)
        return std::nullopt;
    const auto framesPerSecond = static_cast<int>(std::lround(rate.perSecond()));
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59 ||
        frame < 0 || frame >= framesPerSecond)
        return std::nullopt;

    const bool leavesOut = sign == ';' && framesPerSecond % 30 == 0;
    const int minutes = hour * 60 + minute;
    std::int64_t frames =
        (static_cast<std::int64_t>(minutes) * 60 + second) * framesPerSecond + frame;
    std::int64_t dayFrames = static_cast<std::int64_t>(dayMinutes) * 60 * framesPerSecond;
    if (leavesOut) {
        frames -= leftOutBefore(minutes, framesPerSecond);
        dayFrames -= leftOutBefore(dayMinutes, framesPerSecond);
    }
    return DayTime{static_cast<double>(frames) / rate.perSecond(),
                   static_cast<double>(dayFrames) / rate.perSecond()};
}

} // namespace vxlsync
