#ifndef VXL_SYNC_LOOKING_H
#define VXL_SYNC_LOOKING_H

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "match/Gathering.h"
#include "match/LandmarkOffsets.h"
#include "match/Look.h"
#include "running/Run.h"

namespace vxlsync
{

// The links found so far by pair of indices, the lower first, of each pair the most coherent first.
// A pair that was looked at and has none is kept as well.
using LinkBook = std::map<std::pair<std::size_t, std::size_t>, Links>;

Links linksIn(const LinkBook& book);

// What the steps of a search share: what is searched, on what it runs, and what is known so far.
struct SearchState {
    // All is borrowed. Requires offsets by pair.
    SearchState(const std::vector<Prepared>& newRecordings,
                const std::vector<std::string>& newDevices,
                const std::vector<LandmarkOffset>& newLandmarks, Run& newRun);

    const std::vector<Prepared>& recordings;
    const std::vector<std::string>& devices;
    const std::vector<LandmarkOffset>& landmarks;
    Run& run;
    // By thread.
    std::vector<AlignWorkspace> spaces;
    Gathering gathering;
    LinkBook book;
    // Of a pair that is not in the book.
    const Links noLinks;

    // Recordings of one stated device share no time, and what is alike in them is a repeat.
    bool mayCompare(std::size_t first, std::size_t second) const;
    PairInHand inHand(const RecordingPair& pair) const;
    // Each recording as a group of its own.
    Gathering singles() const;
    // None for a pair that nobody has looked at.
    const Links& linksOf(const RecordingPair& pair) const;
};

// Places at which one pair is looked at.
struct LookTask {
    RecordingPair pair;
    std::vector<Proposal> proposals;
};

// Where the landmarks say to look; in doubt if strangers reach as much by chance.
Proposal proposalOf(const LandmarkOffset& landmark);
// What they say of one pair.
std::vector<Proposal> landmarkProposals(const RecordingPair& pair, const SearchState& search);

// From this standing of its votes on, a pair is hardly ever a pair of strangers.
constexpr double clearStanding = 14.0;

// Looks at the proposals of pairs that differ, a step of the meter for each, enters into the book
// what they give, and gathers by it. Throws Cancelled.
void look(const std::vector<LookTask>& tasks, SearchState& search);

} // namespace vxlsync

#endif
