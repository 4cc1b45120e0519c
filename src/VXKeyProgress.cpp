#include "VXKeyProgress.h"

#include <algorithm>
#include <limits>

#include "VXClusterSync.h"

namespace VXS
{

VXKeyProgress::VXKeyProgress(VXProgress* newProgress, std::size_t newKeys, std::uint64_t newVotes)
    : progress(newProgress), keys(newKeys), votes(newVotes)
{
}

void VXKeyProgress::report()
{
    if (progress == nullptr) {
        nextReport = std::numeric_limits<std::uint64_t>::max();
        return;
    }
    nextReport = votesDone + votes / 256;
    const double share = static_cast<double>(votesDone) / static_cast<double>(votes);
    reportUpTo(static_cast<std::size_t>(share * static_cast<double>(keys)));
}

void VXKeyProgress::finish()
{
    if (progress != nullptr) reportUpTo(keys);
}

void VXKeyProgress::reportUpTo(std::size_t keysDone)
{
    const auto total = static_cast<float>(keys);
    for (; counter < std::min(keysDone, keys); ++counter) {
        const float share = static_cast<float>(counter + 1) * 100.0f / total;
        const auto percentage = static_cast<std::int32_t>(share);
        if (lastPercentage >= percentage) continue;
        progress->setFraction(static_cast<float>(percentage) / 100.0f);
        lastPercentage = percentage;
    }
}

} // namespace VXS
