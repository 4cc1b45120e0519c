#include "decide/Improve.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "decide/Elsewhere.h"
#include "decide/Ties.h"
#include "decide/Verdicts.h"

namespace vxlsync
{

namespace
{

// A place must be better by this to be taken, in seconds of sound times their worth: what is within
// the error of measuring would go to and fro.
constexpr double leastGain = 0.5;
// Rounds after which a search that finds ever more is given up.
constexpr int mostRounds = 8;
// From this share of the evidence for the present place on, it is worth the looks to know what
// speaks against another.
constexpr double shareWorthLooking = 0.3;

// A place that the part may have elsewhere.
struct Alternative {
    Place place;
    std::vector<ImpliedPair> pairs;
    // Of the rest of its group, in case that it comes along; none if the place is beside the rest.
    std::vector<ImpliedPair> ofRest;
    // What speaks for the part there, by the links alone.
    double byLinks = 0.0;
};

// What is gained where the part goes and the rest does not. Where the rest may as well come along,
// two groups could be one, and no place of the part is any worse for it.
double gainOf(double ofPart, double ofRest)
{
    return ofPart - std::max(0.0, ofPart + ofRest);
}

double gainByLinks(const Alternative& alternative, const Arrangement& arrangement)
{
    if (alternative.ofRest.empty()) return alternative.byLinks;
    return gainOf(alternative.byLinks, arrangement.byLinks(alternative.ofRest).balance());
}

double gainClosely(const Alternative& alternative, Arrangement& arrangement)
{
    const double ofPart = arrangement.closely(alternative.pairs).balance();
    if (alternative.ofRest.empty()) return ofPart;
    return gainOf(ofPart, arrangement.closely(alternative.ofRest).balance());
}

// Those for which more speaks than `least`. Requires a part that was parted from its group.
std::vector<Alternative> alternativesTo(const Parting& parting,
                                        const std::vector<std::size_t>& part, double least,
                                        const Arrangement& arrangement)
{
    const double present = arrangement.groups().placeOf(part.front()).start;
    std::vector<Alternative> alternatives;
    for (const Place& place : placesFor(part, arrangement)) {
        if (place.join.into == parting.back.into &&
            std::fabs(place.start - present) < samePlaceSeconds)
            continue;
        Alternative alternative{place, arrangement.pairsOf(place.join), {}, 0.0};
        if (place.join.into != parting.back.into)
            alternative.ofRest =
                arrangement.pairsOf({place.join.into, parting.back.into, place.join.by});
        if (arrangement.isUnwanted(place.join) || arrangement.isDeviceTwice(alternative.pairs))
            continue;
        alternative.byLinks = arrangement.byLinks(alternative.pairs).balance();
        if (alternative.byLinks > least) alternatives.push_back(std::move(alternative));
    }
    return alternatives;
}

// The alternative for which most speaks at a closer look, if it is more than `least`.
std::optional<Place> bestOf(const std::vector<Alternative>& alternatives, double least,
                            Arrangement& arrangement)
{
    std::optional<Place> best;
    for (const Alternative& alternative : alternatives) {
        const double gain = gainClosely(alternative, arrangement);
        if (gain <= least) continue;
        least = gain;
        best = alternative.place;
    }
    return best;
}

// What speaks for the pairs, told by how many of them say so themselves.
Standing witnessed(const std::vector<ImpliedPair>& pairs, const PairKnowledge& known)
{
    std::vector<const Link*> witnesses;
    for (const ImpliedPair& pair : pairs) {
        const Link* link = agreeingLink(pair, known);
        if (link != nullptr && weightOf(*link) > 0.0) witnesses.push_back(link);
    }
    Standing standing;
    standing.isWitnessed =
        witnesses.size() > 1 || (witnesses.size() == 1 && !mayBeRepeat(witnesses.front()->line));
    standing.isDoubted = witnesses.size() == 1 && doubtOf(*witnesses.front()) != Doubt::none;
    return standing;
}

// True if the part is better elsewhere, or by itself, and is so now.
bool move(const std::vector<std::size_t>& part, Arrangement& arrangement)
{
    const Parting parting = arrangement.part(part);
    const std::vector<ImpliedPair> pairs = arrangement.pairsOf(parting.back);
    const double carried = arrangement.carriedBy(parting);
    const double byLinks = arrangement.byLinks(pairs).balance() + carried;
    const std::vector<Alternative> alternatives =
        alternativesTo(parting, part, std::max(0.0, byLinks) + leastGain, arrangement);
    if (byLinks >= 0.0 && alternatives.empty()) {
        arrangement.undo(parting);
        return false;
    }
    const double here = arrangement.closely(pairs).balance() + carried;
    const std::optional<Place> best =
        bestOf(alternatives, std::max(0.0, here) + leastGain, arrangement);
    if (best)
        arrangement.unite(best->join, best->link);
    else if (here >= 0.0)
        arrangement.undo(parting);
    return best || here < 0.0;
}

// Moves one part of the group at most: what was told of other parts no longer holds then.
bool improveGroup(std::size_t group, Arrangement& arrangement)
{
    const std::vector<std::vector<std::size_t>> parts = partsOf(group, arrangement);
    return std::any_of(parts.begin(), parts.end(), [&](const std::vector<std::size_t>& part) {
        return !arrangement.areHeld(part) && move(part, arrangement);
    });
}

} // namespace

void improve(Arrangement& arrangement)
{
    const std::size_t recordings = arrangement.known().durations.size();
    for (int round = 0; round < mostRounds; ++round) {
        bool isBetter = false;
        for (std::size_t i = 0; i < recordings; ++i) {
            // Each recording for itself, so that what is parted gets its turn too.
            isBetter |= improveGroup(arrangement.groups().groupOf(i), arrangement);
        }
        if (!isBetter) return;
    }
}

Standing standingOf(const std::vector<std::size_t>& part, Arrangement& arrangement)
{
    const Parting parting = arrangement.part(part);
    const std::vector<ImpliedPair> pairs = arrangement.pairsOf(parting.back);
    Standing standing = witnessed(pairs, arrangement.known());
    standing.here = arrangement.closely(pairs).balance() + arrangement.carriedBy(parting);
    for (const Alternative& alternative : alternativesTo(parting, part, 0.0, arrangement)) {
        const bool isWorthLooking = alternative.byLinks > shareWorthLooking * standing.here;
        const double gain = isWorthLooking ? gainClosely(alternative, arrangement)
                                           : gainByLinks(alternative, arrangement);
        standing.elsewhere = std::max(standing.elsewhere, gain);
    }
    arrangement.undo(parting);
    return standing;
}

} // namespace vxlsync
