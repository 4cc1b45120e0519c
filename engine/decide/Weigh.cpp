#include "decide/Weigh.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "decide/Verdicts.h"

namespace vxlsync
{

namespace
{

// Shortest time, in seconds, that two recordings would have to share before finding nothing there
// counts: below, a pause explains it.
constexpr double tellingOverlapSeconds = 5.0;
// From this significance and agreement on, a look at an implied line has seen the same sound: the
// place was not searched for, so that chance has a single try.
constexpr double seenSignificance = 7.0;
constexpr double seenAgreement = 0.3;
// A pair is expected to be at least this share as coherent as the worse of the two is at best ...
constexpr double expectedRelative = 0.5;
// ... and to miss that speaks against the join if it would have been this significant, twice of
// what is seen at all.
constexpr double expectedSignificance = 15.0;
// Least activity of a pair of which anything can be expected: below, neither recording has much
// more than its own noise.
constexpr double audibleActivity = 0.2;
// Pairs of a join that are looked at for want of a link, at most: those that would share most. What
// they say the others would say as well, and of large groups there are thousands.
constexpr std::size_t mostLooks = 12;
// Links that carry a join together: so many at least, and so clear in sum, which is what a link
// alone needs for its distinction.
constexpr std::size_t fewestBackers = 2;
constexpr double leastBacking = 0.3;

struct PairOrder {
    using Pair = std::pair<std::size_t, std::size_t>;
    bool operator()(const Link& link, const Pair& pair) const
    {
        return std::tie(link.first, link.second) < std::tie(pair.first, pair.second);
    }
    bool operator()(const Pair& pair, const Link& link) const
    {
        return std::tie(pair.first, pair.second) < std::tie(link.first, link.second);
    }
};

// The best link of the pair that says what is implied, or null.
const Link* agreeingLink(const ImpliedPair& pair, const PairKnowledge& known)
{
    const bool isTurned = pair.first > pair.second;
    const PairOrder::Pair indices = isTurned ? PairOrder::Pair{pair.second, pair.first}
                                             : PairOrder::Pair{pair.first, pair.second};
    const ImpliedLine line = isTurned ? turned(pair.line) : pair.line;
    const auto [begin, end] =
        std::equal_range(known.links.begin(), known.links.end(), indices, PairOrder());
    const auto link = std::find_if(begin, end, [&](const Link& candidate) {
        return agree(candidate.line, line, known.durations[indices.first],
                     known.durations[indices.second]);
    });
    return link == end ? nullptr : &*link;
}

// What a pair has to say that has no link for the line.
Evidence lookClosely(const ImpliedPair& pair, const PairKnowledge& known)
{
    Evidence evidence;
    const double expectable = std::min(known.best[pair.first], known.best[pair.second]);
    if (pair.line.overlap < tellingOverlapSeconds || expectable <= 0.0) return evidence;
    const Alignment line =
        known.examine(pair.first, pair.second, pair.line.offset, pair.line.slope);
    if (line.windows.empty()) return evidence;
    const double missed = expectedRelative * expectable * line.fullSignificance;
    if (line.significance >= seenSignificance && line.agreement > seenAgreement) {
        evidence.support = std::min(1.0, line.coherence / expectable);
    } else if (line.activity >= audibleActivity && missed > expectedSignificance) {
        evidence.against = 1.0;
    }
    return evidence;
}

Evidence evidenceOfLink(const Link& link)
{
    Evidence evidence;
    if (isPartial(link)) {
        evidence.against = 1.0;
    } else {
        evidence.support = std::min(1.0, link.relative);
    }
    return evidence;
}

Evidence operator+(Evidence left, const Evidence& right)
{
    left.support += right.support;
    left.against += right.against;
    return left;
}

// Those without a link that would share most, in their order.
std::vector<ImpliedPair> pairsToLookAt(std::vector<ImpliedPair> unlinked)
{
    std::stable_sort(unlinked.begin(), unlinked.end(),
                     [](const ImpliedPair& left, const ImpliedPair& right) {
                         return left.line.overlap > right.line.overlap;
                     });
    if (unlinked.size() > mostLooks) unlinked.resize(mostLooks);
    return unlinked;
}

} // namespace

Evidence weigh(const std::vector<ImpliedPair>& pairs, const PairKnowledge& known)
{
    Evidence sum;
    std::vector<ImpliedPair> unlinked;
    for (const ImpliedPair& pair : pairs) {
        if (const Link* link = agreeingLink(pair, known))
            sum = sum + evidenceOfLink(*link);
        else
            unlinked.push_back(pair);
    }
    for (const ImpliedPair& pair : pairsToLookAt(std::move(unlinked)))
        sum = sum + lookClosely(pair, known);
    return sum;
}

bool areBackedByLinks(const std::vector<ImpliedPair>& pairs, const PairKnowledge& known)
{
    double backing = 0.0;
    std::size_t backers = 0;
    for (const ImpliedPair& pair : pairs) {
        const Link* link = agreeingLink(pair, known);
        if (link == nullptr || isPartial(*link)) continue;
        backing += distinctionOf(*link);
        ++backers;
        if (backers >= fewestBackers && backing >= leastBacking) return true;
    }
    return false;
}

} // namespace vxlsync
