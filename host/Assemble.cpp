#include "Assemble.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace vxlsync
{

namespace
{

// A link stands on its own when it is at least half as coherent as what the worse of its two
// recordings reaches at best, and when no other offset comes near: a song's repeat, or the same
// song at another place, is alike in part only.
constexpr double standsAlone = 0.5;
constexpr double leastDistinction = 0.3;
// A link as good as any that its recordings have may have rivals. Where a loop repeats exactly, its
// other turns are nearly as coherent as the right one; but only the same sound in two recordings is
// very coherent, while drum kits and tunes that recur are a little. So the more coherent a link is,
// the nearer its rivals may come.
constexpr double fullyAlike = 0.8;
constexpr double clearlyBest = 0.6;
constexpr double likePlace = 0.3;
constexpr double likelyBest = 0.7;
constexpr double samePlace = 0.45;
constexpr double stillBest = 0.95;
// A song that two events share is alike for as long as it plays; a scene that two recorders share
// is alike all the time. So the less alike two recordings are, the fewer windows may disagree.
constexpr double leastAgreement = 0.8;
constexpr double partAgreement = 0.97;
constexpr double partRelative = 0.8;
constexpr double fullRelative = 0.95;
constexpr double fullAgreement = 0.85;
// Below this coherence single windows drown in noise, and their agreement says little.
constexpr double clearCoherence = 0.09;
// In a short overlap, a beat or two that coincide look like a link; much evidence does not.
constexpr double significanceLong = 18.0;
constexpr double significanceShort = 40.0;
constexpr double shortOverlap = 4.0;
constexpr double longOverlap = 12.0;

// Lines of two links that place a recording alike differ by no more.
constexpr double alike = 0.003;
constexpr double driftAllowance = 20e-6;
// Shortest time that two recordings would have to share before their silence on it counts.
constexpr double tellingOverlap = 5.0;
constexpr double seenSignificance = 7.0;
constexpr double expectedSignificance = 15.0;
// Where neither has much more than its own noise, nothing can be expected.
constexpr double audible = 0.2;
// A slope is taken over from a link if it is that many errors from none.
constexpr double slopeCertainty = 4.0;

double neededSignificance(double overlap)
{
    const double share =
        std::clamp((overlap - shortOverlap) / (longOverlap - shortOverlap), 0.0, 1.0);
    return significanceShort + share * (significanceLong - significanceShort);
}

// Strength by which links take their turn.
double strength(const Link& link)
{
    return link.relative * (1.0 - 0.7 * link.rival) *
               std::min(1.0, link.found.line.significance / 60.0) +
           1e-4 * link.found.line.significance;
}

class Assembler
{
public:
    Assembler(const AssembleInput& newInput, const Examine& newExamine)
        : input(newInput),
          examine(newExamine),
          places(input.durations.size()),
          groupOf(input.durations.size()),
          best(input.durations.size(), 0.0)
    {
        for (std::size_t i = 0; i < places.size(); ++i) {
            groupOf[i] = i;
            members[i] = {i};
        }
    }

    Assembly run()
    {
        joinKnown();
        rate();
        // The strongest links speak first, and what they place can no longer be moved.
        std::vector<std::size_t> order;
        for (std::size_t i = 0; i < links.size(); ++i) {
            if (isTop[i] && links[i].verdict == Verdict::accepted) order.push_back(i);
        }
        std::stable_sort(order.begin(), order.end(), [this](std::size_t left, std::size_t right) {
            return strength(links[left]) > strength(links[right]);
        });
        for (const std::size_t index : order)
            join(links[index], false);
        joinSupported();
        settle();

        Assembly assembly;
        for (const auto& [group, list] : members)
            assembly.groups.push_back(list);
        assembly.links = links;
        return assembly;
    }

private:
    void joinKnown()
    {
        for (std::size_t i = 0; i < input.known.size(); ++i) {
            const auto [recording, start] = input.known[i];
            places[recording].start = start;
            if (i > 0) unite(input.known[0].first, recording, Placement{});
        }
    }

    // Turns the findings into links and judges each by itself.
    void rate()
    {
        for (const PairFinding& finding : input.findings) {
            if (finding.hypotheses.empty()) continue;
            const double top = finding.hypotheses.front().line.coherence;
            best[finding.first] = std::max(best[finding.first], top);
            best[finding.second] = std::max(best[finding.second], top);
        }
        for (const PairFinding& finding : input.findings) {
            const double lower = std::min(best[finding.first], best[finding.second]);
            for (std::size_t i = 0; i < finding.hypotheses.size(); ++i) {
                Link link;
                link.first = finding.first;
                link.second = finding.second;
                link.found = finding.hypotheses[i];
                link.relative = link.found.line.coherence / lower;
                const std::size_t other = i == 0 ? 1 : 0;
                if (finding.hypotheses.size() > other) {
                    link.rival =
                        finding.hypotheses[other].line.coherence / link.found.line.coherence;
                }
                link.verdict = judge(link);
                isTop.push_back(i == 0);
                links.push_back(link);
            }
        }
    }

    static double neededAgreement(const Link& link)
    {
        if (link.found.line.coherence < clearCoherence) return leastAgreement;
        const double share =
            std::clamp((link.relative - partRelative) / (fullRelative - partRelative), 0.0, 1.0);
        return partAgreement + share * (fullAgreement - partAgreement);
    }

    // True if the two are alike only at times though both have sound all the time: the same song
    // elsewhere. That speaks against a link, however strong it is.
    static bool isPartly(const Link& link)
    {
        return link.found.line.agreement < neededAgreement(link);
    }

    // How far a link stands out, against its recordings' other partners and other offsets at once.
    static double distinction(const Link& link)
    {
        return link.relative * std::max(0.0, 1.0 - link.rival);
    }

    static Verdict judge(const Link& link)
    {
        const Alignment& line = link.found.line;
        if (isPartly(link) || link.relative < standsAlone ||
            line.significance < neededSignificance(line.overlap()))
            return Verdict::weak;
        if (link.relative < fullyAlike)
            return distinction(link) >= leastDistinction ? Verdict::accepted : Verdict::ambiguous;
        const double share =
            std::clamp((line.coherence - likePlace) / (samePlace - likePlace), 0.0, 1.0);
        const double limit = line.coherence < likePlace
                                 ? clearlyBest
                                 : likelyBest + share * (stillBest - likelyBest);
        return link.rival <= limit ? Verdict::accepted : Verdict::ambiguous;
    }

    bool isApart(std::size_t firstGroup, std::size_t secondGroup) const
    {
        for (const auto& [left, right] : input.apart) {
            const std::size_t l = groupOf[left];
            const std::size_t r = groupOf[right];
            if ((l == firstGroup && r == secondGroup) || (l == secondGroup && r == firstGroup))
                return true;
        }
        return false;
    }

    static double usableSlope(const Alignment& line)
    {
        const bool sure =
            line.overlap() >= 20.0 && std::fabs(line.slope) > slopeCertainty * line.slopeError;
        return sure ? line.slope : 0.0;
    }

    // What the second's group must undergo so that the link holds: its clock is read as
    // start + (1 + drift) * time on the first's.
    Placement transformFor(const Link& link) const
    {
        const Alignment& line = link.found.line;
        const double slope = usableSlope(line);
        const Placement& first = places[link.first];
        const Placement& second = places[link.second];
        // first time x = (y + offset - slope * middle) / (1 - slope) for second time y.
        const double scale = 1.0 / (1.0 - slope);
        const double shift = (line.offset - slope * line.middle) * scale;
        const double rateOf = (1.0 + first.drift) * scale / (1.0 + second.drift);
        Placement result;
        result.drift = rateOf - 1.0;
        result.start = first.start + (1.0 + first.drift) * shift - rateOf * second.start;
        return result;
    }

    static Placement moved(const Placement& place, const Placement& by)
    {
        Placement result;
        result.start = by.start + (1.0 + by.drift) * place.start;
        result.drift = (1.0 + by.drift) * (1.0 + place.drift) - 1.0;
        return result;
    }

    void unite(std::size_t first, std::size_t second, const Placement& by)
    {
        const std::size_t into = groupOf[first];
        const std::size_t from = groupOf[second];
        for (const std::size_t member : members[from]) {
            places[member] = moved(places[member], by);
            groupOf[member] = into;
            members[into].push_back(member);
        }
        members.erase(from);
        std::sort(members[into].begin(), members[into].end());
    }

    // Offset, in seconds of the first at the middle of what the two would share, and its slope.
    struct Implied {
        double offset = 0.0;
        double slope = 0.0;
        double middle = 0.0;
        double overlap = 0.0;
    };

    Implied implied(const Placement& a, std::size_t first, const Placement& b,
                    std::size_t second) const
    {
        const double start = std::max(a.start, b.start);
        const double end = std::min(a.at(input.durations[first]), b.at(input.durations[second]));
        Implied result;
        result.overlap = end - start;
        const double middle = (start + end) / 2.0;
        result.middle = (middle - a.start) / (1.0 + a.drift);
        result.offset = result.middle - (middle - b.start) / (1.0 + b.drift);
        result.slope = 1.0 - (1.0 + a.drift) / (1.0 + b.drift);
        return result;
    }

    // The best link of the pair that says what is implied, or none.
    const Link* matching(std::size_t first, std::size_t second, const Implied& say) const
    {
        const bool turned = first > second;
        for (const Link& link : links) {
            if (link.first != (turned ? second : first) || link.second != (turned ? first : second))
                continue;
            const Alignment& line = link.found.line;
            const double time = turned ? say.middle - say.offset : say.middle;
            const double offset = turned ? -say.offset : say.offset;
            // Where the overlap is not the same, the middles are apart and drift counts.
            const double tolerance =
                alike + driftAllowance * (input.durations[first] + input.durations[second]) / 2.0;
            if (std::fabs(line.offsetAt(time) - offset) <= tolerance) return &link;
        }
        return nullptr;
    }

    struct Evidence {
        double support = 0.0;
        double against = 0.0;
        std::size_t supporters = 0;
    };

    // What the pairs across two groups say about a join.
    Evidence weigh(std::size_t firstGroup, std::size_t secondGroup, const Placement& by) const
    {
        Evidence evidence;
        for (const std::size_t a : members.at(firstGroup)) {
            for (const std::size_t b : members.at(secondGroup)) {
                const Placement place = moved(places[b], by);
                const Implied say = implied(places[a], a, place, b);
                const double lower = std::min(best[a], best[b]);
                if (const Link* link = matching(a, b, say)) {
                    if (isPartly(*link)) {
                        evidence.against += 1.0;
                        continue;
                    }
                    evidence.support += std::min(1.0, link->relative);
                    ++evidence.supporters;
                    continue;
                }
                if (say.overlap < tellingOverlap || lower <= 0.0) continue;
                const Alignment line = examine(a, b, say.offset, say.slope);
                if (line.windows.empty()) continue;
                // Significance that half the coherence of the worse recording would show here.
                const double expected = 0.5 * lower * line.fullSignificance;
                if (line.significance >= seenSignificance && line.agreement > 0.3) {
                    evidence.support += std::min(1.0, line.coherence / lower);
                    ++evidence.supporters;
                } else if (line.activity >= audible && expected > expectedSignificance) {
                    evidence.against += 1.0;
                }
            }
        }
        return evidence;
    }

    bool join(Link& link, bool needsOthers)
    {
        const std::size_t into = groupOf[link.first];
        const std::size_t from = groupOf[link.second];
        if (into == from) return false;
        if (isApart(into, from)) {
            link.verdict = Verdict::forbidden;
            return false;
        }
        Placement by = transformFor(link);
        const Evidence evidence = weigh(into, from, by);
        if (needsOthers && evidence.supporters < 2) return false;
        if (evidence.against > evidence.support) {
            link.verdict = Verdict::contradicted;
            return false;
        }
        unite(link.first, link.second, by);
        return true;
    }

    // Links that are too little by themselves, where several pairs of two groups say the same.
    void joinSupported()
    {
        for (bool again = true; again;) {
            again = false;
            std::vector<std::size_t> order;
            for (std::size_t i = 0; i < links.size(); ++i) {
                const Link& link = links[i];
                if (groupOf[link.first] == groupOf[link.second]) continue;
                if (link.verdict == Verdict::weak || link.verdict == Verdict::ambiguous)
                    order.push_back(i);
            }
            std::stable_sort(order.begin(), order.end(),
                             [this](std::size_t left, std::size_t right) {
                                 return strength(links[left]) > strength(links[right]);
                             });
            for (const std::size_t index : order) {
                Link& link = links[index];
                if (isPartly(link) || !supportedByLinks(link)) continue;
                if (join(link, true)) {
                    again = true;
                    break;
                }
            }
        }
    }

    // True if another pair of the same two groups has a link of its own that says the same.
    bool supportedByLinks(const Link& link) const
    {
        const std::size_t into = groupOf[link.first];
        const std::size_t from = groupOf[link.second];
        const Placement by = transformFor(link);
        double sum = 0.0;
        std::size_t count = 0;
        for (const std::size_t a : members.at(into)) {
            for (const std::size_t b : members.at(from)) {
                const Implied say = implied(places[a], a, moved(places[b], by), b);
                const Link* other = matching(a, b, say);
                if (other == nullptr || isPartly(*other)) continue;
                sum += other->relative * (1.0 - std::min(1.0, other->rival));
                ++count;
            }
        }
        return count >= 2 && sum >= 0.3;
    }

    // Compares every link with where its recordings ended up.
    void settle()
    {
        for (Link& link : links) {
            if (groupOf[link.first] != groupOf[link.second]) {
                if (link.verdict == Verdict::accepted) link.verdict = Verdict::contradicted;
                continue;
            }
            const Implied say =
                implied(places[link.first], link.first, places[link.second], link.second);
            const Alignment& line = link.found.line;
            const double tolerance =
                alike +
                driftAllowance * (input.durations[link.first] + input.durations[link.second]) / 2.0;
            const bool agrees = std::fabs(line.offsetAt(say.middle) - say.offset) <= tolerance;
            if (!agrees)
                link.verdict = Verdict::contradicted;
            else if (link.verdict != Verdict::accepted)
                link.verdict = Verdict::confirmed;
        }
    }

    const AssembleInput& input;
    const Examine& examine;
    std::vector<Link> links;
    std::vector<bool> isTop;
    std::vector<Placement> places;
    std::vector<std::size_t> groupOf;
    std::vector<double> best;
    std::map<std::size_t, std::vector<std::size_t>> members;
};

} // namespace

Assembly assemble(const AssembleInput& input, const Examine& examine)
{
    return Assembler(input, examine).run();
}

} // namespace vxlsync
