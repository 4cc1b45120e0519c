#ifndef VXL_SYNC_TESTS_TESTTAKES_H
#define VXL_SYNC_TESTS_TESTTAKES_H

#include <optional>
#include <string>
#include <vector>

#include "model/Take.h"

// Takes as the files of devices tell of them.
namespace takes
{

// Ten o'clock in universal time on a day of June 2026.
constexpr double ten = 1780308000.0;

inline vxlsync::Take take(const std::string& path, double seconds)
{
    vxlsync::Take result;
    result.path = path;
    result.seconds = seconds;
    return result;
}

// With a time of creation so many seconds after ten.
inline vxlsync::Take created(double seconds, double length, const std::string& path = "a.mov")
{
    vxlsync::Take result = take(path, length);
    result.facts.created = vxlsync::DateTime{ten + seconds, 0};
    return result;
}

// With a count of the device that begins so many seconds after midnight.
inline vxlsync::Take counted(double seconds, double length, const std::string& path = "a.mov")
{
    vxlsync::Take result = take(path, length);
    result.facts.started = vxlsync::DayTime{seconds};
    return result;
}

inline vxlsync::Take both(double creation, double count, double length)
{
    vxlsync::Take result = created(creation, length);
    result.facts.started = vxlsync::DayTime{count};
    return result;
}

} // namespace takes

#endif
