#include "tell/MeasuredLinks.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace vxlsync
{

namespace
{

// By verdict.
constexpr const char* reasons[] = {
    "clear by itself",
    "agrees with the other links of the group",
    "far less alike than a shared scene is: a part of the sound in common, or chance",
    "another offset fits nearly as well: the sound repeats",
    "contradicts stronger links",
    "kept apart by the user",
};

const char* reasonOf(const Link& link)
{
    if (link.verdict == Verdict::forbidden && link.isDeviceClash)
        return "one device would have been in two places at once";
    if (link.verdict == Verdict::ambiguous && link.doubt == Doubt::littleHeard)
        return "too little is heard in both to tell";
    if (link.verdict == Verdict::ambiguous && link.doubt == Doubt::oneDevice)
        return "the sound repeats and the clocks are the same: perhaps one device at two times";
    return reasons[static_cast<std::size_t>(link.verdict)];
}

// The line in seconds of the second recording: where x - y is the offset at time x of the first,
// y - x is the offset at time y of the second.
Alignment turned(const Alignment& line)
{
    Alignment other = line;
    other.middle = line.middle - line.offset;
    other.offset = -line.offset;
    other.slope = -line.slope / (1.0 - line.slope);
    other.start = line.start - line.offsetAt(line.start);
    other.end = line.end - line.offsetAt(line.end);
    return other;
}

Link turned(const Link& link)
{
    Link other = link;
    std::swap(other.first, other.second);
    other.line = turned(link.line);
    // Up to a jump, the offset is greater than the line's by those before it.
    double before = 0.0;
    for (Jump& jump : other.jumps) {
        jump.atSeconds -= link.line.offsetAt(jump.atSeconds) + before;
        before += jump.sizeSeconds;
        jump.sizeSeconds = -jump.sizeSeconds;
    }
    return other;
}

} // namespace

Links linksWorthTelling(const Links& links)
{
    Links worth;
    for (auto begin = links.begin(); begin != links.end();) {
        const auto end = std::find_if_not(begin, links.end(),
                                          [&](const Link& link) { return link.isOfPair(*begin); });
        const std::size_t before = worth.size();
        std::copy_if(begin, end, std::back_inserter(worth),
                     [](const Link& link) { return link.isUsed(); });
        if (worth.size() == before) worth.push_back(*begin);
        begin = end;
    }
    return worth;
}

MeasuredLink measuredLinkOf(const Link& link, const std::vector<std::size_t>& sourceAt)
{
    if (sourceAt[link.first] > sourceAt[link.second]) return measuredLinkOf(turned(link), sourceAt);
    const Alignment& line = link.line;
    MeasuredLink measured;
    measured.first = sourceAt[link.first];
    measured.second = sourceAt[link.second];
    measured.method = link.method;
    measured.offsetSeconds = line.offset;
    measured.offsetAtStartSeconds = line.offsetAt(line.start);
    measured.offsetAtEndSeconds = line.offsetAt(line.end);
    measured.uncertaintySeconds = line.offsetError;
    // The slope is the drift of the second less that of the first, in the sense of Member.
    measured.driftPpm = line.slope * 1e6;
    measured.driftUncertaintyPpm = line.slopeError * 1e6;
    measured.overlapSeconds = line.overlap();
    measured.peakRatio = line.significance;
    measured.coherence = line.coherence;
    measured.agreement = line.agreement;
    measured.secondBest = link.rival;
    measured.inverted = line.sign < 0.0;
    measured.jumps = link.jumps;
    measured.verdict = link.verdict;
    measured.reason = reasonOf(link);
    return measured;
}

bool isFinite(const MeasuredLink& link)
{
    std::vector<double> numbers{link.offsetSeconds,      link.offsetAtStartSeconds,
                                link.offsetAtEndSeconds, link.uncertaintySeconds,
                                link.driftPpm,           link.driftUncertaintyPpm,
                                link.overlapSeconds,     link.peakRatio,
                                link.coherence,          link.agreement,
                                link.secondBest};
    for (const Jump& jump : link.jumps) {
        numbers.push_back(jump.atSeconds);
        numbers.push_back(jump.sizeSeconds);
    }
    return std::all_of(numbers.begin(), numbers.end(),
                       [](double number) { return std::isfinite(number); });
}

} // namespace vxlsync
