#include "decide/Verdicts.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <tuple>

#include "decide/Ramp.h"

namespace vxlsync
{

namespace
{

// A link stands on its own when it is at least so coherent against what the worse of its two
// recordings reaches at best ...
constexpr double leastRelative = 0.5;
// ... and when no other offset comes near: a song's repeat, or the same song at another place, is
// alike in part only. The least distinction.
constexpr double leastDistinction = 0.3;

// A link of this relative coherence is as good as any that its recordings have, and may have
// rivals.
constexpr double bestOfAllRelative = 0.8;
// Where a loop repeats exactly, its other turns are nearly as coherent as the right one; but only
// the same sound in two recordings is very coherent, while drum kits and tunes that recur are a
// little. So the more coherent a link is, the nearer its rivals may come: the greatest rival below
// the coherence at which the ramp begins, and the ramp from there on.
constexpr double greatestRivalOfUnlike = 0.6;
constexpr Ramp greatestRivalByCoherence{0.3, 0.7, 0.45, 0.95};

// A song that two events share is alike for as long as it plays; a scene that two recorders share
// is alike all the time. So the less alike two recordings are, the fewer windows may disagree.
constexpr Ramp neededAgreementByRelative{0.8, 0.97, 0.95, 0.85};
// Below this coherence single windows drown in noise, and their agreement says little.
constexpr double clearCoherence = 0.09;
constexpr double neededAgreementOfFaint = 0.8;

// By seconds of shared time: in a short one, a beat or two that coincide look like a link; much
// evidence does not.
constexpr Ramp neededSignificanceBySeconds{4.0, 40.0, 12.0, 18.0};

// Least seconds with sound of their own in both: clicks, knocks and claps make less, and two rooms
// that are silent otherwise may well hear the same; of three seconds of speech more are heard.
constexpr double leastHeardSeconds = 0.9;

// A jingle or a word is heard in rooms that have nothing else to do with each other. So much is no
// jingle, nor is what fills this share of the shared time; and where half of all windows agree,
// those between the sounds do as well, however quiet they are.
constexpr double longestJingleSeconds = 10.0;
constexpr double jingleShare = 0.25;
constexpr double agreeingThroughout = 0.5;

// Sound that is as steady as noise stands above no floor of its own. Two that agree in nearly all
// of their windows hear it all the same; a click is in two or three of them.
constexpr double fewestOfSteady = 8.0;
constexpr double steadyAgreement = 0.9;
constexpr double steadyShare = 0.1;

// Two recordings may be of one device, which is never in two places at once: what they have in
// common is then a repeat. They may if their clocks are the same to less than two devices' are in
// all but a few pairs, the link telling the difference so well, ...
constexpr double oneClockSlope = 0.5e-6;
constexpr double oneClockErrors = 3.0;
constexpr double tellingSlopeError = 0.6e-6;
// ... if they are not as coherent as the same sound mostly is; where they are no more so than a
// repeat, it need not be told how far the clocks differ, ...
constexpr double sameSoundCoherence = 0.6;
constexpr double repeatCoherence = 0.5;
// ... and if the sound is seen to repeat, by the rival.
constexpr double repeatingRival = 0.3;
// A third recording that lies to both as the link says settles it: a repeat of one device has no
// such witness. Three links that fit differ by no more, in seconds, clocks that drift included.
constexpr double witnessTolerance = 0.005;

// Parts of the strength: a rival as good as the link leaves this share of it less ...
constexpr double rivalDiscount = 0.7;
// ... significance above this adds no more than an order among links that are alike otherwise.
constexpr double ampleSignificance = 60.0;
constexpr double significanceTieBreak = 1e-4;

double neededAgreement(const Link& link)
{
    return link.line.coherence < clearCoherence ? neededAgreementOfFaint
                                                : neededAgreementByRelative.at(link.relative);
}

double greatestRival(double coherence)
{
    return coherence < greatestRivalByCoherence.from ? greatestRivalOfUnlike
                                                     : greatestRivalByCoherence.at(coherence);
}

// Of each pair the best link that is not weak, by pair. Borrowed.
using BestLinks = std::vector<const Link*>;

// Requires judged links.
BestLinks bestLinksOf(const Links& links)
{
    BestLinks best;
    for (std::size_t i = 0; i < links.size(); ++i) {
        const bool isBestOfPair = i == 0 || !links[i].isOfPair(links[i - 1]);
        if (isBestOfPair && links[i].verdict != Verdict::weak) best.push_back(&links[i]);
    }
    return best;
}

// By the best link of the two; empty if they have none.
std::optional<double> offsetBetween(const BestLinks& best, std::size_t from, std::size_t to)
{
    const std::size_t first = std::min(from, to);
    const std::size_t second = std::max(from, to);
    const auto link = std::lower_bound(best.begin(), best.end(), std::tie(first, second),
                                       [](const Link* left, const auto& right) {
                                           return std::tie(left->first, left->second) < right;
                                       });
    if (link == best.end() || (*link)->first != first || (*link)->second != second)
        return std::nullopt;
    return from == first ? (*link)->line.offset : -(*link)->line.offset;
}

bool hasWitness(const Link& link, const BestLinks& best, std::size_t recordings)
{
    for (std::size_t third = 0; third < recordings; ++third) {
        const std::optional<double> there = offsetBetween(best, link.first, third);
        const std::optional<double> back = offsetBetween(best, third, link.second);
        if (there && back && std::fabs(*there + *back - link.line.offset) <= witnessTolerance)
            return true;
    }
    return false;
}

// Coherence of the next best link of the pair, or of the best for all others, against the link's
// own.
double rivalOf(Links::const_iterator link, Links::const_iterator pairBegin,
               Links::const_iterator pairEnd)
{
    const auto other = link == pairBegin ? std::next(pairBegin) : pairBegin;
    return other == pairEnd ? 0.0 : other->line.coherence / link->line.coherence;
}

// True if at least such a share of all windows is on the line.
bool agreesIn(const Alignment& line, double share)
{
    const auto agreeing =
        std::count_if(line.windows.begin(), line.windows.end(),
                      [](const AlignmentWindow& window) { return window.agrees; });
    return static_cast<double>(agreeing) >= share * static_cast<double>(line.windows.size());
}

// True if what is alike may be a sound that two rooms have heard, and the rest says nothing.
bool isHardlyHeard(const Alignment& line)
{
    const double heard = heardSecondsOf(line);
    if (heard < leastHeardSeconds) return true;
    return heard < longestJingleSeconds && heard < jingleShare * line.overlap() &&
           !agreesIn(line, agreeingThroughout);
}

} // namespace

bool isFinite(const Alignment& line)
{
    const double numbers[] = {line.middle,       line.offset,    line.slope,       line.offsetError,
                              line.slopeError,   line.start,     line.end,         line.coherence,
                              line.significance, line.agreement, line.heardSeconds};
    return std::all_of(std::begin(numbers), std::end(numbers),
                       [](double number) { return std::isfinite(number); });
}

Links sayingLinks(Links links)
{
    links.erase(std::remove_if(links.begin(), links.end(),
                               [](const Link& link) {
                                   return !isFinite(link.line) || link.line.coherence <= 0.0;
                               }),
                links.end());
    return links;
}

std::vector<double> bestCoherences(const Links& links, std::size_t recordings)
{
    std::vector<double> best(recordings, 0.0);
    for (const Link& link : links) {
        for (const std::size_t recording : {link.first, link.second})
            best[recording] = std::max(best[recording], link.line.coherence);
    }
    return best;
}

Links judgeLinks(Links links, const std::vector<double>& best)
{
    for (auto begin = links.begin(); begin != links.end();) {
        const auto end = std::find_if_not(begin, links.end(),
                                          [&](const Link& link) { return link.isOfPair(*begin); });
        for (auto link = begin; link != end; ++link) {
            link->relative = link->line.coherence / std::min(best[link->first], best[link->second]);
            link->rival = rivalOf(link, begin, end);
            link->doubt = doubtOf(*link);
            link->verdict = verdictByItself(*link);
        }
        begin = end;
    }
    const BestLinks bestLinks = bestLinksOf(links);
    for (const Link* found : bestLinks) {
        Link& link = links[static_cast<std::size_t>(found - links.data())];
        if (link.verdict != Verdict::ambiguous || link.doubt == Doubt::littleHeard ||
            !hasWitness(link, bestLinks, best.size()))
            continue;
        link.doubt = Doubt::none;
        link.verdict = Verdict::accepted;
    }
    return links;
}

Verdict verdictByItself(const Link& link)
{
    const Alignment& line = link.line;
    if (isPartial(link) || link.relative < leastRelative ||
        line.significance < neededSignificanceBySeconds.at(line.overlap()))
        return Verdict::weak;
    if (link.doubt != Doubt::none) return Verdict::ambiguous;
    const bool isDistinct = link.relative < bestOfAllRelative
                                ? distinctionOf(link) >= leastDistinction
                                : link.rival <= greatestRival(line.coherence);
    return isDistinct ? Verdict::accepted : Verdict::ambiguous;
}

bool mayBeRepeat(const Alignment& line)
{
    const double sameClock = std::max(oneClockSlope, oneClockErrors * line.slopeError);
    return std::fabs(line.slope) < sameClock && line.coherence < sameSoundCoherence;
}

double heardSecondsOf(const Alignment& line)
{
    const bool isSteady = static_cast<double>(line.windows.size()) >= fewestOfSteady &&
                          agreesIn(line, steadyAgreement) &&
                          line.heardSeconds < steadyShare * line.overlap();
    return isSteady ? line.overlap() : line.heardSeconds;
}

Doubt doubtOf(const Link& link)
{
    const Alignment& line = link.line;
    if (isHardlyHeard(line)) return Doubt::littleHeard;
    const bool isTold = line.slopeError < tellingSlopeError || line.coherence < repeatCoherence;
    return isTold && mayBeRepeat(line) && link.rival >= repeatingRival ? Doubt::oneDevice
                                                                       : Doubt::none;
}

bool isPartial(const Link& link)
{
    return link.line.agreement < neededAgreement(link);
}

double distinctionOf(const Link& link)
{
    return link.relative * std::max(0.0, 1.0 - link.rival);
}

double strengthOf(const Link& link)
{
    const double significance = link.line.significance;
    return link.relative * (1.0 - rivalDiscount * link.rival) *
               std::min(1.0, significance / ampleSignificance) +
           significanceTieBreak * significance;
}

} // namespace vxlsync
