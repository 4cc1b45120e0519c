#include "match/Look.h"

#include <algorithm>
#include <cmath>

#include "match/Evidence.h"
#include "match/Jumps.h"

namespace vxlsync
{

namespace
{

// First look at a place: enough windows to tell chance.
constexpr std::size_t firstLookWindows = 12;
// Two lines nearer to each other, in seconds, are one.
constexpr double sameLineSeconds = 0.02;
// So many of a pair's links are measured with all windows; of a loop's many turns the rest only
// matter as rivals.
constexpr std::size_t lookedAtClosely = 3;
// How far the first look may be off, in seconds and of the clocks' difference.
constexpr double closeReach = 0.005;
constexpr double closeSlopeReach = 40e-6;
// A piece of music does not repeat itself for three minutes, and what is far above chance in all
// but one of fifty windows all along is no repeat.
constexpr double settlingOverlapSeconds = 180.0;
constexpr double settlingSignificance = 60.0;
constexpr double settlingAgreement = 0.98;

// Null if none of the links is near.
Link* linkNear(Links& links, double offset)
{
    const auto near = std::find_if(links.begin(), links.end(), [offset](const Link& link) {
        return std::fabs(link.line.offset - offset) < sameLineSeconds;
    });
    return near == links.end() ? nullptr : &*near;
}

Links mostCoherentFirst(Links links)
{
    std::stable_sort(links.begin(), links.end(), [](const Link& left, const Link& right) {
        return left.line.coherence > right.line.coherence;
    });
    return links;
}

// A line that had as many windows as a first look may have is measured with all that fit.
Alignment closeLine(const PairInHand& pair, const Alignment& line, const Interrupt& interrupt,
                    AlignWorkspace& work)
{
    if (line.windows.size() < firstLookWindows) return line;
    AlignRequest request;
    request.offset = line.offset;
    request.slope = line.slope;
    request.sign = line.sign;
    request.reach = closeReach;
    request.slopeReach = closeSlopeReach;
    return align(pair.first, pair.second, request, interrupt, work);
}

} // namespace

Links lookAt(const Proposal& proposal, const PairInHand& pair, Links known,
             const Interrupt& interrupt, AlignWorkspace& work)
{
    if (Link* near = linkNear(known, proposal.request.offset)) {
        near->height = std::max(near->height, proposal.height);
        return known;
    }
    AlignRequest request = proposal.request;
    request.mostWindows = firstLookWindows;
    const Alignment line = align(pair.first, pair.second, request, interrupt, work);
    if (!standsOutOfChance(line)) return known;
    if (Link* near = linkNear(known, line.offset)) {
        near->height = std::max(near->height, proposal.height);
        if (line.coherence > near->line.coherence) near->line = line;
        return known;
    }
    Link link;
    link.first = pair.pair.first;
    link.second = pair.pair.second;
    link.line = line;
    link.method = proposal.method;
    link.height = proposal.height;
    known.push_back(link);
    return known;
}

bool isSettled(const Links& ofPair)
{
    return std::any_of(ofPair.begin(), ofPair.end(), [](const Link& link) {
        return link.line.overlap() >= settlingOverlapSeconds &&
               link.line.significance >= settlingSignificance &&
               link.line.agreement >= settlingAgreement;
    });
}

Links lookClosely(const PairInHand& pair, Links ofPair, const Interrupt& interrupt,
                  AlignWorkspace& work)
{
    ofPair = mostCoherentFirst(std::move(ofPair));
    for (std::size_t i = 0; i < std::min(ofPair.size(), lookedAtClosely); ++i)
        ofPair[i].line = closeLine(pair, ofPair[i].line, interrupt, work);
    ofPair.erase(std::remove_if(ofPair.begin(), ofPair.end(),
                                [](const Link& link) { return !isEvidence(link.line); }),
                 ofPair.end());
    return mostCoherentFirst(joinJumps(mostCoherentFirst(std::move(ofPair))));
}

} // namespace vxlsync
