#ifndef VXL_SYNC_DEVICECLOCKS_H
#define VXL_SYNC_DEVICECLOCKS_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "decide/Constraints.h"
#include "decide/Groups.h"
#include "decide/Weigh.h"

namespace vxlsync
{

// What is known of the devices that recorded, and of their clocks. One device is never in two
// places at once; its clock says to a second or two how its recordings lie to each other, as long
// as it runs and is not set. It may be wrong by any amount, so that it is compared with itself
// only.
class DeviceClocks
{
public:
    // Borrows the constraints.
    explicit DeviceClocks(const Constraints& newConstraints);

    // True if a device that the user named would be in two places at once.
    bool isTwice(const std::vector<ImpliedPair>& pairs) const;
    // What devices that only seem to be the same and the clocks of all have to say of a place, in
    // seconds of sound times their worth. A clock that is wrong by what sound has settled so far
    // says nothing.
    Evidence weigh(const std::vector<ImpliedPair>& pairs, const Groups& groups) const;
    // True if the clock of a device, two of whose recordings sound has placed as it says, says that
    // the pairs lie as implied, and no other clock says that they do not.
    bool backs(const std::vector<ImpliedPair>& pairs, const Groups& groups) const;

private:
    // What the pairs of one device say.
    struct Voice {
        bool isTwice = false;
        std::size_t near = 0;
        std::size_t far = 0;
        // A recording of either group.
        std::size_t into = 0;
        std::size_t from = 0;
    };

    // True if clocks say when both recordings began.
    bool haveStarts(std::size_t first, std::size_t second) const;
    // Seconds by which the clock differs from what is implied.
    double missOf(const ImpliedPair& pair) const;
    std::map<std::size_t, Voice> voicesOf(const std::vector<ImpliedPair>& pairs) const;
    // How many neighbours by the clock, of the device and the group, lie as it says, less those
    // that do not.
    int standingOf(std::size_t device, std::size_t group, const Groups& groups) const;
    bool isTrusted(std::size_t device, const Voice& voice, const Groups& groups) const;

    const Constraints& constraints;
    // By device, from 1: true if the user named it.
    std::vector<bool> isStated;
    // By recording: the number of its device; 0 if nothing is known of it.
    std::vector<std::size_t> deviceOf;
    // By device: its recordings by their clock; those without a clock are left out.
    std::vector<std::vector<std::size_t>> byClock;
};

} // namespace vxlsync

#endif
