#include "decide/Groups.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace vxlsync
{

Groups::Groups(std::size_t recordings) : places(recordings), groups(recordings)
{
    std::iota(groups.begin(), groups.end(), std::size_t{0});
    for (std::size_t i = 0; i < recordings; ++i)
        members[i] = {i};
}

std::vector<std::vector<std::size_t>> Groups::all() const
{
    std::vector<std::vector<std::size_t>> lists;
    for (const auto& [group, list] : members)
        lists.push_back(list);
    return lists;
}

Join Groups::joinBy(const Link& link) const
{
    return {groups[link.first], groups[link.second],
            clockChangeFor(link.line, places[link.first], places[link.second])};
}

void Groups::unite(const Join& join)
{
    std::vector<std::size_t> list = members.at(join.into);
    for (const std::size_t member : members.at(join.from)) {
        places[member] = moved(places[member], join.by);
        list.push_back(member);
    }
    std::sort(list.begin(), list.end());
    members.erase(join.into);
    members.erase(join.from);
    name(std::move(list));
}

void Groups::part(const std::vector<std::size_t>& recordings)
{
    const auto group = members.find(groups[recordings.front()]);
    std::vector<std::size_t> rest;
    std::set_difference(group->second.begin(), group->second.end(), recordings.begin(),
                        recordings.end(), std::back_inserter(rest));
    members.erase(group);
    name(std::move(rest));
    name(recordings);
}

void Groups::name(std::vector<std::size_t> list)
{
    const std::size_t lowest = list.front();
    for (const std::size_t member : list)
        groups[member] = lowest;
    members[lowest] = std::move(list);
}

Join turned(const Join& join)
{
    Join other;
    other.into = join.from;
    other.from = join.into;
    other.by.drift = 1.0 / (1.0 + join.by.drift) - 1.0;
    other.by.start = -(1.0 + other.by.drift) * join.by.start;
    return other;
}

std::vector<ImpliedPair> pairsAcross(const Join& join, const Groups& groups,
                                     const std::vector<double>& durations)
{
    std::vector<ImpliedPair> pairs;
    for (const std::size_t first : groups.membersOf(join.into)) {
        for (const std::size_t second : groups.membersOf(join.from)) {
            const Placement place = moved(groups.placeOf(second), join.by);
            pairs.push_back(
                {first, second,
                 impliedLine(groups.placeOf(first), durations[first], place, durations[second])});
        }
    }
    return pairs;
}

} // namespace vxlsync
