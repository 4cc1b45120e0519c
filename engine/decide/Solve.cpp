#include "decide/Solve.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace vxlsync
{

namespace
{

// Rooms and microphones move the peak of a correlation by more than its noise does: no measurement
// is taken for surer than this, in seconds and in seconds a second.
constexpr double surestOffsetError = 0.02e-3;
constexpr double surestSlopeError = 0.05e-6;
// Spread of the clocks of recorders before anything is measured, in seconds a second.
constexpr double clockSpread = 60e-6;
// Seconds within which every start lies, a third of a year; keeps the equations of starts defined.
constexpr double startSpreadSeconds = 1e7;
// Error that holds an unknown at zero: far below that of any measurement.
constexpr double heldError = 1e-10;
// A drift counts when it exceeds so many times its own error, and this much, in seconds a second,
// which nobody hears nor sees in a day.
constexpr double driftCertaintyErrors = 4.0;
constexpr double leastDrift = 0.2e-6;
// A measurement contradicts the rest when it misses by more than both of these.
constexpr double outlierErrors = 6.0;
constexpr double outlierSeconds = 0.7e-3;
// Keeps the scale of an equation finite.
constexpr double leastDiagonal = 1e-300;

// What earlier rounds have fixed.
struct Fixed {
    // By recording: its drift is none.
    std::vector<bool> isStill;
    // By measurement.
    std::vector<bool> isDropped;
};

double offsetErrorOf(const Measurement& measurement)
{
    return std::max(measurement.offsetError, surestOffsetError);
}

// Symmetric positive definite equations for the start (unknown 2 * i) and the drift (2 * i + 1) of
// each recording.
class Equations
{
public:
    explicit Equations(std::size_t recordings)
        : size(2 * recordings), matrix(size * size, 0.0), right(size, 0.0)
    {
    }

    // The sum of the unknowns, each times its factor, is `value` to the error.
    void add(const std::vector<std::pair<std::size_t, double>>& terms, double value, double error)
    {
        const double weight = 1.0 / (error * error);
        for (const auto& [row, factor] : terms) {
            right[row] += weight * factor * value;
            for (const auto& [column, other] : terms)
                at(row, column) += weight * factor * other;
        }
    }

    // Two points so far apart that their errors are independent say what offset and slope say
    // together.
    void add(const Measurement& m)
    {
        const double offsetError = offsetErrorOf(m);
        const double half = offsetError / std::max(m.slopeError, surestSlopeError);
        for (const double side : {-1.0, 1.0}) {
            const double first = m.middle + side * half;
            const double second = first - m.offset - m.slope * side * half;
            add({{2 * m.first, 1.0},
                 {2 * m.first + 1, first},
                 {2 * m.second, -1.0},
                 {2 * m.second + 1, -second}},
                second - first, offsetError * std::sqrt(2.0));
        }
    }

    // Answers the unknowns and leaves the inverse in the matrix.
    std::vector<double> solve(const Interrupt& interrupt)
    {
        // Unknowns are seconds and millionths; scaled to a unit diagonal they invert cleanly.
        std::vector<double> scale(size);
        for (std::size_t i = 0; i < size; ++i)
            scale[i] = 1.0 / std::sqrt(std::max(at(i, i), leastDiagonal));
        multiplyBy(scale);
        for (std::size_t pivot = 0; pivot < size; ++pivot) {
            interrupt.check();
            eliminate(pivot);
        }
        multiplyBy(scale);
        std::vector<double> unknowns(size, 0.0);
        for (std::size_t i = 0; i < size; ++i) {
            for (std::size_t j = 0; j < size; ++j)
                unknowns[i] += at(i, j) * right[j];
        }
        return unknowns;
    }

    // Requires that solve has run.
    double errorOf(std::size_t unknown) const
    {
        return std::sqrt(std::max(0.0, matrix[unknown * size + unknown]));
    }

private:
    double& at(std::size_t row, std::size_t column) { return matrix[row * size + column]; }

    // Rows and columns by the scale.
    void multiplyBy(const std::vector<double>& scale)
    {
        for (std::size_t i = 0; i < size; ++i) {
            for (std::size_t j = 0; j < size; ++j)
                at(i, j) *= scale[i] * scale[j];
        }
    }

    // One step of the inversion in place.
    void eliminate(std::size_t pivot)
    {
        const double inverse = 1.0 / at(pivot, pivot);
        at(pivot, pivot) = 1.0;
        for (std::size_t j = 0; j < size; ++j)
            at(pivot, j) *= inverse;
        for (std::size_t i = 0; i < size; ++i) {
            const double factor = at(i, pivot);
            if (i == pivot || factor == 0.0) continue;
            at(i, pivot) = 0.0;
            for (std::size_t j = 0; j < size; ++j)
                at(i, j) -= factor * at(pivot, j);
        }
    }

    std::size_t size;
    std::vector<double> matrix;
    std::vector<double> right;
};

// What is known before anything is measured.
Equations startedEquations(std::size_t reference, const std::vector<bool>& isStill)
{
    const std::size_t count = isStill.size();
    Equations equations(count);
    equations.add({{2 * reference, 1.0}}, 0.0, heldError);
    for (std::size_t i = 0; i < count; ++i)
        equations.add({{2 * i, 1.0}}, 0.0, startSpreadSeconds);
    for (std::size_t i = 0; i < count; ++i)
        equations.add({{2 * i + 1, 1.0}}, 0.0, isStill[i] ? heldError : clockSpread);
    return equations;
}

std::vector<Placement> placementsFor(std::size_t reference,
                                     const std::vector<Measurement>& measurements,
                                     const Fixed& fixed, const Interrupt& interrupt)
{
    Equations equations = startedEquations(reference, fixed.isStill);
    for (std::size_t i = 0; i < measurements.size(); ++i) {
        if (!fixed.isDropped[i]) equations.add(measurements[i]);
    }
    const std::vector<double> unknowns = equations.solve(interrupt);
    std::vector<Placement> placements(fixed.isStill.size());
    for (std::size_t i = 0; i < placements.size(); ++i) {
        placements[i].start = unknowns[2 * i] - unknowns[2 * reference];
        placements[i].startError = equations.errorOf(2 * i);
        if (fixed.isStill[i]) continue;
        placements[i].drift = unknowns[2 * i + 1];
        placements[i].driftError = equations.errorOf(2 * i + 1);
    }
    return placements;
}

// True if the measurements that are left tie all recordings together without the one.
bool isTiedWithout(std::size_t without, std::size_t count,
                   const std::vector<Measurement>& measurements, const std::vector<bool>& isDropped)
{
    std::vector<std::size_t> parents(count);
    std::iota(parents.begin(), parents.end(), std::size_t{0});
    const auto rootOf = [&](std::size_t node) {
        while (parents[node] != node)
            node = parents[node];
        return node;
    };
    std::size_t pieces = count;
    for (std::size_t i = 0; i < measurements.size(); ++i) {
        if (isDropped[i] || i == without) continue;
        const std::size_t first = rootOf(measurements[i].first);
        const std::size_t second = rootOf(measurements[i].second);
        if (first == second) continue;
        parents[first] = second;
        --pieces;
    }
    return pieces == 1;
}

// How far the measurement misses the placements at its middle, against the most that it may.
double excessOf(const Measurement& measurement, const std::vector<Placement>& placements)
{
    const double miss = placements[measurement.first].at(measurement.middle) -
                        placements[measurement.second].at(measurement.middle - measurement.offset);
    return std::fabs(miss) / std::max(outlierSeconds, outlierErrors * offsetErrorOf(measurement));
}

// The measurement that contradicts the rest most, or their number if none does.
std::size_t worstOutlier(const std::vector<Measurement>& measurements,
                         const std::vector<Placement>& placements,
                         const std::vector<bool>& isDropped)
{
    std::size_t worst = measurements.size();
    double worstExcess = 1.0;
    for (std::size_t i = 0; i < measurements.size(); ++i) {
        if (isDropped[i]) continue;
        const double excess = excessOf(measurements[i], placements);
        if (excess > worstExcess && isTiedWithout(i, placements.size(), measurements, isDropped)) {
            worst = i;
            worstExcess = excess;
        }
    }
    return worst;
}

// The least certain of the drifts that are none, or the number of recordings if all that are left
// are some.
std::size_t leastCertainDrift(const std::vector<Placement>& placements,
                              const std::vector<bool>& isStill)
{
    std::size_t least = placements.size();
    double leastRatio = 1.0;
    for (std::size_t i = 0; i < placements.size(); ++i) {
        if (isStill[i]) continue;
        const double ratio = std::fabs(placements[i].drift) /
                             std::max(leastDrift, driftCertaintyErrors * placements[i].driftError);
        if (ratio < leastRatio) {
            least = i;
            leastRatio = ratio;
        }
    }
    return least;
}

} // namespace

Solution solve(std::size_t count, std::size_t reference,
               const std::vector<Measurement>& measurements, const Interrupt& interrupt)
{
    Fixed fixed;
    fixed.isStill.resize(count);
    fixed.isDropped.resize(measurements.size());
    fixed.isStill[reference] = true;
    // Each round fixes one thing, an outlier or a drift that is none, and solves again, since the
    // others may gain by it.
    for (;;) {
        std::vector<Placement> placements =
            placementsFor(reference, measurements, fixed, interrupt);
        const std::size_t outlier = worstOutlier(measurements, placements, fixed.isDropped);
        if (outlier < measurements.size()) {
            fixed.isDropped[outlier] = true;
            continue;
        }
        const std::size_t still = leastCertainDrift(placements, fixed.isStill);
        if (still == count) return {std::move(placements), std::move(fixed.isDropped)};
        fixed.isStill[still] = true;
    }
}

} // namespace vxlsync
