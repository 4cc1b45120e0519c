#include "decide/Geometry.h"

#include <algorithm>
#include <cmath>

namespace vxlsync
{

namespace
{

// Lines of two links that place a recording alike differ by no more, in seconds, ...
constexpr double lineToleranceSeconds = 0.003;
// ... and by this share of the recordings' mean length: where the overlaps are not the same, the
// middles are apart, and drift that nobody could measure counts.
constexpr double unmeasuredDrift = 20e-6;

// A slope is taken over from a link if it is that many errors from none, and the shared time is
// long enough, in seconds, for its scatter to tell the error.
constexpr double slopeCertaintyErrors = 4.0;
constexpr double shortestForSlopeSeconds = 20.0;

double usableSlope(const Alignment& line)
{
    const bool isSure = line.overlap() >= shortestForSlopeSeconds &&
                        std::fabs(line.slope) > slopeCertaintyErrors * line.slopeError;
    return isSure ? line.slope : 0.0;
}

} // namespace

ImpliedLine impliedLine(const Placement& first, double firstDuration, const Placement& second,
                        double secondDuration)
{
    const double start = std::max(first.start, second.start);
    const double end = std::min(first.at(firstDuration), second.at(secondDuration));
    const double middle = (start + end) / 2.0;
    ImpliedLine line;
    line.overlap = end - start;
    line.middle = (middle - first.start) / (1.0 + first.drift);
    line.offset = line.middle - (middle - second.start) / (1.0 + second.drift);
    line.slope = 1.0 - (1.0 + first.drift) / (1.0 + second.drift);
    return line;
}

ImpliedLine turned(const ImpliedLine& line)
{
    ImpliedLine other = line;
    other.middle = line.middle - line.offset;
    other.offset = -line.offset;
    other.slope = -line.slope / (1.0 - line.slope);
    return other;
}

bool agree(const Alignment& measured, const ImpliedLine& implied, double firstDuration,
           double secondDuration)
{
    const double tolerance =
        lineToleranceSeconds + unmeasuredDrift * (firstDuration + secondDuration) / 2.0;
    return std::fabs(measured.offsetAt(implied.middle) - implied.offset) <= tolerance;
}

Placement moved(const Placement& place, const Placement& by)
{
    Placement result;
    result.start = by.start + (1.0 + by.drift) * place.start;
    result.drift = (1.0 + by.drift) * (1.0 + place.drift) - 1.0;
    return result;
}

Placement clockChangeFor(const Alignment& measured, const Placement& first, const Placement& second)
{
    const double slope = usableSlope(measured);
    // Time x of the first is (y + offset - slope * middle) / (1 - slope) for time y of the second.
    const double scale = 1.0 / (1.0 - slope);
    const double shift = (measured.offset - slope * measured.middle) * scale;
    const double speed = (1.0 + first.drift) * scale / (1.0 + second.drift);
    Placement change;
    change.drift = speed - 1.0;
    change.start = first.start + (1.0 + first.drift) * shift - speed * second.start;
    return change;
}

} // namespace vxlsync
