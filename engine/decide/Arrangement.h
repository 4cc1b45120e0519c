#ifndef VXL_SYNC_ARRANGEMENT_H
#define VXL_SYNC_ARRANGEMENT_H

#include <cstddef>
#include <optional>
#include <vector>

#include "decide/Constraints.h"
#include "decide/DeviceClocks.h"
#include "decide/Groups.h"
#include "decide/Weigh.h"
#include "model/Link.h"
#include "running/Interrupt.h"

namespace vxlsync
{

// A part of a group that was taken out.
struct Parting {
    // From the part to the rest, by which the part is where it was.
    Join back;
    // Links by which the two had been joined.
    std::vector<std::size_t> carriers;
};

// Who is where so far, and all that a change is weighed by.
class Arrangement
{
public:
    // Each recording is alone, but for those whose starts are known. Borrows all. Requires judged
    // links.
    Arrangement(const Constraints& newConstraints, const PairKnowledge& newKnown,
                const Interrupt& newInterrupt);

    const Groups& groups() const { return placed; }
    const PairKnowledge& known() const { return knowledge; }
    // Indices of the links of the recording.
    const std::vector<std::size_t>& linksOf(std::size_t recording) const
    {
        return byRecording[recording];
    }
    // True if the start of one of them is known, so that nothing moves them.
    bool areHeld(const std::vector<std::size_t>& recordings) const;
    // True if the two recordings of the link are in one group and lie there as it says. A link that
    // a join was made by does, whatever it says at the middle of the overlap.
    bool holds(std::size_t link) const;

    std::vector<ImpliedPair> pairsOf(const Join& join) const;
    bool isUnwanted(const Join& join) const;
    bool isDeviceTwice(const std::vector<ImpliedPair>& pairs) const;
    // True if the clock of a device says what the pairs imply.
    bool isBackedByClocks(const std::vector<ImpliedPair>& pairs) const;
    // What speaks for and against the pairs, links that are not there being looked for or not. A
    // closer look throws Cancelled, and so does parting: one of the two is in each step of a search
    // for better places.
    Evidence byLinks(const std::vector<ImpliedPair>& pairs) const;
    Evidence closely(const std::vector<ImpliedPair>& pairs);

    // Joins two groups by a link.
    void unite(const Join& join, std::size_t link);
    // Makes the recordings, some but not all of a group, a group of their own.
    Parting part(const std::vector<std::size_t>& recordings);
    // Weight of the links by which the two had been joined and which say something else of the
    // middle of the overlap, so that they are not found as links of their pairs.
    double carriedBy(const Parting& parting) const;
    // Makes it as it was before. Requires that nothing has been joined or parted in between.
    void undo(const Parting& parting);

private:
    bool agreesWithPlaces(const Link& link) const;

    const Constraints& constraints;
    const Interrupt& interrupt;
    PairKnowledge knowledge;
    Scales scales;
    DeviceClocks devices;
    Groups placed;
    // By link: true if groups were joined by it and have not been parted.
    std::vector<bool> carries;
    std::vector<std::vector<std::size_t>> byRecording;
    // By recording.
    std::vector<bool> isKnown;
};

} // namespace vxlsync

#endif
