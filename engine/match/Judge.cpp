#include "match/Judge.h"

#include <algorithm>
#include <cmath>

namespace vxlsync
{

namespace
{

// A window's coherence on the line is looked for this near to it, in seconds: what is left of
// wind, air and the fit's own error.
constexpr double tightSeconds = 0.0003;
// Where an honest peak has fallen off, in seconds from it.
constexpr double nearestNeighbourSeconds = 0.0015;
// A band agrees if its sum is so many times what chance gives: of the bands of a pair, chance lets
// none pass.
constexpr double clearBand = 4.0;
// Of the cosine of a phase that may be any.
constexpr double cosineVariance = 0.5;

AlignmentWindow judgeWindow(const Rows& rows, const Windows& windows, std::size_t index)
{
    const auto near = std::lround(onLineSeconds * rows.rate);
    const auto tight = static_cast<std::int64_t>(std::ceil(tightSeconds * rows.rate));
    const float* row = rows.row(index);
    AlignmentWindow window;
    window.time = windows.times[index];
    window.weight = windows.weights[index];
    window.coherence = peakOf(row, rows.reach - tight, rows.reach + tight).value;
    const RowPeak own = peakOf(row, 0, 2 * rows.reach);
    window.deviation = rows.secondsAt(own.position);
    window.ownCoherence = own.value;
    window.agrees = std::fabs(window.deviation) <= static_cast<double>(near) / rows.rate &&
                    window.coherence > clearOfNoise * rows.noise;
    return window;
}

// Weighted sum of all rows.
std::vector<double> stackOf(const Rows& rows, const Windows& windows)
{
    std::vector<double> stack(rows.width(), 0.0);
    for (std::size_t k = 0; k < rows.count(); ++k) {
        const float* row = rows.row(k);
        for (std::size_t i = 0; i < stack.size(); ++i)
            stack[i] += windows.weights[k] * static_cast<double>(row[i]);
    }
    return stack;
}

void judgeStack(const Rows& rows, const Windows& windows, Alignment& alignment)
{
    const std::vector<double> stack = stackOf(rows, windows);
    const auto tight = static_cast<std::int64_t>(std::ceil(tightSeconds * rows.rate));
    const auto nearest = static_cast<std::int64_t>(nearestNeighbourSeconds * rows.rate);
    double onIt = 0.0;
    double beside = 0.0;
    for (std::int64_t lag = -rows.reach; lag <= rows.reach; ++lag) {
        const double value = stack[static_cast<std::size_t>(lag + rows.reach)];
        if (std::abs(lag) <= tight) onIt = std::max(onIt, value);
        if (std::abs(lag) >= nearest) beside = std::max(beside, std::fabs(value));
    }
    const double chance = rows.noise * chanceOfSum(windows);
    alignment.significance = onIt / chance;
    alignment.fullSignificance = windows.totalWeight() / chance;
    alignment.sharpness = beside > 0.0 ? onIt / beside : 0.0;
}

int countAgreeing(const std::vector<BandAgreement>& bands, double sign)
{
    return static_cast<int>(
        std::count_if(bands.begin(), bands.end(), [sign](const BandAgreement& band) {
            const double variance = cosineVariance * overlappedVariance * band.squares;
            return sign * band.sum > clearBand * std::sqrt(variance);
        }));
}

void judgeWindows(const Rows& rows, const Windows& windows, Alignment& alignment)
{
    double sum = 0.0;
    double agreeing = 0.0;
    double asked = 0.0;
    for (std::size_t k = 0; k < rows.count(); ++k) {
        const AlignmentWindow window = judgeWindow(rows, windows, k);
        sum += window.weight * window.coherence;
        asked += voiceOf(window);
        if (window.agrees) agreeing += voiceOf(window);
        alignment.windows[k] = window;
    }
    alignment.coherence = sum / windows.totalWeight();
    alignment.agreement = asked > 0.0 ? agreeing / asked : 0.0;
}

} // namespace

Alignment describeLine(const Windows& windows, const Line& line)
{
    Alignment alignment;
    alignment.middle = line.middle;
    alignment.offset = line.offset;
    alignment.slope = line.slope;
    alignment.sign = line.sign;
    alignment.start = windows.overlap.start;
    alignment.end = windows.overlap.end;
    alignment.activity = windows.activity;
    alignment.heardSeconds = windows.heardSeconds;
    alignment.windows.resize(windows.count());
    for (std::size_t i = 0; i < windows.count(); ++i) {
        alignment.windows[i].time = windows.times[i];
        alignment.windows[i].weight = windows.weights[i];
    }
    return alignment;
}

Alignment judgeLine(const Rows& rows, const Windows& windows, const FittedLine& fitted)
{
    Alignment alignment = describeLine(windows, fitted.line);
    alignment.offsetError = fitted.offsetError;
    alignment.slopeError = fitted.slopeError;
    judgeWindows(rows, windows, alignment);
    judgeStack(rows, windows, alignment);
    alignment.bands = countAgreeing(rows.bands, fitted.line.sign);
    alignment.allBands = static_cast<int>(rows.bands.size());
    return alignment;
}

} // namespace vxlsync
