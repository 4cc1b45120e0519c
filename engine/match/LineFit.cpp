#include "match/LineFit.h"

#include <algorithm>
#include <cmath>

namespace vxlsync
{

namespace
{

// Peaks are looked for this much further than the line is wide, so that one at its edge has flanks.
constexpr double peakMargin = 1.5;
// The variance of a peak's place falls with the square of its height over the noise. No window
// counts for more than this, or the one with the cleanest sound would outvote all others.
constexpr double greatestTrust = 1e4;
// Windows come and go as the line moves; after a few rounds they no longer do.
constexpr int fitRounds = 6;
// Windows that miss the line by more standard deviations are off it.
constexpr double offLineDeviations = 3.0;
// The median of deviations of a normal distribution times this is the standard deviation.
constexpr double deviationsPerMedian = 1.4826;
// Standard deviation, in seconds, that windows are taken to have at least and at most: an eighth of
// a sample of 4 kHz, so that the few best windows do not throw out all others; and a third of what
// counts as on the line.
constexpr double leastSpread = 0.03e-3;
constexpr double greatestSpread = onLineSeconds / 3.0;
// A slope out of few windows is noise; a pull to the present one, as if so small a share of the
// windows stood on it at either end of the overlap, holds it. The constant keeps the system soluble
// where the overlap is nothing.
constexpr double slopeHold = 1e-3;
constexpr double leastHold = 1e-9;
constexpr std::size_t fewestForSlope = 3;
// Half-overlapped windows share half their sound.
constexpr double sharedSound = 2.0;
// Interpolation finds no peak better than to three microseconds, in seconds squared.
constexpr double leastVariance = 1e-11;
// Clocks of recorders are hardly ever further apart than 170 millionths; a fifth more leaves a line
// at the end of that range room to be measured.
constexpr double steepestSlope = 1.2 * 170e-6;
// Error of the slope before anything is known of it.
constexpr double unknownSlope = 1.0;

// A window's peak: where it stands, and how much it counts.
struct Sight {
    // Seconds from the middle of the overlap, and from the line.
    double time;
    double deviation;
    double trust;
};

// Of windows that stand out of the noise.
std::vector<Sight> sightsOf(const Rows& rows, const Windows& windows, const Line& about)
{
    const auto near = static_cast<std::int64_t>(std::ceil(onLineSeconds * peakMargin * rows.rate));
    std::vector<Sight> sights;
    for (std::size_t k = 0; k < rows.count(); ++k) {
        const RowPeak peak = peakOf(rows.row(k), rows.reach - near, rows.reach + near);
        const double excess = peak.value / rows.noise;
        if (excess <= clearOfNoise) continue;
        sights.push_back({windows.times[k] - about.middle, rows.secondsAt(peak.position),
                          std::min(excess * excess, greatestTrust)});
    }
    return sights;
}

// What is to be added to the line, and how sure that is.
struct Shift {
    double offset = 0.0;
    double slope = 0.0;
    double offsetError = onLineSeconds;
    double slopeError = unknownSlope;
    // What windows may miss it by, as a standard deviation, to be counted in the next round.
    double spread = onLineSeconds;

    double missOf(const Sight& sight) const
    {
        return std::fabs(sight.deviation - offset - slope * sight.time);
    }
};

// The weighted sums of a straight line's normal equations.
struct Sums {
    double trust = 0.0;
    double time = 0.0;
    double square = 0.0;
    double deviation = 0.0;
    double product = 0.0;

    void add(const Sight& sight)
    {
        trust += sight.trust;
        time += sight.trust * sight.time;
        square += sight.trust * sight.time * sight.time;
        deviation += sight.trust * sight.deviation;
        product += sight.trust * sight.deviation * sight.time;
    }
};

double median(std::vector<double>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// One round: the line through the sights that the last one leaves. Equal to the last one if it
// leaves none.
Shift fitOnce(const std::vector<Sight>& sights, const Shift& last, double halfOverlap)
{
    Sums sums;
    std::vector<double> misses;
    for (const Sight& sight : sights) {
        const double miss = last.missOf(sight);
        if (miss > offLineDeviations * last.spread) continue;
        sums.add(sight);
        misses.push_back(miss);
    }
    if (misses.empty()) return last;
    const double hold = sums.trust * slopeHold * halfOverlap * halfOverlap + leastHold;
    const double square = sums.square + hold;
    // Above 0: the hold makes it so, and without it it would not be negative.
    const double determinant = sums.trust * square - sums.time * sums.time;
    Shift shift;
    shift.offset = (square * sums.deviation - sums.time * sums.product) / determinant;
    if (misses.size() >= fewestForSlope)
        shift.slope = (sums.trust * sums.product - sums.time * sums.deviation) / determinant;
    const auto count = static_cast<double>(misses.size());
    const double spread = deviationsPerMedian * median(misses);
    const double variancePerTrust =
        sharedSound * std::max(spread * spread, leastVariance) * sums.trust / count;
    shift.offsetError = std::sqrt(variancePerTrust * square / determinant);
    shift.slopeError = std::sqrt(variancePerTrust * sums.trust / determinant);
    shift.spread = std::clamp(spread, leastSpread, greatestSpread);
    return shift;
}

} // namespace

FittedLine fitLine(const Rows& rows, const Windows& windows, const Line& about)
{
    const std::vector<Sight> sights = sightsOf(rows, windows, about);
    Shift shift;
    for (int round = 0; round < fitRounds; ++round)
        shift = fitOnce(sights, shift, windows.overlap.seconds() / 2.0);
    Line line = about;
    line.offset += shift.offset;
    line.slope = std::clamp(line.slope + shift.slope, -steepestSlope, steepestSlope);
    return {line, shift.offsetError, shift.slopeError};
}

} // namespace vxlsync
