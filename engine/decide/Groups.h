#ifndef VXL_SYNC_GROUPS_H
#define VXL_SYNC_GROUPS_H

#include <cstddef>
#include <map>
#include <vector>

#include "decide/Geometry.h"
#include "model/Decision.h"
#include "model/Link.h"

namespace vxlsync
{

// Two groups made one: what the clock of `from` reads as on the clock of `into`.
struct Join {
    std::size_t into = 0;
    std::size_t from = 0;
    Placement by;
};

// How two recordings of the two groups would lie to each other after a join, `first` of the one
// that is joined to.
struct ImpliedPair {
    std::size_t first = 0;
    std::size_t second = 0;
    ImpliedLine line;
};

// Which recordings belong together, and where each stands on its group's clock. At first each
// recording is a group of its own that starts at 0.
class Groups
{
public:
    explicit Groups(std::size_t recordings);

    // The name of the recording's group, which stays only until the next join.
    std::size_t groupOf(std::size_t recording) const { return groups[recording]; }
    const Placement& placeOf(std::size_t recording) const { return places[recording]; }
    // In order of index.
    const std::vector<std::size_t>& membersOf(std::size_t group) const { return members.at(group); }
    // Members and groups in order of index.
    std::vector<std::vector<std::size_t>> all() const;

    // Requires a recording that is alone in its group.
    void setStart(std::size_t recording, double start) { places[recording].start = start; }
    // Joins the second's group to the first's so that the link holds. Requires two groups.
    Join joinBy(const Link& link) const;
    // Requires two groups.
    void unite(const Join& join);
    // Makes the recordings a group of their own; they and those that stay keep their places on the
    // clock that they had. Requires some, but not all, of one group, in order of index.
    void part(const std::vector<std::size_t>& recordings);

private:
    // Makes the recordings a group by the name of the lowest. Requires an order, and that no group
    // has them.
    void name(std::vector<std::size_t> list);

    std::vector<Placement> places;
    std::vector<std::size_t> groups;
    // By the name of the group, which is its lowest member.
    std::map<std::size_t, std::vector<std::size_t>> members;
};

// The same seen from the other group.
Join turned(const Join& join);

// Each recording of the one group with each of the other. `durations` by recording, in seconds.
std::vector<ImpliedPair> pairsAcross(const Join& join, const Groups& groups,
                                     const std::vector<double>& durations);

} // namespace vxlsync

#endif
