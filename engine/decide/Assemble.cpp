#include "decide/Assemble.h"

#include <algorithm>
#include <string>
#include <utility>

#include "decide/Verdicts.h"

namespace vxlsync
{

namespace
{

// Seconds by which two recordings of one device may seem to overlap: clocks and lengths of files
// are rounded, and a device that splits its recording may write the seam into both files.
constexpr double deviceToleranceSeconds = 0.5;

// All that the decision on a join looks at. The links change their verdicts, and nothing else,
// while the groups grow.
struct Joining {
    Links& links;
    const Constraints& constraints;
    PairKnowledge known;
    Groups groups;
    // By link: true if two groups were joined so that it holds.
    std::vector<bool> carriesJoin;
};

void joinKnown(Groups& groups, const std::vector<std::pair<std::size_t, double>>& known)
{
    for (const auto& [recording, start] : known) {
        groups.setStart(recording, start);
        const std::size_t into = groups.groupOf(known.front().first);
        const std::size_t from = groups.groupOf(recording);
        if (into != from) groups.unite({into, from, Placement()});
    }
}

bool isUnwanted(const Join& join, const Joining& joining)
{
    const auto& apart = joining.constraints.apart;
    return std::any_of(apart.begin(), apart.end(), [&](const auto& pair) {
        const std::size_t first = joining.groups.groupOf(pair.first);
        const std::size_t second = joining.groups.groupOf(pair.second);
        return (first == join.into && second == join.from) ||
               (first == join.from && second == join.into);
    });
}

bool isDeviceTwice(const std::vector<ImpliedPair>& pairs, const std::vector<std::string>& devices)
{
    return std::any_of(pairs.begin(), pairs.end(), [&](const ImpliedPair& pair) {
        return pair.line.overlap > deviceToleranceSeconds && !devices[pair.first].empty() &&
               devices[pair.first] == devices[pair.second];
    });
}

// Indices of those links that `isWanted`, the strongest first; links speak in that order, and what
// they place can no longer be moved.
template <typename Filter>
std::vector<std::size_t> byStrength(const Links& links, Filter isWanted)
{
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < links.size(); ++i) {
        if (isWanted(i)) order.push_back(i);
    }
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
        return strengthOf(links[left]) > strengthOf(links[right]);
    });
    return order;
}

// Joins the groups of the link's recordings, or says in its verdict why not. False if the groups
// stay as they are. Links that do not stand on their own need others that say the same.
bool tryJoin(Joining& joining, std::size_t index)
{
    Link& link = joining.links[index];
    const Join planned = joining.groups.joinBy(link);
    if (planned.into == planned.from) return false;
    const bool standsAlone = link.verdict == Verdict::accepted;
    const std::vector<ImpliedPair> pairs =
        pairsAcross(planned, joining.groups, joining.constraints.durations);
    if (!standsAlone && !areBackedByLinks(pairs, joining.known)) return false;

    const bool isUserAgainst = isUnwanted(planned, joining);
    link.isDeviceClash = !isUserAgainst && isDeviceTwice(pairs, joining.constraints.devices);
    if (isUserAgainst || link.isDeviceClash) {
        link.verdict = Verdict::forbidden;
        return false;
    }
    const Evidence evidence = weigh(pairs, joining.known);
    if (evidence.against > evidence.support) {
        link.verdict = Verdict::contradicted;
        return false;
    }
    joining.groups.unite(planned);
    joining.carriesJoin[index] = true;
    return true;
}

// Links that stand on their own, of each pair the best at most: an equal rival makes both
// ambiguous.
void joinAccepted(Joining& joining)
{
    const Links& links = joining.links;
    const auto isAccepted = [&](std::size_t i) { return links[i].verdict == Verdict::accepted; };
    for (const std::size_t index : byStrength(links, isAccepted))
        tryJoin(joining, index);
}

// Links that are too little by themselves, where several pairs of two groups say the same. A join
// may give others what they lacked.
void joinBacked(Joining& joining)
{
    const auto isOpen = [&](std::size_t index) {
        const Verdict verdict = joining.links[index].verdict;
        return verdict == Verdict::weak || verdict == Verdict::ambiguous;
    };
    const std::vector<std::size_t> order = byStrength(joining.links, [&](std::size_t index) {
        return isOpen(index) && !isPartial(joining.links[index]);
    });
    const auto joins = [&](std::size_t index) { return isOpen(index) && tryJoin(joining, index); };
    while (std::any_of(order.begin(), order.end(), joins)) {
    }
}

// True if the link says of its two recordings what became of them.
bool holds(const Link& link, const Groups& groups, const std::vector<double>& durations)
{
    const double firstDuration = durations[link.first];
    const double secondDuration = durations[link.second];
    const ImpliedLine implied = impliedLine(groups.placeOf(link.first), firstDuration,
                                            groups.placeOf(link.second), secondDuration);
    return agree(link.line, implied, firstDuration, secondDuration);
}

// The verdict on the link once all recordings are where they ended up. Links that carry joins are
// used whatever they say at the middle of the overlap: without them nothing would tie their groups.
Verdict settledVerdict(std::size_t index, const Joining& joining)
{
    const Link& link = joining.links[index];
    const Groups& groups = joining.groups;
    if (groups.groupOf(link.first) != groups.groupOf(link.second)) return link.verdict;
    if (!joining.carriesJoin[index] && !holds(link, groups, joining.constraints.durations))
        return Verdict::contradicted;
    return link.verdict == Verdict::accepted ? Verdict::accepted : Verdict::confirmed;
}

} // namespace

Assembly assemble(Links links, const Constraints& constraints, const Examine& examine)
{
    const std::vector<double>& durations = constraints.durations;
    Links judged = sayingLinks(std::move(links));
    const std::vector<double> best = bestCoherences(judged, durations.size());
    judged = judgeLinks(std::move(judged), best);

    Joining joining{
        judged, constraints, {judged, best, durations, examine}, Groups(durations.size()), {}};
    joining.carriesJoin.resize(judged.size());
    joinKnown(joining.groups, constraints.known);
    joinAccepted(joining);
    joinBacked(joining);
    for (std::size_t i = 0; i < judged.size(); ++i)
        judged[i].verdict = settledVerdict(i, joining);
    return {joining.groups.all(), std::move(judged)};
}

} // namespace vxlsync
