#include "plain/Recording.h"

namespace plain
{

void Recording::add(const Landmark& landmark)
{
    stale = true;
    const std::int64_t offset = landmark.offset;
    landmarks[offset].push_back(landmark);
    if (offset >= last) last = offset;
    if (offset <= first) first = offset;
}

void Recording::countUp()
{
    if (!stale) return;
    std::int64_t total = 0;
    for (std::int64_t t = first; t <= last; ++t) {
        total += static_cast<std::int64_t>(landmarks[t].size());
        // Leaves a count of an earlier time as it is.
        counts.insert({t, total});
    }
    stale = false;
}

std::int64_t Recording::countBetween(std::int64_t start, std::int64_t end)
{
    if (stale) return -1;
    const std::int64_t before = static_cast<std::int64_t>(static_cast<std::uint64_t>(start) - 1u);
    if (before > end || first > end || before > last) return 0;
    const std::int64_t upper = last >= end ? counts[end] : counts[last];
    if (first >= start) return upper < 0 ? 0 : upper;
    const std::int64_t difference = upper - counts[before];
    return difference < 0 ? 0 : difference;
}

} // namespace plain
