#include "match/Gathering.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace vxlsync
{

namespace
{

// A slope is believed if the line is so long, in seconds, and the slope so many errors from none:
// that of a short line is scatter, and it would be carried over to all that the group holds.
constexpr double shortestSlopedSeconds = 20.0;
constexpr double slopeErrors = 4.0;

double believedSlope(const Alignment& line)
{
    const bool isSure = line.overlap() >= shortestSlopedSeconds &&
                        std::fabs(line.slope) > slopeErrors * line.slopeError;
    return isSure ? line.slope : 0.0;
}

} // namespace

Gathering::Gathering(std::vector<double> newDurations)
    : durations(std::move(newDurations)), clocks(durations.size()), groups(durations.size())
{
    std::iota(groups.begin(), groups.end(), std::size_t{0});
    for (const std::size_t group : groups)
        members[group] = {group};
}

std::vector<std::size_t> Gathering::names() const
{
    std::vector<std::size_t> all;
    for (const auto& entry : members)
        all.push_back(entry.first);
    return all;
}

KnownLine Gathering::lineOf(std::size_t first, std::size_t second) const
{
    const double from = std::max(clocks[first].start, clocks[second].start);
    const double to = std::min(endOf(first), endOf(second));
    const double middle = (from + to) / 2.0;
    const double inFirst = (middle - clocks[first].start) / clocks[first].rate;
    const double inSecond = (middle - clocks[second].start) / clocks[second].rate;
    return {inFirst - inSecond, 1.0 - clocks[first].rate / clocks[second].rate, to - from};
}

bool Gathering::join(std::size_t first, std::size_t second, const Alignment& line)
{
    const std::size_t into = groups[first];
    const std::size_t other = groups[second];
    if (into == other) return false;
    const double slope = believedSlope(line);
    // Time t of the first is time t * (1 - slope) - offset + slope * middle of the second.
    const double rate = clocks[first].rate / (1.0 - slope);
    const double start = clocks[first].at((line.offset - slope * line.middle) / (1.0 - slope));
    const double byRate = rate / clocks[second].rate;
    const double byStart = start - byRate * clocks[second].start;
    for (const std::size_t member : members[other])
        clocks[member] = {byStart + byRate * clocks[member].start, byRate * clocks[member].rate};

    const std::size_t name = std::min(into, other);
    std::vector<std::size_t> all = std::move(members[into]);
    all.insert(all.end(), members[other].begin(), members[other].end());
    std::sort(all.begin(), all.end());
    members.erase(std::max(into, other));
    for (const std::size_t member : all)
        groups[member] = name;
    members[name] = std::move(all);
    return true;
}

} // namespace vxlsync
