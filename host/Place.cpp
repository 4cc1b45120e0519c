#include "Place.h"

#include <algorithm>
#include <cmath>

namespace vxlsync
{

namespace
{

// A given start is taken as exact.
constexpr double givenError = 1e-6;
// A slope measured over a short time says nothing, whatever its scatter.
constexpr double shortSlopeError = 1e-3;

Measurement measurementOf(const Link& link, const std::vector<std::size_t>& place)
{
    const Alignment& line = link.found.line;
    Measurement m;
    m.first = place[link.first];
    m.second = place[link.second];
    m.middle = line.middle;
    m.offset = line.offset;
    m.slope = line.slope;
    m.offsetError = line.offsetError;
    // Errors of the peaks' places that all windows of a link share do not show in their scatter.
    const double common = 0.05e-3 / std::max(line.overlap(), 1.0);
    m.slopeError = std::hypot(line.slopeError, common);
    if (line.windows.size() < 4) m.slopeError = shortSlopeError;
    return m;
}

} // namespace

std::vector<PlacedGroup> placeGroups(Assembly& assembly, std::size_t recordings,
                                     const std::vector<std::pair<std::size_t, double>>& known,
                                     std::size_t reference)
{
    std::vector<PlacedGroup> placed;
    for (const std::vector<std::size_t>& members : assembly.groups) {
        if (members.size() < 2) continue;
        PlacedGroup group;
        group.members = members;
        std::vector<std::size_t> place(recordings, members.size());
        for (std::size_t i = 0; i < members.size(); ++i)
            place[members[i]] = i;

        std::vector<Measurement> measurements;
        std::vector<std::size_t> origin;
        std::vector<double> tied(members.size(), 0.0);
        for (std::size_t i = 0; i < assembly.links.size(); ++i) {
            const Link& link = assembly.links[i];
            if (!link.used() || place[link.first] == members.size()) continue;
            measurements.push_back(measurementOf(link, place));
            origin.push_back(i);
            const double evidence = link.found.line.significance;
            tied[place[link.first]] += evidence;
            tied[place[link.second]] += evidence;
        }
        std::size_t clock =
            static_cast<std::size_t>(std::max_element(tied.begin(), tied.end()) - tied.begin());
        if (reference < recordings && place[reference] < members.size()) clock = place[reference];
        group.reference = members[clock];

        // Known recordings are tied to the first of them as if a link said so.
        std::size_t anchor = members.size();
        double anchorStart = 0.0;
        for (const auto& [recording, start] : known) {
            if (place[recording] == members.size()) continue;
            if (anchor == members.size()) {
                anchor = place[recording];
                anchorStart = start;
                continue;
            }
            Measurement m;
            m.first = anchor;
            m.second = place[recording];
            m.offset = start - anchorStart;
            m.offsetError = givenError;
            m.slopeError = shortSlopeError;
            measurements.push_back(m);
        }

        Solution solution = solve(members.size(), clock, measurements);
        for (std::size_t i = 0; i < origin.size(); ++i) {
            if (solution.dropped[i]) assembly.links[origin[i]].verdict = Verdict::contradicted;
        }
        group.placements = solution.placements;
        double earliest = group.placements.front().start;
        for (const Placement& one : group.placements)
            earliest = std::min(earliest, one.start);
        for (Placement& one : group.placements)
            one.start -= earliest;
        placed.push_back(group);
    }
    return placed;
}

} // namespace vxlsync
