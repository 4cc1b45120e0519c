#include "decide/Arrangement.h"

#include <algorithm>

namespace vxlsync
{

namespace
{

Groups groupsOfKnown(const Constraints& constraints)
{
    Groups groups(constraints.durations.size());
    for (const auto& [recording, start] : constraints.known) {
        groups.setStart(recording, start);
        const std::size_t into = groups.groupOf(constraints.known.front().first);
        const std::size_t from = groups.groupOf(recording);
        if (into != from) groups.unite({into, from, Placement()});
    }
    return groups;
}

} // namespace

Arrangement::Arrangement(const Constraints& newConstraints, const PairKnowledge& newKnown,
                         const Interrupt& newInterrupt)
    : constraints(newConstraints),
      interrupt(newInterrupt),
      knowledge(newKnown),
      scales(newKnown),
      devices(newConstraints),
      placed(groupsOfKnown(newConstraints)),
      carries(newKnown.links.size()),
      byRecording(newConstraints.durations.size()),
      isKnown(newConstraints.durations.size())
{
    for (std::size_t i = 0; i < knowledge.links.size(); ++i) {
        byRecording[knowledge.links[i].first].push_back(i);
        byRecording[knowledge.links[i].second].push_back(i);
    }
    for (const auto& start : constraints.known)
        isKnown[start.first] = true;
}

bool Arrangement::areHeld(const std::vector<std::size_t>& recordings) const
{
    return std::any_of(recordings.begin(), recordings.end(),
                       [&](std::size_t recording) { return isKnown[recording]; });
}

bool Arrangement::holds(std::size_t index) const
{
    const Link& link = knowledge.links[index];
    if (placed.groupOf(link.first) != placed.groupOf(link.second)) return false;
    return carries[index] || agreesWithPlaces(link);
}

bool Arrangement::agreesWithPlaces(const Link& link) const
{
    const double firstDuration = knowledge.durations[link.first];
    const double secondDuration = knowledge.durations[link.second];
    const ImpliedLine implied = impliedLine(placed.placeOf(link.first), firstDuration,
                                            placed.placeOf(link.second), secondDuration);
    return agree(link.line, implied, firstDuration, secondDuration);
}

std::vector<ImpliedPair> Arrangement::pairsOf(const Join& join) const
{
    return pairsAcross(join, placed, knowledge.durations);
}

bool Arrangement::isUnwanted(const Join& join) const
{
    const auto& apart = constraints.apart;
    return std::any_of(apart.begin(), apart.end(), [&](const auto& pair) {
        const std::size_t first = placed.groupOf(pair.first);
        const std::size_t second = placed.groupOf(pair.second);
        return (first == join.into && second == join.from) ||
               (first == join.from && second == join.into);
    });
}

bool Arrangement::isDeviceTwice(const std::vector<ImpliedPair>& pairs) const
{
    return devices.isTwice(pairs);
}

bool Arrangement::isBackedByClocks(const std::vector<ImpliedPair>& pairs) const
{
    return devices.backs(pairs, placed);
}

Evidence Arrangement::byLinks(const std::vector<ImpliedPair>& pairs) const
{
    return scales.byLinks(pairs) + devices.weigh(pairs, placed);
}

Evidence Arrangement::closely(const std::vector<ImpliedPair>& pairs)
{
    interrupt.check();
    return scales.closely(pairs) + devices.weigh(pairs, placed);
}

void Arrangement::unite(const Join& join, std::size_t link)
{
    placed.unite(join);
    carries[link] = true;
}

Parting Arrangement::part(const std::vector<std::size_t>& recordings)
{
    interrupt.check();
    const std::vector<std::size_t> members = placed.membersOf(placed.groupOf(recordings.front()));
    placed.part(recordings);
    Parting parting;
    for (const std::size_t recording : recordings) {
        for (const std::size_t index : byRecording[recording]) {
            const Link& link = knowledge.links[index];
            if (!carries[index] || placed.groupOf(link.first) == placed.groupOf(link.second))
                continue;
            carries[index] = false;
            parting.carriers.push_back(index);
        }
    }
    parting.back.from = placed.groupOf(recordings.front());
    const auto other = std::find_if(members.begin(), members.end(), [&](std::size_t member) {
        return placed.groupOf(member) != parting.back.from;
    });
    parting.back.into = placed.groupOf(*other);
    return parting;
}

double Arrangement::carriedBy(const Parting& parting) const
{
    double weight = 0.0;
    for (const std::size_t index : parting.carriers) {
        const Link& link = knowledge.links[index];
        if (!agreesWithPlaces(link)) weight += weightOf(link);
    }
    return weight;
}

void Arrangement::undo(const Parting& parting)
{
    placed.unite(parting.back);
    for (const std::size_t link : parting.carriers)
        carries[link] = true;
}

} // namespace vxlsync
