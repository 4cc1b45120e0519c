#include "decide/Certain.h"

#include <algorithm>

#include "decide/Elsewhere.h"
#include "decide/Improve.h"
#include "decide/Ties.h"

namespace vxlsync
{

namespace
{

// A place that is no better than the next by this margin is no place: repeats of a loop differ by
// as much.
constexpr double leastMargin = 0.4;
// What is certain has this margin, and so much evidence, in seconds of sound times their worth.
constexpr double certainMargin = 0.6;
constexpr double certainEvidence = 1.0;

// The part of the group that is the most doubtful; empty if none is.
std::vector<std::size_t> mostDoubtful(std::size_t group, Arrangement& arrangement)
{
    std::vector<std::size_t> worst;
    double least = leastMargin;
    for (const std::vector<std::size_t>& part : partsOf(group, arrangement)) {
        if (arrangement.areHeld(part)) continue;
        const double margin = standingOf(part, arrangement).margin();
        if (margin >= least) continue;
        least = margin;
        worst = part;
    }
    return worst;
}

// The least of all. Nothing doubts what is in no part.
Certainty certaintyOf(const std::vector<Standing>& standings)
{
    Certainty certainty;
    if (standings.empty()) return certainty;
    certainty.evidence = standings.front().here;
    for (const Standing& standing : standings) {
        certainty.margin = std::min(certainty.margin, standing.margin());
        certainty.evidence = std::min(certainty.evidence, standing.here);
        if (standing.margin() < certainMargin || standing.here < certainEvidence ||
            !standing.isWitnessed)
            certainty.confidence = Confidence::likely;
    }
    return certainty;
}

} // namespace

void partDoubtful(Arrangement& arrangement)
{
    // One after the other: what hangs on a part that is doubtful may be certain without it.
    for (std::size_t i = 0; i < arrangement.known().durations.size(); ++i) {
        for (;;) {
            const std::vector<std::size_t> part =
                mostDoubtful(arrangement.groups().groupOf(i), arrangement);
            if (part.empty()) break;
            arrangement.part(part);
        }
    }
}

std::vector<Certainty> certaintiesOf(Arrangement& arrangement)
{
    // By recording: how each part stands that it is in.
    std::vector<std::vector<Standing>> standings(arrangement.known().durations.size());
    for (const std::vector<std::size_t>& members : arrangement.groups().all()) {
        const std::size_t group = arrangement.groups().groupOf(members.front());
        for (const std::vector<std::size_t>& part : partsOf(group, arrangement)) {
            if (arrangement.areHeld(part)) continue;
            const Standing standing = standingOf(part, arrangement);
            for (const std::size_t member : part)
                standings[member].push_back(standing);
        }
    }
    std::vector<Certainty> certainties;
    certainties.reserve(standings.size());
    for (const std::vector<Standing>& ofOne : standings)
        certainties.push_back(certaintyOf(ofOne));
    return certainties;
}

std::vector<Doubtful> doubtfulOf(const Arrangement& arrangement)
{
    const Groups& groups = arrangement.groups();
    std::vector<Doubtful> all;
    for (const std::vector<std::size_t>& members : groups.all()) {
        if (members.size() > 1) continue;
        Doubtful doubtful{members.front(), {}};
        for (const Place& place : placesFor(members, arrangement)) {
            if (place.weight <= 0.0) continue;
            const Link& link = arrangement.known().links[place.link];
            const std::size_t other = link.first == members.front() ? link.second : link.first;
            doubtful.candidates.push_back(
                {other, place.start - groups.placeOf(other).start, place.weight});
        }
        if (!doubtful.candidates.empty()) all.push_back(std::move(doubtful));
    }
    return all;
}

} // namespace vxlsync
