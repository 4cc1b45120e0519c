#ifndef VXL_SYNC_VERDICTS_H
#define VXL_SYNC_VERDICTS_H

#include <cstddef>
#include <vector>

#include "model/Alignment.h"
#include "model/Link.h"

namespace vxlsync
{

// False if any number that is worked with is infinite or none.
bool isFinite(const Alignment& line);

// Those of the links that say anything: all their numbers finite, and coherence above 0. The order
// stays.
Links sayingLinks(Links links);

// The coherence that each recording reaches at best with anyone, by index; 0 for one without links.
std::vector<double> bestCoherences(const Links& links, std::size_t recordings);

// Fills in `relative`, `rival`, `doubt` and the verdict on each link by itself: accepted, weak or
// ambiguous. Requires links as sayingLinks leaves them and their bestCoherences.
Links judgeLinks(Links links, const std::vector<double>& best);

// What the link is worth by itself, whatever others say. Requires a link that was judged.
Verdict verdictByItself(const Link& link);

// True if the two are alike only at times though both have sound all the time: the same song
// elsewhere. That speaks against a link, however strong it is. Requires a link that was judged.
bool isPartial(const Link& link);

// True if one device may have recorded the same sound at two times, by its clock and by how alike
// the two are.
bool mayBeRepeat(const Alignment& line);

// Seconds in which both have sound of their own: what stands above their noise, or all that they
// share where they agree all along in sound that is as steady as noise.
double heardSecondsOf(const Alignment& line);

// What makes the link doubtful as long as no third recording lies to both as it says: a repeat that
// one device recorded twice is as long, as wide and as steady as a shared scene is. Requires a link
// whose rival is known.
Doubt doubtOf(const Link& link);

// How far a link stands out, against its recordings' other partners and other offsets at once; from
// 0 to 1. Requires a link that was judged.
double distinctionOf(const Link& link);

// Strength by which links take their turn. Requires a link that was judged.
double strengthOf(const Link& link);

} // namespace vxlsync

#endif
