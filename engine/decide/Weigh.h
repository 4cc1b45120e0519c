#ifndef VXL_SYNC_WEIGH_H
#define VXL_SYNC_WEIGH_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <tuple>
#include <vector>

#include "decide/Groups.h"
#include "model/Link.h"

namespace vxlsync
{

// Measures how two recordings lie to each other about a line that other links imply: no windows if
// they would share too little time. The first index is the lower or the higher.
using Examine =
    std::function<Alignment(std::size_t first, std::size_t second, double offset, double slope)>;

// What is known of the recordings and their pairs.
struct PairKnowledge {
    // As judgeLinks leaves them.
    const Links& links;
    // bestCoherences of the links.
    const std::vector<double>& best;
    // Of the recordings, in seconds.
    const std::vector<double>& durations;
    const Examine& examine;
};

// What speaks for and against a place: seconds of sound, each times what it is worth there.
struct Evidence {
    double support = 0.0;
    double against = 0.0;

    double balance() const { return support - against; }
};

Evidence operator+(const Evidence& left, const Evidence& right);

// What the line along which two recordings were measured says of their place: the seconds that
// agree, in as much of the band as agrees, times how much more coherent than a repeat they are;
// against it the seconds that differ. `relative` is the coherence against the lower of the bests
// that either recording reaches.
Evidence evidenceOf(const Alignment& line, double relative);

// The balance of the link's evidence; all of it counts against a link that is partial. Requires a
// link that was judged.
double weightOf(const Link& link);

// The best link of the pair that says what is implied, or null.
const Link* agreeingLink(const ImpliedPair& pair, const PairKnowledge& known);

// Weighs places by what the pairs of recordings say of them. No pair is looked at twice for one
// line.
class Scales
{
public:
    // Borrows what is known.
    explicit Scales(const PairKnowledge& newKnown) : known(newKnown) {}

    // What the links of the pairs say of the lines that are implied.
    Evidence byLinks(const std::vector<ImpliedPair>& pairs) const;
    // The same, and where there is no link that says what is implied, what a closer look sees. Of
    // many such pairs those are looked at that would share most time.
    Evidence closely(const std::vector<ImpliedPair>& pairs);

private:
    using Look = std::tuple<std::size_t, std::size_t, std::int64_t>;

    Evidence lookAt(const ImpliedPair& pair);

    PairKnowledge known;
    std::map<Look, Evidence> looks;
};

// True if several of the pairs have links of their own that say what the join implies, clear enough
// together.
bool areBackedByLinks(const std::vector<ImpliedPair>& pairs, const PairKnowledge& known);

} // namespace vxlsync

#endif
