#include "decide/Disagreements.h"

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

// Those of a group whose known starts could be contradicted: all but the first named.
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

// How much later the second is by the link than where it stands; nothing if that is the same.
std::optional<double> laterBy(const Link& link, const Places& places,
                              const std::vector<double>& durations)
{
    const ImpliedLine implied = impliedLine(places.at(link.first), durations[link.first],
                                            places.at(link.second), durations[link.second]);
    if (agree(link.line, implied, durations[link.first], durations[link.second]))
        return std::nullopt;
    return link.line.offset - implied.offset;
}

} // namespace

std::vector<Disagreement> disagreementsOf(const Links& links,
                                          const std::vector<PlacedGroup>& groups,
                                          const Constraints& constraints)
{
    struct Contradiction {
        double significance;
        Disagreement disagreement;
    };
    // By recording.
    std::map<std::size_t, Contradiction> clearest;
    for (const PlacedGroup& group : groups) {
        const Places places = placesOf(group);
        const std::set<std::size_t> fixed = contradictable(places, constraints);
        for (const Link& link : links) {
            const bool isOfFixed = fixed.count(link.first) + fixed.count(link.second) > 0;
            if (!isOfFixed || places.count(link.first) + places.count(link.second) < 2 ||
                verdictByItself(link) != Verdict::accepted)
                continue;
            const std::optional<double> later = laterBy(link, places, constraints.durations);
            if (!later) continue;
            const bool isSecond = fixed.count(link.second) > 0;
            const Disagreement disagreement{isSecond ? link.second : link.first,
                                            isSecond ? link.first : link.second,
                                            isSecond ? *later : -*later};
            const auto known = clearest.find(disagreement.recording);
            if (known == clearest.end() || known->second.significance < link.line.significance)
                clearest[disagreement.recording] = {link.line.significance, disagreement};
        }
    }
    std::vector<Disagreement> all;
    for (const auto& entry : clearest)
        all.push_back(entry.second.disagreement);
    return all;
}

} // namespace vxlsync
