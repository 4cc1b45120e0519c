#include "match/Look.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "match/Evidence.h"
#include "match/Jumps.h"

namespace vxlsync
{

namespace
{

// First look at a place: enough windows to tell chance.
constexpr std::size_t firstLookWindows = 12;
// Of a doubtful place: what is tied stands out of four windows as well, and of chance a tenth does.
constexpr std::size_t doubtfulWindows = 4;
constexpr double doubtfulSignificance = 6.0;
// Two lines nearer to each other, in seconds, are one.
constexpr double sameLineSeconds = 0.02;
// So many of a pair's links are measured with all windows; of a loop's many turns the rest only
// matter as rivals.
constexpr std::size_t lookedAtClosely = 3;

// True if the link's line is near, or what it continues by behind a jump.
bool isNear(const Link& link, double offset)
{
    const auto reaches = [&](double lineOffset) {
        return std::fabs(lineOffset - offset) < sameLineSeconds;
    };
    return reaches(link.line.offset) ||
           std::any_of(link.jumps.begin(), link.jumps.end(), [&](const Jump& jump) {
               return reaches(link.line.offset + jump.sizeSeconds);
           });
}

// Null if none of the links is near.
Link* linkNear(Links& links, double offset)
{
    const auto near = std::find_if(links.begin(), links.end(),
                                   [offset](const Link& link) { return isNear(link, offset); });
    return near == links.end() ? nullptr : &*near;
}

Links mostCoherentFirst(Links links)
{
    std::stable_sort(links.begin(), links.end(), [](const Link& left, const Link& right) {
        return left.line.coherence > right.line.coherence;
    });
    return links;
}

bool passesFewWindows(AlignRequest request, const PairInHand& pair, const Interrupt& interrupt,
                      AlignWorkspace& work)
{
    request.mostWindows = doubtfulWindows;
    request.leastSignificance = std::numeric_limits<double>::infinity();
    return align(pair.first, pair.second, request, interrupt, work).significance >=
           doubtfulSignificance;
}

// A line that had as many windows as a first look may have is measured with all that fit; others
// have had them all.
Alignment closeLine(const PairInHand& pair, const Alignment& line, const Interrupt& interrupt,
                    AlignWorkspace& work)
{
    if (line.windows.size() != firstLookWindows) return line;
    AlignRequest request;
    request.offset = line.offset;
    request.slope = line.slope;
    request.sign = line.sign;
    request.isKnown = true;
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
    if (proposal.isDoubtful && !passesFewWindows(request, pair, interrupt, work)) return known;
    request.mostWindows = firstLookWindows;
    const Alignment line = align(pair.first, pair.second, request, interrupt, work);
    if (!standsOutOfChance(line)) return known;
    if (Link* near = linkNear(known, line.offset)) {
        near->height = std::max(near->height, proposal.height);
        // What a jump joins is described by both its lines.
        if (near->jumps.empty() && line.coherence > near->line.coherence) near->line = line;
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

Links lookClosely(const PairInHand& pair, Links ofPair, const Interrupt& interrupt,
                  AlignWorkspace& work)
{
    ofPair = mostCoherentFirst(std::move(ofPair));
    for (std::size_t i = 0; i < std::min(ofPair.size(), lookedAtClosely); ++i) {
        if (ofPair[i].jumps.empty())
            ofPair[i].line = closeLine(pair, ofPair[i].line, interrupt, work);
    }
    ofPair.erase(std::remove_if(ofPair.begin(), ofPair.end(),
                                [](const Link& link) { return !isEvidence(link.line); }),
                 ofPair.end());
    return mostCoherentFirst(joinJumps(mostCoherentFirst(std::move(ofPair))));
}

} // namespace vxlsync
