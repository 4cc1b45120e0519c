#include "decide/Disagreements.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <set>

#include "decide/Geometry.h"
#include "decide/Verdicts.h"

namespace vxlsync
{

namespace
{

// Where each member of a group stands, by recording.
using Places = std::map<std::size_t, Placement>;

Places placesOf(const PlacedGroup& group)
{
    Places places;
    for (std::size_t i = 0; i < group.members.size(); ++i)
        places[group.members[i]] = group.placements[i];
    return places;
}

// Those of a group whose known starts could be contradicted: all but the first.
std::set<std::size_t> contradictable(const Places& places, const Constraints& constraints)
{
    std::optional<std::size_t> anchor;
    std::set<std::size_t> others;
    for (const auto& start : constraints.known) {
        if (places.count(start.first) == 0) continue;
        if (anchor)
            others.insert(start.first);
        else
            anchor = start.first;
    }
    return others;
}

// What the link says against a known start; nothing if it agrees, or has nothing to say of one.
std::optional<Disagreement> disagreementOf(const Link& link, const Places& places,
                                           const std::set<std::size_t>& fixed,
                                           const std::vector<double>& durations)
{
    const auto first = places.find(link.first);
    const auto second = places.find(link.second);
    const bool isSecond = fixed.count(link.second) > 0;
    if (first == places.end() || second == places.end() ||
        (!isSecond && fixed.count(link.first) == 0) || verdictByItself(link) != Verdict::accepted)
        return std::nullopt;
    const ImpliedLine implied =
        impliedLine(first->second, durations[link.first], second->second, durations[link.second]);
    if (agree(link.line, implied, durations[link.first], durations[link.second]))
        return std::nullopt;
    const double later = link.line.offset - implied.offset;
    return isSecond ? Disagreement{link.second, link.first, later}
                    : Disagreement{link.first, link.second, -later};
}

// The most significant first.
std::vector<const Link*> bySignificance(const Links& links)
{
    std::vector<const Link*> order;
    order.reserve(links.size());
    for (const Link& link : links)
        order.push_back(&link);
    std::stable_sort(order.begin(), order.end(), [](const Link* left, const Link* right) {
        return left->line.significance > right->line.significance;
    });
    return order;
}

} // namespace

std::vector<Disagreement> disagreementsOf(const Links& links,
                                          const std::vector<PlacedGroup>& groups,
                                          const Constraints& constraints)
{
    const std::vector<const Link*> order = bySignificance(links);
    std::map<std::size_t, Disagreement> clearest;
    for (const PlacedGroup& group : groups) {
        const Places places = placesOf(group);
        const std::set<std::size_t> fixed = contradictable(places, constraints);
        if (fixed.empty()) continue;
        for (const Link* link : order) {
            if (const auto disagreement =
                    disagreementOf(*link, places, fixed, constraints.durations))
                clearest.insert({disagreement->recording, *disagreement});
        }
    }
    std::vector<Disagreement> all;
    all.reserve(clearest.size());
    for (const auto& entry : clearest)
        all.push_back(entry.second);
    return all;
}

} // namespace vxlsync
