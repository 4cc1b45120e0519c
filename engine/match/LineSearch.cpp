#include "match/LineSearch.h"

#include <algorithm>
#include <cmath>

namespace vxlsync
{

namespace
{

// Between two slopes that are tried the line's ends move by so many samples. Each lag takes the
// best of its neighbours, so that the true line is not stepped over.
constexpr double samplesPerSlopeStep = 2.0;

struct Best {
    // Below any sum that is looked for.
    double sum = -1.0;
    Line line;
};

// The rows with each lag as high as the highest of it and its neighbours, times the windows'
// weights.
std::vector<float> widened(const Rows& rows, const Windows& windows, float sign)
{
    std::vector<float> wide(rows.values.size());
    const std::size_t width = rows.width();
    for (std::size_t k = 0; k < rows.count(); ++k) {
        const float* in = rows.row(k);
        float* out = wide.data() + k * width;
        const auto weight = static_cast<float>(windows.weights[k]);
        for (std::size_t i = 0; i < width; ++i) {
            float highest = sign * in[i];
            if (i > 0) highest = std::max(highest, sign * in[i - 1]);
            if (i + 1 < width) highest = std::max(highest, sign * in[i + 1]);
            out[i] = highest * weight;
        }
    }
    return wide;
}

// Adds the rows up along a slope. Sums go from -reach to reach about the line.
void sumAlong(double slope, const std::vector<float>& wide, const Rows& rows,
              const Windows& windows, const Line& about, std::vector<float>& sums)
{
    std::fill(sums.begin(), sums.end(), 0.0f);
    const auto count = static_cast<std::int64_t>(sums.size());
    const auto width = static_cast<std::int64_t>(rows.width());
    for (std::size_t k = 0; k < rows.count(); ++k) {
        const double shift = slope * (windows.times[k] - about.middle) * rows.rate;
        const std::int64_t at = std::llround(shift) + (width - count) / 2;
        const std::int64_t from = std::max<std::int64_t>(0, -at);
        const std::int64_t to = std::min(count, width - at);
        const float* row = wide.data() + static_cast<std::int64_t>(k) * width + at;
        for (std::int64_t i = from; i < to; ++i)
            sums[static_cast<std::size_t>(i)] += row[i];
    }
}

Best searchUpright(const Rows& rows, const Windows& windows, const Line& about,
                   const SearchRange& range, float sign, const Interrupt& interrupt)
{
    const std::vector<float> wide = widened(rows, windows, sign);
    const auto reach = static_cast<std::int64_t>(range.offset * rows.rate);
    const double farthest = range.slope * windows.overlap.seconds() / 2.0 * rows.rate;
    const auto steps = static_cast<std::int64_t>(std::ceil(farthest / samplesPerSlopeStep));
    std::vector<float> sums(static_cast<std::size_t>(2 * reach + 1));
    Best best;
    best.line = about;
    for (std::int64_t step = -steps; step <= steps; ++step) {
        interrupt.check();
        const double slope =
            steps == 0 ? 0.0 : range.slope * static_cast<double>(step) / static_cast<double>(steps);
        sumAlong(slope, wide, rows, windows, about, sums);
        const auto greatest = std::max_element(sums.begin(), sums.end());
        // Sums that are no numbers are no better than none.
        if (static_cast<double>(*greatest) > best.sum) {
            best.sum = static_cast<double>(*greatest);
            best.line.offset =
                about.offset + static_cast<double>(greatest - sums.begin() - reach) / rows.rate;
            best.line.slope = about.slope + slope;
        }
    }
    return best;
}

} // namespace

FoundLine searchLine(const Rows& rows, const Windows& windows, const Line& about,
                     const SearchRange& range, const Interrupt& interrupt)
{
    Best best = searchUpright(rows, windows, about, range, 1.0f, interrupt);
    if (range.isEitherWayUp) {
        Best turned = searchUpright(rows, windows, about, range, -1.0f, interrupt);
        turned.line.sign = -about.sign;
        if (turned.sum > best.sum) best = turned;
    }
    return {best.line, best.sum / (rows.noise * chanceOfSum(windows))};
}

} // namespace vxlsync
