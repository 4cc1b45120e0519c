#include "Solve.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace vxlsync
{

namespace
{

// Rooms and microphones move the peak of a correlation by more than its noise does.
constexpr double leastOffsetError = 0.02e-3;
constexpr double leastSlopeError = 0.05e-6;
// Spread of the clocks of recorders before anything is measured.
constexpr double clockSpread = 60e-6;
// Seconds within which every start lies; keeps what no measurement ties from being undefined.
constexpr double anywhere = 1e7;
// Error that holds an unknown at zero.
constexpr double heldError = 1e-10;
// A drift counts when it exceeds so many times its own error, and this much.
constexpr double driftCertainty = 4.0;
constexpr double leastDrift = 0.2e-6;
// A measurement contradicts the rest when it misses by more than both of these.
constexpr double outlierErrors = 6.0;
constexpr double outlierSeconds = 0.7e-3;

// Symmetric positive definite system, solved with the inverse for the errors.
class Normal
{
public:
    explicit Normal(std::size_t newSize) : size(newSize), matrix(size * size, 0.0), right(size, 0.0)
    {
    }

    void add(const std::size_t* where, const double* factors, std::size_t count, double value,
             double error)
    {
        const double weight = 1.0 / (error * error);
        for (std::size_t i = 0; i < count; ++i) {
            right[where[i]] += weight * factors[i] * value;
            for (std::size_t j = 0; j < count; ++j)
                matrix[where[i] * size + where[j]] += weight * factors[i] * factors[j];
        }
    }

    // Answers the unknowns and leaves the inverse in the matrix.
    std::vector<double> run()
    {
        // Unknowns are seconds and millionths; scaled to a unit diagonal they invert cleanly.
        std::vector<double> scale(size);
        for (std::size_t i = 0; i < size; ++i)
            scale[i] = 1.0 / std::sqrt(std::max(matrix[i * size + i], 1e-300));
        for (std::size_t i = 0; i < size; ++i) {
            for (std::size_t j = 0; j < size; ++j)
                matrix[i * size + j] *= scale[i] * scale[j];
        }
        for (std::size_t pivot = 0; pivot < size; ++pivot) {
            const double inverse = 1.0 / matrix[pivot * size + pivot];
            matrix[pivot * size + pivot] = 1.0;
            for (std::size_t j = 0; j < size; ++j)
                matrix[pivot * size + j] *= inverse;
            for (std::size_t i = 0; i < size; ++i) {
                if (i == pivot) continue;
                const double factor = matrix[i * size + pivot];
                if (factor == 0.0) continue;
                matrix[i * size + pivot] = 0.0;
                for (std::size_t j = 0; j < size; ++j)
                    matrix[i * size + j] -= factor * matrix[pivot * size + j];
            }
        }
        std::vector<double> unknowns(size, 0.0);
        for (std::size_t i = 0; i < size; ++i) {
            for (std::size_t j = 0; j < size; ++j) {
                matrix[i * size + j] *= scale[i] * scale[j];
                unknowns[i] += matrix[i * size + j] * right[j];
            }
        }
        return unknowns;
    }

    double errorOf(std::size_t unknown) const
    {
        return std::sqrt(std::max(0.0, matrix[unknown * size + unknown]));
    }

private:
    std::size_t size;
    std::vector<double> matrix;
    std::vector<double> right;
};

bool tiesAll(std::size_t count, const std::vector<Measurement>& measurements,
             const std::vector<bool>& dropped, std::size_t without)
{
    std::vector<std::size_t> parent(count);
    std::iota(parent.begin(), parent.end(), std::size_t{0});
    const auto root = [&](std::size_t node) {
        while (parent[node] != node)
            node = parent[node];
        return node;
    };
    std::size_t pieces = count;
    for (std::size_t i = 0; i < measurements.size(); ++i) {
        if (dropped[i] || i == without) continue;
        const std::size_t left = root(measurements[i].first);
        const std::size_t right = root(measurements[i].second);
        if (left == right) continue;
        parent[left] = right;
        --pieces;
    }
    return pieces == 1;
}

double offsetErrorOf(const Measurement& measurement)
{
    return std::max(measurement.offsetError, leastOffsetError);
}

} // namespace

Solution solve(std::size_t count, std::size_t reference,
               const std::vector<Measurement>& measurements)
{
    Solution solution;
    solution.placements.resize(count);
    solution.residuals.assign(measurements.size(), 0.0);
    solution.dropped.assign(measurements.size(), false);
    std::vector<bool> still(count, false);
    still[reference] = true;

    // Each round fixes one thing, a drift that is none or an outlier, and solves again.
    for (std::size_t round = 0; round < 4 * count + measurements.size() + 2; ++round) {
        Normal normal(2 * count);
        const auto hold = [&](std::size_t unknown, double error) {
            const double one = 1.0;
            normal.add(&unknown, &one, 1, 0.0, error);
        };
        hold(2 * reference, heldError);
        for (std::size_t i = 0; i < count; ++i)
            hold(2 * i, anywhere);
        for (std::size_t i = 0; i < count; ++i)
            hold(2 * i + 1, still[i] ? heldError : clockSpread);
        for (std::size_t i = 0; i < measurements.size(); ++i) {
            if (solution.dropped[i]) continue;
            const Measurement& m = measurements[i];
            const double offsetError = offsetErrorOf(m);
            const double half = offsetError / std::max(m.slopeError, leastSlopeError);
            // Two points so far apart that their errors are independent say what offset and slope
            // say together.
            for (const double side : {-1.0, 1.0}) {
                const double first = m.middle + side * half;
                const double second = first - m.offset - m.slope * side * half;
                const std::size_t where[] = {2 * m.first, 2 * m.first + 1, 2 * m.second,
                                             2 * m.second + 1};
                const double factors[] = {1.0, first, -1.0, -second};
                normal.add(where, factors, 4, second - first, offsetError * std::sqrt(2.0));
            }
        }
        const std::vector<double> unknowns = normal.run();
        for (std::size_t i = 0; i < count; ++i) {
            Placement& place = solution.placements[i];
            place.start = unknowns[2 * i] - unknowns[2 * reference];
            place.drift = still[i] ? 0.0 : unknowns[2 * i + 1];
            place.startError = normal.errorOf(2 * i);
            place.driftError = still[i] ? 0.0 : normal.errorOf(2 * i + 1);
        }

        std::size_t worst = measurements.size();
        double worstExcess = 1.0;
        for (std::size_t i = 0; i < measurements.size(); ++i) {
            const Measurement& m = measurements[i];
            const double miss = solution.placements[m.first].at(m.middle) -
                                solution.placements[m.second].at(m.middle - m.offset);
            solution.residuals[i] = miss;
            if (solution.dropped[i]) continue;
            const double limit = std::max(outlierSeconds, outlierErrors * offsetErrorOf(m));
            const double excess = std::fabs(miss) / limit;
            if (excess > worstExcess && tiesAll(count, measurements, solution.dropped, i)) {
                worst = i;
                worstExcess = excess;
            }
        }
        if (worst < measurements.size()) {
            solution.dropped[worst] = true;
            continue;
        }

        // The least certain drift that is no drift goes first, since the others may gain by it.
        std::size_t none = count;
        double leastRatio = 1.0;
        for (std::size_t i = 0; i < count; ++i) {
            if (still[i]) continue;
            const Placement& place = solution.placements[i];
            const double ratio =
                std::fabs(place.drift) / std::max(leastDrift, driftCertainty * place.driftError);
            if (ratio < leastRatio) {
                none = i;
                leastRatio = ratio;
            }
        }
        if (none == count) break;
        still[none] = true;
    }
    return solution;
}

} // namespace vxlsync
