#include "decide/DeviceClocks.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace vxlsync
{

namespace
{

// Seconds by which two recordings of one device may seem to overlap: clocks and lengths of files
// are rounded, and a device that splits its recording may write the seam into both files.
constexpr double deviceToleranceSeconds = 0.5;
// Two that seem to be of one device and overlap all the same: as much as half a minute of sound
// that agrees fully. That much more tells two cameras of one make in one folder.
constexpr double worthOfLikelyDevice = 12.0;
// A clock is right to a second, and the start of a take is told to another ...
constexpr double nearClockSeconds = 2.0;
// ... and from here on it says something else.
constexpr double farClockSeconds = 5.0;
// A place that a clock says too is worth five seconds of sound more; one that it does not, fifteen
// less, since few offsets that chance makes are within two seconds and most are not.
constexpr double worthOfNearClock = 2.0;
constexpr double worthOfFarClock = 6.0;

// By recording; numbers are given in order of the recordings.
std::vector<std::size_t> numbered(const Constraints& constraints, std::vector<bool>& isStated)
{
    std::map<std::pair<bool, std::string>, std::size_t> numbers;
    std::vector<std::size_t> devices(constraints.durations.size(), 0);
    isStated.assign(1, false);
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const bool isOfUser = !constraints.devices[i].empty();
        const std::string likely =
            constraints.likelyDevices.empty() ? std::string() : constraints.likelyDevices[i];
        const std::string& name = isOfUser ? constraints.devices[i] : likely;
        if (name.empty()) continue;
        const auto [entry, isNew] =
            numbers.emplace(std::make_pair(isOfUser, name), isStated.size());
        if (isNew) isStated.push_back(isOfUser);
        devices[i] = entry->second;
    }
    return devices;
}

} // namespace

DeviceClocks::DeviceClocks(const Constraints& newConstraints)
    : constraints(newConstraints),
      deviceOf(numbered(newConstraints, isStated)),
      byClock(isStated.size())
{
    if (constraints.clockStarts.empty()) return;
    for (std::size_t i = 0; i < deviceOf.size(); ++i) {
        if (deviceOf[i] != 0 && constraints.clockStarts[i]) byClock[deviceOf[i]].push_back(i);
    }
    for (std::vector<std::size_t>& list : byClock) {
        std::stable_sort(list.begin(), list.end(), [&](std::size_t left, std::size_t right) {
            return *constraints.clockStarts[left] < *constraints.clockStarts[right];
        });
    }
}

bool DeviceClocks::isTwice(const std::vector<ImpliedPair>& pairs) const
{
    return std::any_of(pairs.begin(), pairs.end(), [&](const ImpliedPair& pair) {
        const std::size_t device = deviceOf[pair.first];
        return pair.line.overlap > deviceToleranceSeconds && isStated[device] &&
               device == deviceOf[pair.second];
    });
}

bool DeviceClocks::haveStarts(std::size_t first, std::size_t second) const
{
    return !constraints.clockStarts.empty() && constraints.clockStarts[first] &&
           constraints.clockStarts[second];
}

double DeviceClocks::missOf(const ImpliedPair& pair) const
{
    const double byClockSeconds =
        *constraints.clockStarts[pair.second] - *constraints.clockStarts[pair.first];
    return std::fabs(byClockSeconds - pair.line.offset);
}

std::map<std::size_t, DeviceClocks::Voice>
DeviceClocks::voicesOf(const std::vector<ImpliedPair>& pairs) const
{
    std::map<std::size_t, Voice> voices;
    for (const ImpliedPair& pair : pairs) {
        const std::size_t device = deviceOf[pair.first];
        if (device == 0 || device != deviceOf[pair.second]) continue;
        Voice& voice = voices[device];
        voice.into = pair.first;
        voice.from = pair.second;
        voice.isTwice |= pair.line.overlap > deviceToleranceSeconds;
        if (!haveStarts(pair.first, pair.second)) continue;
        const double miss = missOf(pair);
        if (miss <= nearClockSeconds) ++voice.near;
        if (miss >= farClockSeconds) ++voice.far;
    }
    return voices;
}

int DeviceClocks::standingOf(std::size_t device, std::size_t group, const Groups& groups) const
{
    int standing = 0;
    const std::size_t* last = nullptr;
    for (const std::size_t& recording : byClock[device]) {
        if (groups.groupOf(recording) != group) continue;
        if (last != nullptr) {
            const double placed = groups.placeOf(recording).start - groups.placeOf(*last).start;
            const double clocked =
                *constraints.clockStarts[recording] - *constraints.clockStarts[*last];
            standing += std::fabs(placed - clocked) < farClockSeconds ? 1 : -1;
        }
        last = &recording;
    }
    return standing;
}

bool DeviceClocks::isTrusted(std::size_t device, const Voice& voice, const Groups& groups) const
{
    return standingOf(device, groups.groupOf(voice.into), groups) +
               standingOf(device, groups.groupOf(voice.from), groups) >=
           0;
}

Evidence DeviceClocks::weigh(const std::vector<ImpliedPair>& pairs, const Groups& groups) const
{
    Evidence evidence;
    for (const auto& [device, voice] : voicesOf(pairs)) {
        if (voice.isTwice && !isStated[device]) evidence.against += worthOfLikelyDevice;
        if (voice.near + voice.far == 0 || !isTrusted(device, voice, groups)) continue;
        // Once for a device, and not for each of its recordings: they all go by one clock.
        if (voice.near >= voice.far)
            evidence.support += worthOfNearClock;
        else
            evidence.against += worthOfFarClock;
    }
    return evidence;
}

bool DeviceClocks::backs(const std::vector<ImpliedPair>& pairs, const Groups& groups) const
{
    bool isBacked = false;
    for (const auto& [device, voice] : voicesOf(pairs)) {
        if (voice.far > 0) return false;
        const int standing = standingOf(device, groups.groupOf(voice.into), groups) +
                             standingOf(device, groups.groupOf(voice.from), groups);
        isBacked |= voice.near > 0 && standing > 0;
    }
    return isBacked;
}

} // namespace vxlsync
