#include "match/Ties.h"

#include <algorithm>
#include <vector>

namespace vxlsync
{

namespace
{

// A song that two events share agrees while it plays, in less of the time than this.
constexpr double leastAgreement = 0.85;
// Below this coherence single windows drown in noise and disagree for that.
constexpr double faintCoherence = 0.09;
constexpr double leastAgreementOfFaint = 0.75;
// A few beats that coincide reach 30 in 3 s; what lasts longer cannot coincide so well.
constexpr double shortSeconds = 4.0;
constexpr double longSeconds = 12.0;
constexpr double leastSignificanceOfShort = 40.0;
constexpr double leastSignificanceOfLong = 18.0;
// Coherence of the pair's next link against that of the best.
constexpr double greatestRival = 0.7;

double neededSignificance(double overlap)
{
    const double share =
        std::clamp((overlap - shortSeconds) / (longSeconds - shortSeconds), 0.0, 1.0);
    return leastSignificanceOfShort + share * (leastSignificanceOfLong - leastSignificanceOfShort);
}

// False as well of a link that no decision knows yet.
bool isDisbelieved(const Link& link)
{
    return link.verdict == Verdict::ambiguous || link.verdict == Verdict::contradicted ||
           link.verdict == Verdict::forbidden;
}

} // namespace

bool isTie(const Links& ofPair)
{
    if (ofPair.empty()) return false;
    const Alignment& line = ofPair.front().line;
    const double agreement =
        line.coherence < faintCoherence ? leastAgreementOfFaint : leastAgreement;
    if (line.agreement < agreement || line.significance < neededSignificance(line.overlap()))
        return false;
    return ofPair.size() == 1 || ofPair[1].line.coherence <= greatestRival * line.coherence;
}

void gather(const LinkBook& book, Gathering& gathering)
{
    std::vector<const Link*> ties;
    for (const auto& entry : book) {
        if (isTie(entry.second) && !isDisbelieved(entry.second.front()))
            ties.push_back(&entry.second.front());
    }
    std::stable_sort(ties.begin(), ties.end(), [](const Link* left, const Link* right) {
        return left->line.significance > right->line.significance;
    });
    for (const Link* tie : ties)
        gathering.join(tie->first, tie->second, tie->line);
}

} // namespace vxlsync
