#include "match/Windows.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vxlsync
{

namespace
{

// Long windows stand further out of chance, short ones let a short overlap have more than one.
struct LengthStep {
    double belowOverlapSeconds;
    double windowSeconds;
};
constexpr LengthStep lengthSteps[] = {{8.0, 1.0}, {20.0, 2.0}};
constexpr double longestWindowSeconds = 4.0;
// A window below the noise of either recording hardly counts, unless all are.
constexpr double leastWeight = 0.02;
// Weight up to which a window is a pause: one of the two recordings is all but silent in it.
constexpr double pauseWeight = 0.1;

double windowLength(double overlap)
{
    for (const LengthStep& step : lengthSteps) {
        if (overlap < step.belowOverlapSeconds) return std::min(step.windowSeconds, overlap);
    }
    return longestWindowSeconds;
}

std::size_t energyStepAt(const Prepared& recording, double seconds)
{
    const auto count = static_cast<std::int64_t>(recording.energy.size());
    return static_cast<std::size_t>(
        std::clamp<std::int64_t>(std::llround(seconds / energyStepSeconds), 0, count));
}

double meanEnergy(const Prepared& recording, double start, double end)
{
    const std::size_t from = energyStepAt(recording, start);
    const std::size_t to = energyStepAt(recording, end);
    if (to <= from) return 0.0;
    double sum = 0.0;
    for (std::size_t i = from; i < to; ++i)
        sum += static_cast<double>(recording.energy[i]);
    return sum / static_cast<double>(to - from);
}

// Share of a stretch's energy that is more than the recording's own noise.
double activityOf(const Prepared& recording, double start, double end)
{
    const double energy = meanEnergy(recording, start, end);
    if (energy <= 0.0) return 0.0;
    return std::max(0.0, 1.0 - recording.floor / energy);
}

// Share of one step's energy that is more than the recording's own noise; 0 beyond its end.
double activityOfStep(const Prepared& recording, std::size_t step)
{
    if (step >= recording.energy.size()) return 0.0;
    const auto energy = static_cast<double>(recording.energy[step]);
    return energy > recording.floor ? 1.0 - recording.floor / energy : 0.0;
}

// Step by step, since in the mean over a window a click is as loud as music.
double heardSecondsOf(const Prepared& first, const Prepared& second, const Overlap& overlap,
                      double offset)
{
    const std::size_t from = energyStepAt(first, overlap.start);
    const std::size_t to = energyStepAt(first, overlap.end);
    const std::size_t fromOfSecond = energyStepAt(second, overlap.start - offset);
    double steps = 0.0;
    for (std::size_t i = from; i < to; ++i)
        steps += activityOfStep(first, i) * activityOfStep(second, fromOfSecond + (i - from));
    return steps * energyStepSeconds;
}

} // namespace

double Windows::totalWeight() const
{
    return std::accumulate(weights.begin(), weights.end(), 0.0);
}

Windows placeWindows(const Prepared& first, const Prepared& second, double offset, std::size_t most)
{
    Windows windows;
    windows.overlap = overlapOf(first.seconds(), second.seconds(), offset);
    windows.seconds = windowLength(windows.overlap.seconds());
    windows.heardSeconds = heardSecondsOf(first, second, windows.overlap, offset);
    const double room = windows.overlap.seconds() - windows.seconds;
    const auto fitting = static_cast<std::size_t>(room / (windows.seconds / 2.0)) + 1;
    const std::size_t count = std::min(fitting, most);
    for (std::size_t i = 0; i < count; ++i) {
        const double shift = count == 1
                                 ? room / 2.0
                                 : room * static_cast<double>(i) / static_cast<double>(count - 1);
        windows.times.push_back(windows.overlap.start + windows.seconds / 2.0 + shift);
        const double start = windows.start(i);
        windows.weights.push_back(
            activityOf(first, start, start + windows.seconds) *
            activityOf(second, start - offset, start - offset + windows.seconds));
    }
    windows.activity = windows.totalWeight() / static_cast<double>(count);
    const double greatest = *std::max_element(windows.weights.begin(), windows.weights.end());
    for (double& weight : windows.weights) {
        const double share = greatest > 0.0 ? weight / greatest : 0.0;
        weight = leastWeight + (1.0 - leastWeight) * share;
    }
    return windows;
}

double chanceOfSum(const Windows& windows)
{
    const double squares = std::inner_product(windows.weights.begin(), windows.weights.end(),
                                              windows.weights.begin(), 0.0);
    return std::sqrt(squares * overlappedVariance);
}

double voiceOf(const AlignmentWindow& window)
{
    return std::max(0.0, window.weight - pauseWeight);
}

} // namespace vxlsync
