#include "match/Candidates.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "match/Overlap.h"

namespace vxlsync
{

namespace
{

// Peaks nearer to each other than this are one peak and its flanks.
constexpr double peakSpacingSeconds = 0.02;
// A pair has some million lags, and of so many values of noise one reaches about 5 times the rms.
constexpr double leastHeight = 5.2;
// Taken of the peaks: the highest, and the highest for the time shared. A handful each costs little
// to look at, and in trials the true place was among them wherever it could be told at all.
constexpr std::size_t bestByHeight = 4;
constexpr std::size_t bestByShare = 3;
// A strong peak may be one of many equal ones, where the music is a loop: heights in units of the
// rms, and against the highest.
constexpr double strongHeight = 9.0;
constexpr double nearBest = 0.4;
// More turns of a loop tell nothing new.
constexpr std::size_t mostCandidates = 24;

struct Peak {
    std::int64_t lag;
    // In units of the root mean square.
    double height;
    // Height for each second shared and for the root of it. A short overlap is a low peak.
    double byShare;
    double byRoot;

    double size() const { return std::fabs(height); }
};

// Puts the product of the phases into the space's spectrum and returns its energy.
double multiply(const Phases& first, const Phases& second, Spectrum& product)
{
    std::fill(product.begin(), product.end(), std::complex<float>(0.0f, 0.0f));
    double energy = 0.0;
    for (std::size_t at = 0; at < first.parts.size(); at += 2) {
        const auto a = static_cast<float>(first.parts[at]);
        const auto b = static_cast<float>(first.parts[at + 1]);
        const auto c = static_cast<float>(second.parts[at]);
        const auto d = static_cast<float>(second.parts[at + 1]);
        const std::complex<float> value(a * c + b * d, b * c - a * d);
        product[first.firstBin + at / 2] = value;
        energy += static_cast<double>(std::norm(value));
    }
    return energy;
}

// Two sounds of so many samples, correlated.
struct Correlated {
    const std::vector<float>& values;
    double rms;
    std::int64_t firstCount;
    std::int64_t secondCount;
    int rate;

    // Negative lags stand at the end.
    float at(std::int64_t lag) const
    {
        const auto length = static_cast<std::int64_t>(values.size());
        return values[static_cast<std::size_t>(lag < 0 ? lag + length : lag)];
    }

    Peak peakBetween(std::int64_t from, std::int64_t to) const
    {
        std::int64_t best = from;
        for (std::int64_t lag = from; lag <= to; ++lag) {
            if (std::fabs(at(lag)) > std::fabs(at(best))) best = lag;
        }
        const double shared = static_cast<double>(std::min(firstCount, secondCount + best) -
                                                  std::max<std::int64_t>(0, best)) /
                              rate;
        const double height = static_cast<double>(at(best)) / rms;
        return {best, height, std::fabs(height) / shared, std::fabs(height) / std::sqrt(shared)};
    }
};

// The peaks that stand out, in order of lag.
std::vector<Peak> peaksOf(const Correlated& correlated)
{
    const auto shortest = static_cast<std::int64_t>(shortestOverlapSeconds * correlated.rate);
    const auto spacing = static_cast<std::int64_t>(peakSpacingSeconds * correlated.rate);
    const std::int64_t highest = correlated.firstCount - shortest;
    std::vector<Peak> peaks;
    for (std::int64_t from = shortest - correlated.secondCount; from <= highest; from += spacing) {
        const Peak peak = correlated.peakBetween(from, std::min(highest, from + spacing - 1));
        if (peak.size() < leastHeight) continue;
        // The flank of a peak in the block before is no peak of its own.
        if (!peaks.empty() && peak.lag - peaks.back().lag < spacing) {
            if (peaks.back().size() >= peak.size()) continue;
            peaks.pop_back();
        }
        peaks.push_back(peak);
    }
    return peaks;
}

// Takes peaks out of a list, each once, until there are enough.
class Choice
{
public:
    explicit Choice(const std::vector<Peak>& newPeaks)
        : peaks(newPeaks), order(newPeaks.size()), isTaken(newPeaks.size(), false)
    {
    }

    // The `number` best by `measure`; of equal ones, the lower lags.
    void take(std::size_t number, double (*measure)(const Peak&))
    {
        std::iota(order.begin(), order.end(), std::size_t{0});
        const std::size_t count = std::min(number, order.size());
        std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count),
                          order.end(), [&](std::size_t left, std::size_t right) {
                              return std::pair(-measure(peaks[left]), left) <
                                     std::pair(-measure(peaks[right]), right);
                          });
        for (std::size_t i = 0; i < count; ++i) {
            if (isTaken[order[i]] || taken.size() >= mostCandidates) continue;
            isTaken[order[i]] = true;
            taken.push_back({peaks[order[i]].lag, peaks[order[i]].height});
        }
    }

    const std::vector<Candidate>& all() const { return taken; }

private:
    const std::vector<Peak>& peaks;
    std::vector<std::size_t> order;
    std::vector<bool> isTaken;
    std::vector<Candidate> taken;
};

std::vector<Candidate> choose(const std::vector<Peak>& peaks)
{
    if (peaks.empty()) return {};
    const auto bySize = [](const Peak& peak) { return peak.size(); };
    const auto byShare = [](const Peak& peak) { return peak.byShare; };
    const auto byRoot = [](const Peak& peak) { return peak.byRoot; };
    Choice choice(peaks);
    choice.take(bestByHeight, bySize);
    choice.take(bestByShare, byShare);
    choice.take(bestByShare, byRoot);

    const double best = std::fabs(choice.all().front().height);
    const auto strong = static_cast<std::size_t>(
        std::count_if(peaks.begin(), peaks.end(), [best](const Peak& peak) {
            return peak.size() >= strongHeight && peak.size() >= nearBest * best;
        }));
    choice.take(strong, bySize);
    choice.take(2 * std::min(strong, bestByHeight), byRoot);
    return choice.all();
}

} // namespace

std::vector<Candidate> findCandidates(const Phases& first, std::size_t firstSamples,
                                      const Phases& second, std::size_t secondSamples, int rate,
                                      CorrelationSpace& space)
{
    const auto shortest = static_cast<std::size_t>(shortestOverlapSeconds * rate);
    if (firstSamples < shortest || secondSamples < shortest) return {};
    if (first.parts.empty() || second.parts.empty()) return {};
    const double energy = multiply(first, second, space.spectrum);
    if (energy <= 0.0) return {};
    space.transform.inverse(space.spectrum.data(), space.samples.data());
    // A bin and its mirror image each add their energy.
    const double rms = std::sqrt(2.0 * energy);
    return choose(peaksOf({space.samples, rms, static_cast<std::int64_t>(firstSamples),
                           static_cast<std::int64_t>(secondSamples), rate}));
}

} // namespace vxlsync
