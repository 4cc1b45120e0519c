#include "Candidates.h"

#include <algorithm>
#include <cmath>

namespace vxlsync
{

namespace
{

// Peaks nearer to each other than this are one peak and its flanks.
constexpr double peakSpacing = 0.02;
// A pair has some million lags, and of so many values of noise one reaches about 5 times the rms.
constexpr double leastHeight = 5.2;
constexpr std::size_t bestByHeight = 4;
constexpr std::size_t bestByShare = 3;
// A strong peak may be one of many equal ones, where the music is a loop.
constexpr double strongHeight = 9.0;
constexpr double nearBest = 0.4;
constexpr std::size_t mostCandidates = 24;

struct Peak {
    std::int64_t lag;
    float value;
    double byShare;
    double byRoot;
};

} // namespace

std::vector<Candidate> findCandidates(const Phases& first, std::size_t firstSamples,
                                      const Phases& second, std::size_t secondSamples, int rate,
                                      Transform& transform, CandidateScratch& scratch)
{
    const std::size_t length = first.length;
    const auto shortest = static_cast<std::int64_t>(shortestOverlap * rate);
    const auto firstCount = static_cast<std::int64_t>(firstSamples);
    const auto secondCount = static_cast<std::int64_t>(secondSamples);
    if (firstCount < shortest || secondCount < shortest) return {};

    scratch.product.assign(transform.bins(), {0.0F, 0.0F});
    scratch.correlation.resize(length);
    double energy = 0.0;
    for (std::size_t at = 0; at + 1 < first.parts.size(); at += 2) {
        const auto a = static_cast<float>(first.parts[at]);
        const auto b = static_cast<float>(first.parts[at + 1]);
        const auto c = static_cast<float>(second.parts[at]);
        const auto d = static_cast<float>(second.parts[at + 1]);
        const std::complex<float> value(a * c + b * d, b * c - a * d);
        scratch.product[first.firstBin + at / 2] = value;
        energy += std::norm(value);
    }
    if (energy <= 0.0) return {};
    transform.inverse(scratch.product.data(), scratch.correlation.data());
    const double rms = std::sqrt(2.0 * energy);

    const std::int64_t lowest = shortest - secondCount;
    const std::int64_t highest = firstCount - shortest;
    const auto spacing = static_cast<std::int64_t>(peakSpacing * rate);
    std::vector<Peak> peaks;
    for (std::int64_t start = lowest; start <= highest; start += spacing) {
        const std::int64_t end = std::min(highest, start + spacing - 1);
        std::int64_t best = start;
        float bestValue = 0.0F;
        for (std::int64_t lag = start; lag <= end; ++lag) {
            const float value = scratch.correlation[static_cast<std::size_t>(
                lag < 0 ? lag + static_cast<std::int64_t>(length) : lag)];
            if (std::fabs(value) > std::fabs(bestValue)) {
                best = lag;
                bestValue = value;
            }
        }
        if (std::fabs(bestValue) < leastHeight * rms) continue;
        const double shared = static_cast<double>(std::min(firstCount, secondCount + best) -
                                                  std::max<std::int64_t>(0, best)) /
                              rate;
        const double height = std::fabs(bestValue) / rms;
        // The flank of a peak in the block before is no peak of its own.
        if (!peaks.empty() && best - peaks.back().lag < spacing) {
            if (std::fabs(peaks.back().value) >= std::fabs(bestValue)) continue;
            peaks.pop_back();
        }
        peaks.push_back({best, bestValue, height / shared, height / std::sqrt(shared)});
    }

    std::vector<std::size_t> order(peaks.size());
    std::vector<bool> chosen(peaks.size(), false);
    std::vector<Candidate> result;
    const auto take = [&](auto better, std::size_t number) {
        for (std::size_t i = 0; i < order.size(); ++i)
            order[i] = i;
        const std::size_t count = std::min(number, order.size());
        std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count),
                          order.end(), [&](std::size_t left, std::size_t right) {
                              const double l = better(peaks[left]);
                              const double r = better(peaks[right]);
                              return l != r ? l > r : left < right;
                          });
        for (std::size_t i = 0; i < count; ++i) {
            if (chosen[order[i]] || result.size() >= mostCandidates) continue;
            chosen[order[i]] = true;
            const Peak& peak = peaks[order[i]];
            result.push_back({peak.lag, peak.value / rms});
        }
    };
    const auto height = [](const Peak& peak) { return static_cast<double>(std::fabs(peak.value)); };
    take(height, bestByHeight);
    take([](const Peak& peak) { return peak.byShare; }, bestByShare);
    take([](const Peak& peak) { return peak.byRoot; }, bestByShare);
    if (!result.empty()) {
        const double best = std::fabs(result.front().height);
        std::size_t strong = 0;
        for (const Peak& peak : peaks) {
            const double value = std::fabs(peak.value) / rms;
            if (value >= strongHeight && value >= nearBest * best) ++strong;
        }
        take(height, strong);
        strong = std::min<std::size_t>(strong, bestByHeight);
        take([](const Peak& peak) { return peak.byRoot; }, 2 * strong);
    }
    return result;
}

} // namespace vxlsync
