#include "decide/Place.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "decide/Disagreements.h"
#include "decide/Solve.h"

namespace vxlsync
{

namespace
{

// A given start is taken as exact, to the microsecond.
constexpr double givenErrorSeconds = 1e-6;
// A slope measured over a short time, or not at all, says nothing, whatever its scatter: wider than
// the clocks of any two recorders differ.
constexpr double unknownSlopeError = 1e-3;
constexpr std::size_t fewestWindowsForSlope = 4;
// Errors of the peaks' places, in seconds over the shared time, that all windows of a link share
// and that do not show in their scatter.
constexpr double commonErrorSeconds = 0.05e-3;

// Measurements of one group, in places of its members, with the links that they came from. Those of
// known starts stand behind all others and have no link.
struct GroupMeasurements {
    std::vector<Measurement> measurements;
    // Indices of links.
    std::vector<std::size_t> origins;
};

// By recording: its place among the members, or their number if it is none of them.
std::vector<std::size_t> placesAmong(const std::vector<std::size_t>& members,
                                     std::size_t recordings)
{
    std::vector<std::size_t> places(recordings, members.size());
    for (std::size_t i = 0; i < members.size(); ++i)
        places[members[i]] = i;
    return places;
}

Measurement measurementOf(const Link& link, const std::vector<std::size_t>& places)
{
    const Alignment& line = link.line;
    Measurement measurement;
    measurement.first = places[link.first];
    measurement.second = places[link.second];
    measurement.middle = line.middle;
    measurement.offset = line.offset;
    measurement.slope = line.slope;
    measurement.offsetError = line.offsetError;
    measurement.slopeError =
        line.windows.size() < fewestWindowsForSlope
            ? unknownSlopeError
            : std::hypot(line.slopeError, commonErrorSeconds / std::max(line.overlap(), 1.0));
    return measurement;
}

GroupMeasurements measurementsOf(const Links& links, const std::vector<std::size_t>& places,
                                 std::size_t count)
{
    GroupMeasurements group;
    for (std::size_t i = 0; i < links.size(); ++i) {
        if (!links[i].isUsed() || places[links[i].first] == count) continue;
        group.measurements.push_back(measurementOf(links[i], places));
        group.origins.push_back(i);
    }
    return group;
}

// Ties recordings whose starts are known to the first of them, as if a link said so.
void addKnown(std::vector<Measurement>& measurements,
              const std::vector<std::pair<std::size_t, double>>& known,
              const std::vector<std::size_t>& places, std::size_t count)
{
    const std::pair<std::size_t, double>* anchor = nullptr;
    for (const auto& start : known) {
        if (places[start.first] == count) continue;
        if (anchor == nullptr) {
            anchor = &start;
            continue;
        }
        Measurement measurement;
        measurement.first = places[anchor->first];
        measurement.second = places[start.first];
        measurement.offset = start.second - anchor->second;
        // It holds where the second starts, however its clock runs from there on.
        measurement.middle = measurement.offset;
        measurement.offsetError = givenErrorSeconds;
        measurement.slopeError = unknownSlopeError;
        measurements.push_back(measurement);
    }
}

// The member whose clock counts: the one asked for, or the first whose start is known, so that the
// others' are told as they were given whatever their clocks do, or else the one that most of the
// evidence hangs on.
std::size_t clockOf(const Links& links, const std::vector<std::size_t>& origins,
                    const std::vector<std::size_t>& places, std::size_t count,
                    const Constraints& constraints)
{
    const auto& wanted = constraints.reference;
    if (wanted && places[*wanted] < count) return places[*wanted];
    for (const auto& start : constraints.known) {
        if (places[start.first] < count) return places[start.first];
    }
    std::vector<double> evidence(count, 0.0);
    for (const std::size_t index : origins) {
        const Link& link = links[index];
        evidence[places[link.first]] += link.line.significance;
        evidence[places[link.second]] += link.line.significance;
    }
    return static_cast<std::size_t>(std::max_element(evidence.begin(), evidence.end()) -
                                    evidence.begin());
}

// What to add so that starts count as a PlacedGroup has them.
double shiftOf(const std::vector<Placement>& placements, const std::vector<std::size_t>& places,
               const std::vector<std::pair<std::size_t, double>>& known)
{
    for (const auto& [recording, start] : known) {
        if (places[recording] < placements.size())
            return start - placements[places[recording]].start;
    }
    double earliest = placements.front().start;
    for (const Placement& placement : placements)
        earliest = std::min(earliest, placement.start);
    return -earliest;
}

PlacedGroup placeGroup(const std::vector<std::size_t>& members, Links& links,
                       const std::vector<Certainty>& certainties, const Constraints& constraints,
                       const Interrupt& interrupt)
{
    const std::size_t count = members.size();
    const std::vector<std::size_t> places = placesAmong(members, constraints.durations.size());
    GroupMeasurements measured = measurementsOf(links, places, count);
    const std::size_t clock = clockOf(links, measured.origins, places, count, constraints);
    addKnown(measured.measurements, constraints.known, places, count);
    Solution solution = solve(count, clock, measured.measurements, interrupt);
    for (std::size_t i = 0; i < measured.origins.size(); ++i) {
        if (solution.dropped[i]) links[measured.origins[i]].verdict = Verdict::contradicted;
    }
    PlacedGroup group;
    group.members = members;
    for (const std::size_t member : members)
        group.certainties.push_back(certainties[member]);
    group.placements = std::move(solution.placements);
    const double shift = shiftOf(group.placements, places, constraints.known);
    for (Placement& placement : group.placements)
        placement.start += shift;
    group.reference = members[clock];
    return group;
}

} // namespace

Decision placeGroups(Assembly assembly, const Constraints& constraints, const Interrupt& interrupt)
{
    Decision decision;
    for (const std::vector<std::size_t>& members : assembly.groups) {
        if (members.size() > 1)
            decision.groups.push_back(
                placeGroup(members, assembly.links, assembly.certainties, constraints, interrupt));
    }
    decision.doubtful = std::move(assembly.doubtful);
    decision.links = std::move(assembly.links);
    decision.disagreements = disagreementsOf(decision.links, decision.groups, constraints);
    return decision;
}

} // namespace vxlsync
