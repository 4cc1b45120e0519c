#include "decide/Weigh.h"

#include <algorithm>
#include <cmath>
#include <tuple>

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
// Links that carry a join together: so many at least, and so clear in sum, which is what a link
// alone needs for its distinction.
constexpr std::size_t fewestBackers = 2;
constexpr double leastBacking = 0.3;

// A repeat is about half as coherent as its recordings are at their true place, and for as many
// seconds or more: sound is worth what it exceeds this share by. Sound that differs is worth as
// much against the place as sound that agrees fully would be beyond all doubt for it.
constexpr double repeatRelative = 0.6;
// Looks for one place. What so many pairs say who would share most time, more would repeat.
constexpr std::size_t mostLooks = 8;
// Lines of one pair that are nearer to each other, in seconds, are the same to a look.
constexpr double sameLookSeconds = 0.002;

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

void add(Evidence& sum, double weight)
{
    sum.support += std::max(0.0, weight);
    sum.against += std::max(0.0, -weight);
}

// What a pair has to say that has no link for the line.
Evidence lookClosely(const ImpliedPair& pair, const PairKnowledge& known)
{
    const double expectable = std::min(known.best[pair.first], known.best[pair.second]);
    if (expectable <= 0.0) return {};
    const Alignment line =
        known.examine(pair.first, pair.second, pair.line.offset, pair.line.slope);
    if (line.windows.empty() || !isFinite(line)) return {};
    const double missed = expectedRelative * expectable * line.fullSignificance;
    const bool isSeen = line.significance >= seenSignificance && line.agreement > seenAgreement;
    const bool isMissed = line.activity >= audibleActivity && missed > expectedSignificance;
    return isSeen || isMissed ? evidenceOf(line, line.coherence / expectable) : Evidence();
}

} // namespace

Evidence operator+(const Evidence& left, const Evidence& right)
{
    return {left.support + right.support, left.against + right.against};
}

Evidence evidenceOf(const Alignment& line, double relative)
{
    const double band = static_cast<double>(line.bands) / std::max(1, line.allBands);
    const double heard = heardSecondsOf(line);
    const double agreeing = line.agreement * heard * band;
    const double worth = std::min(1.0, relative) - repeatRelative;
    Evidence evidence;
    evidence.support = agreeing * std::max(0.0, worth);
    evidence.against =
        agreeing * std::max(0.0, -worth) + repeatRelative * (1.0 - line.agreement) * heard;
    return evidence;
}

double weightOf(const Link& link)
{
    // Where another place of the two is more coherent, this one is measured against that too.
    const double relative = link.relative / std::max(1.0, link.rival);
    const Evidence evidence = evidenceOf(link.line, relative);
    return isPartial(link) ? -(evidence.support + evidence.against) : evidence.balance();
}

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

Evidence Scales::byLinks(const std::vector<ImpliedPair>& pairs) const
{
    Evidence sum;
    for (const ImpliedPair& pair : pairs) {
        if (pair.line.overlap <= 0.0) continue;
        if (const Link* link = agreeingLink(pair, known)) add(sum, weightOf(*link));
    }
    return sum;
}

Evidence Scales::closely(const std::vector<ImpliedPair>& pairs)
{
    Evidence sum = byLinks(pairs);
    std::vector<const ImpliedPair*> open;
    for (const ImpliedPair& pair : pairs) {
        if (pair.line.overlap >= tellingOverlapSeconds && agreeingLink(pair, known) == nullptr)
            open.push_back(&pair);
    }
    std::stable_sort(open.begin(), open.end(),
                     [](const ImpliedPair* left, const ImpliedPair* right) {
                         return left->line.overlap > right->line.overlap;
                     });
    if (open.size() > mostLooks) open.resize(mostLooks);
    for (const ImpliedPair* pair : open)
        sum = sum + lookAt(*pair);
    return sum;
}

Evidence Scales::lookAt(const ImpliedPair& pair)
{
    const Look look{pair.first, pair.second, std::llround(pair.line.offset / sameLookSeconds)};
    const auto seen = looks.find(look);
    if (seen != looks.end()) return seen->second;
    return looks[look] = lookClosely(pair, known);
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
