#include "SyncProgress.h"

#include <algorithm>
#include <array>

#include "ProgressBar.h"

namespace vxlsync
{

namespace
{

// Where each stage begins, as a share of the whole: filing and comparing the landmarks, stage 1,
// takes nearly all of the time, and its second pass most of that.
constexpr std::array<float, 6> stageStarts{0.0f, 0.02f, 0.9f, 0.96f, 0.98f, 0.99f};
constexpr float secondPassStart = 0.2f;

} // namespace

SyncProgress::SyncProgress(ProgressBar& newBar) : bar(newBar) {}

void SyncProgress::setStage(int stage)
{
    const int last = static_cast<int>(stageStarts.size()) - 1;
    show(stageStarts[static_cast<std::size_t>(std::clamp(stage, 0, last))]);
}

void SyncProgress::setFraction(float fraction)
{
    if (fraction < lastFraction) inSecondPass = true;
    lastFraction = fraction;
    const float start = inSecondPass ? secondPassStart : stageStarts[1];
    const float end = inSecondPass ? stageStarts[2] : secondPassStart;
    show(start + fraction * (end - start));
}

void SyncProgress::show(float share)
{
    shownShare = std::max(shownShare, share);
    bar.show("Comparing", shownShare);
}

} // namespace vxlsync
