#include "decide/Elsewhere.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "decide/Verdicts.h"

namespace vxlsync
{

namespace
{

// Places that are worth a trial, of those that many turns of a loop make.
constexpr std::size_t mostPlaces = 4;

// By group and start.
std::vector<Place> placesOfLinks(const std::vector<std::size_t>& part,
                                 const Arrangement& arrangement)
{
    const Groups& groups = arrangement.groups();
    const std::size_t own = groups.groupOf(part.front());
    std::vector<Place> places;
    for (const std::size_t member : part) {
        for (const std::size_t index : arrangement.linksOf(member)) {
            const Link& link = arrangement.known().links[index];
            const std::size_t other = link.first == member ? link.second : link.first;
            if (groups.groupOf(other) == own || isPartial(link)) continue;
            Join join = groups.joinBy(link);
            if (join.into == own) join = turned(join);
            const double start = moved(groups.placeOf(part.front()), join.by).start;
            places.push_back({join, start, index, weightOf(link)});
        }
    }
    std::stable_sort(places.begin(), places.end(), [](const Place& left, const Place& right) {
        return std::tie(left.join.into, left.start) < std::tie(right.join.into, right.start);
    });
    return places;
}

bool areSame(const Place& left, const Place& right)
{
    return left.join.into == right.join.into &&
           std::fabs(left.start - right.start) < samePlaceSeconds;
}

// Of those that are the same the one of the heaviest link, with the weight of all.
std::vector<Place> merged(const std::vector<Place>& places)
{
    std::vector<Place> result;
    double heaviest = 0.0;
    for (const Place& place : places) {
        if (result.empty() || !areSame(result.back(), place)) {
            result.push_back(place);
            heaviest = place.weight;
            continue;
        }
        const double sum = result.back().weight + place.weight;
        if (place.weight > heaviest) {
            heaviest = place.weight;
            result.back() = place;
        }
        result.back().weight = sum;
    }
    return result;
}

} // namespace

std::vector<Place> placesFor(const std::vector<std::size_t>& part, const Arrangement& arrangement)
{
    std::vector<Place> places = merged(placesOfLinks(part, arrangement));
    std::stable_sort(places.begin(), places.end(), [](const Place& left, const Place& right) {
        return left.weight > right.weight;
    });
    if (places.size() > mostPlaces) places.resize(mostPlaces);
    return places;
}

} // namespace vxlsync
