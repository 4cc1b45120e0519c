#include "read/Timeline.h"

#include <algorithm>
#include <cmath>

#include "read/Failure.h"

namespace vxlsync
{

namespace
{

// Times in containers are rounded to as much as a millisecond and wander by a packet; what is
// longer is missing sound.
constexpr double smallestGapSeconds = 0.02;
// A longer jump is a clock that was set, not sound that was lost.
constexpr double greatestGapSeconds = 3600.0;
// Broken times must not make days of silence.
constexpr double mostSilenceSeconds = 6.0 * 3600.0;
// Encoders put in front up to a few thousand samples.
constexpr double greatestLeadSeconds = 1.0;

} // namespace

void Timeline::Leaps::add(double by, double at)
{
    if (count == 0) {
        firstBy = by;
        firstAt = at;
    }
    ++count;
}

FramePlace Timeline::place(std::optional<double> time, double position, int rate,
                           std::int64_t count)
{
    // A clock that stands says nothing.
    const bool isSilent = !time || time == lastTime;
    lastTime = time;
    if (isSilent) {
        isStarted = true;
        return {};
    }
    const double gap = *time - position - shift;
    const bool isSet = gap > greatestGapSeconds || silenceSeconds + gap > mostSilenceSeconds;
    if (!isStarted && !isSet && gap >= -greatestLeadSeconds) return placeFirst(gap, rate, count);
    isStarted = true;
    if (std::fabs(gap) <= smallestGapSeconds) return {};
    if (gap > 0.0 && !isSet) {
        ++gaps;
        gapSeconds += gap;
        return fill(gap, rate);
    }
    shift += gap;
    (gap > 0.0 ? ahead : back).add(std::fabs(gap), position);
    return {};
}

// The start of the sound is kept to the sample; later times are believed only where they differ by
// more than their rounding. What lies before time 0 is what the encoder put in front, and no part
// of the file's time.
FramePlace Timeline::placeFirst(double gap, int rate, std::int64_t count)
{
    const std::int64_t early = std::llround(-gap * rate);
    isStarted = early < count;
    if (early > 0) return {std::min(early, count), 0};
    return fill(gap, rate);
}

FramePlace Timeline::fill(double gap, int rate)
{
    silenceSeconds += gap;
    return {0, std::llround(gap * rate)};
}

std::vector<std::string> Timeline::notes() const
{
    std::vector<std::string> sentences;
    if (gaps > 0) sentences.push_back(vxlsync::notes::filledGaps(gaps, gapSeconds));
    if (back.count > 0)
        sentences.push_back(vxlsync::notes::clockJumpsBack(back.firstBy, back.firstAt, back.count));
    if (ahead.count > 0)
        sentences.push_back(
            vxlsync::notes::clockJumpsAhead(ahead.firstBy, ahead.firstAt, ahead.count));
    return sentences;
}

} // namespace vxlsync
