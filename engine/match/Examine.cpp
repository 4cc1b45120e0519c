#include "match/Examine.h"

namespace vxlsync
{

namespace
{

// How far a line that others imply may be off: in seconds, and of the clocks' difference.
constexpr double impliedReach = 0.015;
constexpr double impliedSlopeReach = 30e-6;
// Enough to tell whether two recordings have anything in common.
constexpr std::size_t impliedWindows = 14;

} // namespace

Examiner::Examiner(const std::vector<Prepared>& newRecordings, const Interrupt& newInterrupt)
    : recordings(newRecordings), interrupt(newInterrupt)
{
}

Alignment Examiner::operator()(std::size_t first, std::size_t second, double offset, double slope)
{
    AlignRequest request;
    request.offset = offset;
    request.slope = slope;
    request.reach = impliedReach;
    request.slopeReach = impliedSlopeReach;
    request.mostWindows = impliedWindows;
    // All evidence is wanted, also that there is none.
    request.leastSignificance = 0.0;
    return align(recordings[first], recordings[second], request, interrupt, work);
}

} // namespace vxlsync
