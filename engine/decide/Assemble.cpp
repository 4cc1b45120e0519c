#include "decide/Assemble.h"

#include <algorithm>
#include <utility>

#include "decide/Arrangement.h"
#include "decide/Certain.h"
#include "decide/Improve.h"
#include "decide/Verdicts.h"

namespace vxlsync
{

namespace
{

// The links change their verdicts, and nothing else, while the groups grow.
struct Joining {
    Links& links;
    Arrangement arrangement;
};

// Indices of those links that `isWanted`, the strongest first: in that order links place recordings
// to begin with.
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
    Arrangement& arrangement = joining.arrangement;
    const Join planned = arrangement.groups().joinBy(link);
    if (planned.into == planned.from) return false;
    const bool standsAlone = link.verdict == Verdict::accepted;
    const std::vector<ImpliedPair> pairs = arrangement.pairsOf(planned);
    if (!standsAlone && !areBackedByLinks(pairs, arrangement.known()) &&
        !arrangement.isBackedByClocks(pairs))
        return false;

    const bool isUserAgainst = arrangement.isUnwanted(planned);
    link.isDeviceClash = !isUserAgainst && arrangement.isDeviceTwice(pairs);
    if (isUserAgainst || link.isDeviceClash) {
        link.verdict = Verdict::forbidden;
        return false;
    }
    if (arrangement.closely(pairs).balance() < 0.0) {
        link.verdict = Verdict::contradicted;
        return false;
    }
    arrangement.unite(planned, index);
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

// The verdict on the link once all recordings are where they ended up.
Verdict settledVerdict(std::size_t index, const Joining& joining)
{
    const Link& link = joining.links[index];
    const Groups& groups = joining.arrangement.groups();
    if (groups.groupOf(link.first) != groups.groupOf(link.second))
        return link.verdict == Verdict::accepted ? Verdict::contradicted : link.verdict;
    if (!joining.arrangement.holds(index)) return Verdict::contradicted;
    return link.verdict == Verdict::accepted ? Verdict::accepted : Verdict::confirmed;
}

} // namespace

Assembly assemble(Links links, const Constraints& constraints, const Examine& examine,
                  const Interrupt& interrupt)
{
    const std::vector<double>& durations = constraints.durations;
    Links judged = sayingLinks(std::move(links));
    const std::vector<double> best = bestCoherences(judged, durations.size());
    judged = judgeLinks(std::move(judged), best);

    Joining joining{judged,
                    Arrangement(constraints, {judged, best, durations, examine}, interrupt)};
    joinAccepted(joining);
    joinBacked(joining);
    improve(joining.arrangement);
    joinBacked(joining);
    for (std::size_t i = 0; i < judged.size(); ++i)
        judged[i].verdict = settledVerdict(i, joining);
    partDoubtful(joining.arrangement);
    // What was used until then is right or wrong, and nobody knows.
    for (Link& link : judged) {
        const Groups& groups = joining.arrangement.groups();
        if (link.isUsed() && groups.groupOf(link.first) != groups.groupOf(link.second))
            link.verdict = Verdict::ambiguous;
    }
    std::vector<Certainty> certainties = certaintiesOf(joining.arrangement);
    std::vector<Doubtful> doubtful = doubtfulOf(joining.arrangement);
    return {joining.arrangement.groups().all(), std::move(judged), std::move(certainties),
            std::move(doubtful)};
}

} // namespace vxlsync
