#ifndef VXL_SYNC_LINK_H
#define VXL_SYNC_LINK_H

#include <cstddef>
#include <vector>

#include "model/Alignment.h"
#include "vxl_sync/Result.h"

namespace vxlsync
{

// Why a link that is ambiguous is not believed; none if other offsets fit nearly as well.
enum class Doubt {
    none,
    // Hardly more is heard than a click, or than a jingle in a long silence.
    littleHeard,
    // Its recordings may be of one device, and what they have in common a repeat.
    oneDevice,
};

// One way in which two recordings may lie to each other. Matching fills in what was measured, and
// deciding what is thought of it.
struct Link {
    // Indices of the recordings, the lower first.
    std::size_t first = 0;
    std::size_t second = 0;
    Alignment line;
    Method method = Method::correlation;
    // Height of the whole correlation in units of its rms; 0 if the landmarks alone had it.
    double height = 0.0;
    std::vector<Jump> jumps;

    // Coherence against the lower of the bests that either recording reaches with anyone.
    double relative = 0.0;
    // Coherence of the next best offset against that of this one.
    double rival = 0.0;
    Verdict verdict = Verdict::weak;
    Doubt doubt = Doubt::none;
    // Of a forbidden link: true if a device would have been in two places at once, false if the
    // user wants its recordings apart.
    bool isDeviceClash = false;

    bool isOfPair(const Link& other) const
    {
        return first == other.first && second == other.second;
    }
    bool isUsed() const { return verdict == Verdict::accepted || verdict == Verdict::confirmed; }
};

// The links of all pairs, by pair in order of its indices, of each pair the most coherent first.
using Links = std::vector<Link>;

} // namespace vxlsync

#endif
