#include "Align.h"

#include <algorithm>
#include <cmath>

#include "Prepare.h"

namespace vxlsync
{

namespace
{

constexpr double bandWidth = 100.0;
constexpr double energyStep = 0.1;
// A peak this near to the line is on the line.
constexpr double onLine = 0.001;
// Where an honest peak has fallen off, and how far echoes of pure tones reach.
constexpr double nearestNeighbour = 0.0015;
constexpr double farthestNeighbour = 0.05;
// Clocks of recorders are hardly ever further apart.
constexpr double steepest = 170e-6;
// A slope that blurs the longest window by less than a tenth of a sample.
constexpr double gentle = 3e-6;
// Weight of a window in which one recording is silent.
constexpr double pauseWeight = 0.1;
// A line that moved by less needs no further round.
constexpr double settled = 0.1e-3;

double windowLength(double overlap)
{
    if (overlap < 8.0) return 1.0;
    return overlap < 20.0 ? 2.0 : 4.0;
}

double meanEnergy(const Prepared& recording, double start, double end)
{
    const auto count = static_cast<std::int64_t>(recording.energy.size());
    const std::int64_t from = std::clamp<std::int64_t>(std::llround(start / energyStep), 0, count);
    const std::int64_t to = std::clamp<std::int64_t>(std::llround(end / energyStep), 0, count);
    if (to <= from) return 0.0;
    double sum = 0.0;
    for (std::int64_t i = from; i < to; ++i)
        sum += recording.energy[static_cast<std::size_t>(i)];
    return sum / static_cast<double>(to - from);
}

// Share of a stretch's energy that is more than the recording's own noise.
double activity(const Prepared& recording, double start, double end)
{
    const double energy = meanEnergy(recording, start, end);
    if (energy <= 0.0) return 0.0;
    return std::max(0.0, 1.0 - recording.floor / energy);
}

// Interpolates between samples: taps of a windowed sinc for so many places between two samples
// that the nearest one is right to a fifth of a microsecond at 8 kHz.
class Interpolator
{
public:
    static constexpr int half = 8;

    Interpolator() : taps(static_cast<std::size_t>(phases + 1) * 2 * half)
    {
        const double pi = std::acos(-1.0);
        for (int phase = 0; phase <= phases; ++phase) {
            for (int tap = 1 - half; tap <= half; ++tap) {
                const double distance = static_cast<double>(phase) / phases - tap;
                const double edge = distance / (half + 0.5);
                const double window = (1.0 - edge * edge) * (1.0 - edge * edge);
                const double sinc =
                    std::fabs(distance) < 1e-12 ? 1.0 : std::sin(pi * distance) / (pi * distance);
                taps[tapsOf(phase) + static_cast<std::size_t>(tap - 1 + half)] =
                    static_cast<float>(sinc * window);
            }
        }
    }

    float at(const std::vector<float>& samples, double position) const
    {
        const auto count = static_cast<std::int64_t>(samples.size());
        const auto whole = static_cast<std::int64_t>(std::floor(position));
        if (whole < half || whole + half >= count) return 0.0F;
        const auto phase =
            static_cast<int>(std::lrint((position - static_cast<double>(whole)) * phases));
        const float* tap = taps.data() + tapsOf(phase);
        const float* from = samples.data() + (whole + 1 - half);
        float sum = 0.0F;
        for (int i = 0; i < 2 * half; ++i)
            sum += tap[i] * from[i];
        return sum;
    }

private:
    // Where the taps of a phase begin.
    static std::size_t tapsOf(int phase) { return static_cast<std::size_t>(phase) * 2 * half; }

    static constexpr int phases = 512;
    std::vector<float> taps;
};

// Copies `length` samples from position `start`, which may lie outside, and fades both ends. Steps
// other than 1 follow a clock that runs faster or slower.
void cut(const std::vector<float>& samples, double start, double step, std::size_t length,
         const std::vector<float>& fade, float* out)
{
    static const Interpolator interpolator;
    if (step == 1.0) {
        const auto count = static_cast<std::int64_t>(samples.size());
        const auto first = static_cast<std::int64_t>(start);
        for (std::size_t i = 0; i < length; ++i) {
            const std::int64_t at = first + static_cast<std::int64_t>(i);
            out[i] = at >= 0 && at < count ? samples[static_cast<std::size_t>(at)] : 0.0F;
        }
    } else {
        for (std::size_t i = 0; i < length; ++i)
            out[i] = interpolator.at(samples, start + step * static_cast<double>(i));
    }
    for (std::size_t i = 0; i < fade.size(); ++i) {
        out[i] *= fade[i];
        out[length - 1 - i] *= fade[i];
    }
}

// Correlations of all windows about a line, as rows of lags.
struct Rows {
    std::size_t count = 0;
    // Lags on either side of the line.
    std::int64_t reach = 0;
    std::size_t width() const { return static_cast<std::size_t>(2 * reach + 1); }
    std::vector<float> values;
    // Chance value of one lag.
    double noise = 0.0;
    // Agreement of phases by band on the line, summed over windows, with the bins behind it.
    std::vector<double> bandSum;
    std::vector<double> bandBins;

    const float* row(std::size_t index) const { return values.data() + index * width(); }
};

struct Line {
    double middle;
    double offset;
    double slope;
    double at(double time) const { return offset + slope * (time - middle); }
};

class Aligner
{
public:
    Aligner(const Prepared& newFirst, const Prepared& newSecond, const AlignRequest& newRequest,
            AlignWorkspace& newWork)
        : first(newFirst),
          second(newSecond),
          request(newRequest),
          work(newWork),
          rate(newFirst.rate)
    {
    }

    Alignment run()
    {
        result.sign = request.sign == 0.0 ? 1.0 : request.sign;
        result.start = std::max(0.0, request.offset);
        result.end = std::min(first.seconds(), second.seconds() + request.offset);
        result.middle = (result.start + result.end) / 2.0;
        result.offset = request.offset;
        if (result.end - result.start < 1.0) return result;
        placeWindows();
        if (result.windows.empty()) return result;

        Line line{result.middle, request.offset, request.slope};
        const double longest = result.end - result.start;
        const double slopes = request.slopeReach;
        std::int64_t reach =
            static_cast<std::int64_t>((request.reach + slopes * longest / 2.0) * rate) + 2;
        Rows rows = correlate(line, reach, false);
        line = search(rows, line, slopes);
        if (found < request.leastSignificance) {
            result.offset = line.offset;
            result.slope = line.slope;
            result.significance = found;
            return result;
        }
        // Now that the line is known, the windows are cut along it, so that a drifting clock does
        // not blur them.
        reach = static_cast<std::int64_t>(farthestNeighbour * rate);
        for (int round = 0; round < 3; ++round) {
            rows = correlate(line, reach, true);
            const Line before = line;
            line = fit(rows, line);
            const double moved = std::fabs(line.offset - before.offset) +
                                 std::fabs(line.slope - before.slope) * longest / 2.0;
            if (moved < settled) break;
        }
        judge(rows, line);
        return result;
    }

private:
    void placeWindows()
    {
        const double overlap = result.end - result.start;
        seconds = std::min(windowLength(overlap), overlap);
        const double room = overlap - seconds;
        std::size_t count = static_cast<std::size_t>(std::floor(room / (seconds / 2.0))) + 1;
        count = std::clamp<std::size_t>(count, 1, request.mostWindows);
        double greatest = 0.0;
        for (std::size_t i = 0; i < count; ++i) {
            AlignWindow window;
            window.time =
                result.start + seconds / 2.0 +
                (count == 1 ? room / 2.0
                            : room * static_cast<double>(i) / static_cast<double>(count - 1));
            const double start = window.time - seconds / 2.0;
            const double activeFirst = activity(first, start, start + seconds);
            const double activeSecond =
                activity(second, start - request.offset, start - request.offset + seconds);
            window.weight = activeFirst * activeSecond;
            greatest = std::max(greatest, window.weight);
            result.activity += window.weight / static_cast<double>(count);
            result.windows.push_back(window);
        }
        // What is below the noise of either recording hardly counts, unless all of it is.
        for (AlignWindow& window : result.windows)
            window.weight = 0.02 + 0.98 * (greatest > 0.0 ? window.weight / greatest : 0.0);
    }

    Rows correlate(const Line& line, std::int64_t reach, bool along)
    {
        const auto length = static_cast<std::size_t>(seconds * rate);
        const std::size_t size = fastLength(length + 2 * static_cast<std::size_t>(reach) + 2);
        Transform& transform = work.transform(size);
        work.firstPart.assign(size, 0.0F);
        work.secondPart.assign(size, 0.0F);
        work.firstSpectrum.resize(transform.bins());
        work.secondSpectrum.resize(transform.bins());
        work.correlation.resize(size);

        Rows rows;
        rows.count = result.windows.size();
        rows.reach = reach;
        rows.values.resize(rows.count * rows.width());
        const double binsPerHertz = static_cast<double>(size) / rate;
        const double top = std::min(request.highest, 0.45 * rate);
        const auto lowBin = static_cast<std::size_t>(std::ceil(lowestFrequency * binsPerHertz));
        const std::size_t endBin =
            std::min(transform.bins(), static_cast<std::size_t>(top * binsPerHertz) + 1);
        const auto bandCount =
            static_cast<std::size_t>(std::ceil((top - lowestFrequency) / bandWidth));
        rows.bandSum.assign(bandCount, 0.0);
        rows.bandBins.assign(bandCount, 0.0);
        // The faded ends make neighbouring bins alike, so that fewer are independent.
        rows.noise = std::sqrt(static_cast<double>(size) / static_cast<double>(length) * 1.1 /
                               (2.0 * static_cast<double>(endBin - lowBin)));

        std::vector<float> fade(length / 8);
        for (std::size_t i = 0; i < fade.size(); ++i) {
            fade[i] = static_cast<float>(
                0.5 - 0.5 * std::cos(std::acos(-1.0) * (static_cast<double>(i) + 0.5) /
                                     static_cast<double>(fade.size())));
        }
        const std::size_t margin = static_cast<std::size_t>(reach);
        const bool stretched = along && std::fabs(line.slope) > gentle;
        for (std::size_t k = 0; k < rows.count; ++k) {
            const AlignWindow& window = result.windows[k];
            const double start = std::round((window.time - seconds / 2.0) * rate);
            const double time = start / rate + seconds / 2.0;
            const double step = stretched ? 1.0 - line.slope : 1.0;
            // Position in the second recording of what stands at `start` in the first. It is taken
            // at a whole sample, and the phases make up for the rest.
            const double exact = start - (stretched ? line.at(start / rate) : line.at(time)) * rate;
            const double from = stretched ? exact : std::round(exact);
            cut(first.samples, start, 1.0, length, fade, work.firstPart.data());
            std::fill(work.firstPart.begin() + static_cast<std::ptrdiff_t>(length),
                      work.firstPart.end(), 0.0F);
            cut(second.samples, from - step * static_cast<double>(margin), step,
                length + 2 * margin, fade, work.secondPart.data());
            transform.forward(work.firstPart.data(), work.firstSpectrum.data());
            transform.forward(work.secondPart.data(), work.secondSpectrum.data());
            crossPhases(lowBin, endBin, static_cast<double>(margin) + (exact - from), rows,
                        window.weight, binsPerHertz, size);
            transform.inverse(work.firstSpectrum.data(), work.correlation.data());
            const float scale =
                static_cast<float>(result.sign / (2.0 * static_cast<double>(endBin - lowBin)));
            float* row = rows.values.data() + k * rows.width();
            for (std::int64_t lag = -reach; lag <= reach; ++lag) {
                const std::int64_t at = lag < 0 ? lag + static_cast<std::int64_t>(size) : lag;
                row[lag + reach] = work.correlation[static_cast<std::size_t>(at)] * scale;
            }
        }
        return rows;
    }

    // Phases of the first against the second, turned so that the line stands at lag 0. In the parts
    // as they were cut it stands at `late` samples.
    void crossPhases(std::size_t lowBin, std::size_t endBin, double late, Rows& rows, double weight,
                     double binsPerHertz, std::size_t size)
    {
        Spectrum& product = work.firstSpectrum;
        std::fill(product.begin(), product.begin() + static_cast<std::ptrdiff_t>(lowBin),
                  std::complex<float>(0.0F, 0.0F));
        std::fill(product.begin() + static_cast<std::ptrdiff_t>(endBin), product.end(),
                  std::complex<float>(0.0F, 0.0F));
        const double turn = -2.0 * std::acos(-1.0) * late / static_cast<double>(size);
        for (std::size_t bin = lowBin; bin < endBin;) {
            const auto band = static_cast<std::size_t>(
                (static_cast<double>(bin) / binsPerHertz - lowestFrequency) / bandWidth);
            const std::size_t bandEnd = std::clamp(
                static_cast<std::size_t>(std::ceil(
                    (lowestFrequency + static_cast<double>(band + 1) * bandWidth) * binsPerHertz)),
                bin + 1, endBin);
            const std::size_t count = bandEnd - bin;
            // Started anew in each band, so that rounding does not add up.
            const std::complex<double> begin = std::polar(1.0, turn * static_cast<double>(bin));
            const std::complex<double> next = std::polar(1.0, turn);
            double rotorReal = begin.real();
            double rotorImaginary = begin.imag();
            double sum = 0.0;
            for (; bin < bandEnd; ++bin) {
                const std::complex<float> a = product[bin];
                const std::complex<float> b = work.secondSpectrum[bin];
                const float real = a.real() * b.real() + a.imag() * b.imag();
                const float imaginary = a.imag() * b.real() - a.real() * b.imag();
                const float power = real * real + imaginary * imaginary;
                const float scale = power > 0.0F ? 1.0F / std::sqrt(power) : 0.0F;
                const auto turnReal = static_cast<float>(rotorReal);
                const auto turnImaginary = static_cast<float>(rotorImaginary);
                const float turnedReal = (real * turnReal - imaginary * turnImaginary) * scale;
                product[bin] = {turnedReal, (real * turnImaginary + imaginary * turnReal) * scale};
                sum += static_cast<double>(turnedReal);
                const double keep = rotorReal;
                rotorReal = keep * next.real() - rotorImaginary * next.imag();
                rotorImaginary = keep * next.imag() + rotorImaginary * next.real();
            }
            if (band < rows.bandSum.size()) {
                rows.bandSum[band] += weight * sum;
                rows.bandBins[band] += weight * weight * static_cast<double>(count);
            }
        }
    }

    // The line on which the weighted sum of all windows is greatest, either way up if that is open.
    Line search(const Rows& rows, const Line& about, double slopes)
    {
        double best = -1.0;
        Line line = searchUpright(rows, about, slopes, 1.0F, best);
        if (request.sign == 0.0) {
            double turnedBest = best;
            const Line turned = searchUpright(rows, about, slopes, -1.0F, turnedBest);
            if (turnedBest > best) {
                best = turnedBest;
                line = turned;
                result.sign = -1.0;
            }
        }
        double squares = 0.0;
        for (const AlignWindow& window : result.windows)
            squares += window.weight * window.weight;
        found = best / (rows.noise * std::sqrt(squares * 1.5));
        return line;
    }

    Line searchUpright(const Rows& rows, const Line& about, double slopes, float sign,
                       double& best) const
    {
        const double half = (result.end - result.start) / 2.0;
        const auto reach = static_cast<std::int64_t>(request.reach * rate);
        // Each lag takes the best of its neighbours, so that the search may step by two.
        std::vector<float> wide(rows.values.size());
        for (std::size_t k = 0; k < rows.count; ++k) {
            const float* in = rows.row(k);
            float* out = wide.data() + k * rows.width();
            const float weight = static_cast<float>(result.windows[k].weight);
            for (std::size_t i = 0; i < rows.width(); ++i) {
                float highest = sign * in[i];
                if (i > 0) highest = std::max(highest, sign * in[i - 1]);
                if (i + 1 < rows.width()) highest = std::max(highest, sign * in[i + 1]);
                out[i] = highest * weight;
            }
        }
        const auto steps = static_cast<std::int64_t>(std::ceil(slopes * half * rate / 2.0));
        std::vector<float> sums(static_cast<std::size_t>(2 * reach + 1));
        Line line = about;
        for (std::int64_t s = -steps; s <= steps; ++s) {
            const double slope =
                steps == 0 ? 0.0 : slopes * static_cast<double>(s) / static_cast<double>(steps);
            std::fill(sums.begin(), sums.end(), 0.0F);
            for (std::size_t k = 0; k < rows.count; ++k) {
                const double shift = slope * (result.windows[k].time - about.middle) * rate;
                const std::int64_t at = std::llround(shift) + rows.reach - reach;
                const auto width = static_cast<std::int64_t>(rows.width());
                const std::int64_t from = std::max<std::int64_t>(0, -at);
                const std::int64_t to = std::min<std::int64_t>(2 * reach + 1, width - at);
                const float* row = wide.data() + k * rows.width() + at;
                for (std::int64_t i = from; i < to; ++i)
                    sums[static_cast<std::size_t>(i)] += row[i];
            }
            for (std::int64_t i = 0; i <= 2 * reach; ++i) {
                if (sums[static_cast<std::size_t>(i)] > best) {
                    best = sums[static_cast<std::size_t>(i)];
                    line.offset = about.offset + static_cast<double>(i - reach) / rate;
                    line.slope = about.slope + slope;
                }
            }
        }
        return line;
    }

    // Position of the greatest value between two elements of a row, to a fraction, and the value.
    static std::pair<double, double> peakOf(const float* row, std::int64_t from, std::int64_t to)
    {
        std::int64_t best = from;
        for (std::int64_t i = from; i <= to; ++i) {
            if (row[i] > row[best]) best = i;
        }
        if (best == from || best == to) return {static_cast<double>(best), row[best]};
        const double left = row[best - 1];
        const double mid = row[best];
        const double right = row[best + 1];
        const double curve = left - 2.0 * mid + right;
        if (curve >= 0.0) return {static_cast<double>(best), mid};
        const double shift = 0.5 * (left - right) / curve;
        return {static_cast<double>(best) + shift, mid - 0.25 * (left - right) * shift};
    }

    // A line through the windows' own peaks near the present line, each counted by how far it
    // stands out; windows off the line are dropped.
    Line fit(const Rows& rows, const Line& about)
    {
        const auto near = static_cast<std::int64_t>(std::ceil(onLine * 1.5 * rate));
        std::vector<double> deviation(rows.count);
        std::vector<double> trust(rows.count);
        for (std::size_t k = 0; k < rows.count; ++k) {
            const auto [position, value] =
                peakOf(rows.row(k), rows.reach - near, rows.reach + near);
            deviation[k] = (position - static_cast<double>(rows.reach)) / rate;
            const double excess = value / rows.noise;
            // The variance of a peak's place falls with the square of its height over the noise.
            trust[k] = excess > 3.5 ? std::min(excess * excess, 1e4) : 0.0;
        }
        Line line = about;
        double scale = onLine;
        double errorOffset = onLine;
        double errorSlope = 1.0;
        double shiftOffset = 0.0;
        double shiftSlope = 0.0;
        for (int round = 0; round < 6; ++round) {
            double s0 = 0.0;
            double s1 = 0.0;
            double s2 = 0.0;
            double r0 = 0.0;
            double r1 = 0.0;
            std::vector<double> residual;
            for (std::size_t k = 0; k < rows.count; ++k) {
                const double x = result.windows[k].time - about.middle;
                const double off = deviation[k] - shiftOffset - shiftSlope * x;
                if (trust[k] <= 0.0 || std::fabs(off) > 3.0 * scale) continue;
                s0 += trust[k];
                s1 += trust[k] * x;
                s2 += trust[k] * x * x;
                r0 += trust[k] * deviation[k];
                r1 += trust[k] * deviation[k] * x;
                residual.push_back(std::fabs(off));
            }
            if (residual.empty()) break;
            // A slope out of few windows is noise; a weak pull to the present one holds it.
            const double half = (result.end - result.start) / 2.0;
            const double hold = s0 * 1e-3 * half * half + 1e-9;
            const double determinant = s0 * (s2 + hold) - s1 * s1;
            if (determinant <= 0.0) break;
            shiftOffset = ((s2 + hold) * r0 - s1 * r1) / determinant;
            shiftSlope = (s0 * r1 - s1 * r0) / determinant;
            if (residual.size() < 3) shiftSlope = 0.0;
            std::nth_element(residual.begin(),
                             residual.begin() + static_cast<std::ptrdiff_t>(residual.size() / 2),
                             residual.end());
            const double spread = 1.4826 * residual[residual.size() / 2];
            scale = std::clamp(spread, 0.03e-3, onLine / 3.0);
            // Half-overlapped windows share half their sound.
            const double perTrust =
                2.0 * std::max(spread * spread, 1e-11) * s0 / static_cast<double>(residual.size());
            errorOffset = std::sqrt(perTrust * (s2 + hold) / determinant);
            errorSlope = std::sqrt(perTrust * s0 / determinant);
        }
        line.offset += shiftOffset;
        line.slope = std::clamp(line.slope + shiftSlope, -1.2 * steepest, 1.2 * steepest);
        result.offsetError = errorOffset;
        result.slopeError = errorSlope;
        return line;
    }

    void judge(const Rows& rows, const Line& line)
    {
        result.offset = line.offset;
        result.slope = line.slope;
        const auto near = static_cast<std::int64_t>(std::lround(onLine * rate));
        const auto tight = static_cast<std::int64_t>(std::ceil(0.0003 * rate));
        std::vector<double> stack(rows.width(), 0.0);
        double weights = 0.0;
        double squares = 0.0;
        double sum = 0.0;
        double agreeing = 0.0;
        double asked = 0.0;
        for (std::size_t k = 0; k < rows.count; ++k) {
            AlignWindow& window = result.windows[k];
            const float* row = rows.row(k);
            window.coherence = peakOf(row, rows.reach - tight, rows.reach + tight).second;
            const auto [position, value] = peakOf(row, 0, 2 * rows.reach);
            window.deviation = (position - static_cast<double>(rows.reach)) / rate;
            window.ownCoherence = value;
            window.agrees = std::fabs(window.deviation) <= static_cast<double>(near) / rate &&
                            window.coherence > 3.5 * rows.noise;
            weights += window.weight;
            squares += window.weight * window.weight;
            sum += window.weight * window.coherence;
            // A pause has no opinion.
            const double voice = std::max(0.0, window.weight - pauseWeight);
            asked += voice;
            if (window.agrees) agreeing += voice;
            for (std::size_t i = 0; i < rows.width(); ++i)
                stack[i] += window.weight * row[i];
        }
        result.coherence = sum / weights;
        result.agreement = asked > 0.0 ? agreeing / asked : 0.0;
        double onIt = 0.0;
        double beside = 0.0;
        const auto nearest = static_cast<std::int64_t>(nearestNeighbour * rate);
        for (std::int64_t lag = -rows.reach; lag <= rows.reach; ++lag) {
            const double value = stack[static_cast<std::size_t>(lag + rows.reach)];
            if (std::abs(lag) <= tight) onIt = std::max(onIt, value);
            if (std::abs(lag) >= nearest) beside = std::max(beside, std::fabs(value));
        }
        result.significance = onIt / (rows.noise * std::sqrt(squares * 1.5));
        result.fullSignificance = weights / (rows.noise * std::sqrt(squares * 1.5));
        result.sharpness = beside > 0.0 ? onIt / beside : 0.0;
        result.allBands = static_cast<int>(rows.bandSum.size());
        for (std::size_t band = 0; band < rows.bandSum.size(); ++band) {
            const double chance = std::sqrt(0.5 * 1.5 * rows.bandBins[band]);
            if (result.sign * rows.bandSum[band] > 4.0 * chance) ++result.bands;
        }
    }

    const Prepared& first;
    const Prepared& second;
    const AlignRequest& request;
    AlignWorkspace& work;
    int rate;
    double seconds = 0.0;
    // Significance of the line that the search found, before it is refined.
    double found = 0.0;
    Alignment result;
};

} // namespace

Transform& AlignWorkspace::transform(std::size_t length)
{
    std::unique_ptr<Transform>& held = transforms[length];
    if (!held) held = std::make_unique<Transform>(length);
    return *held;
}

Prepared prepare(const std::vector<float>& samples, int rate)
{
    Prepared prepared;
    prepared.samples = highPassed(samples, rate);
    prepared.rate = rate;
    const auto step = static_cast<std::size_t>(energyStep * rate);
    for (std::size_t at = 0; at + step <= prepared.samples.size(); at += step) {
        double sum = 0.0;
        for (std::size_t i = at; i < at + step; ++i)
            sum += static_cast<double>(prepared.samples[i]) * prepared.samples[i];
        prepared.energy.push_back(static_cast<float>(sum / static_cast<double>(step)));
    }
    if (!prepared.energy.empty()) {
        std::vector<float> sorted = prepared.energy;
        std::sort(sorted.begin(), sorted.end());
        prepared.floor = sorted[sorted.size() / 20];
    }
    return prepared;
}

Alignment align(const Prepared& first, const Prepared& second, const AlignRequest& request,
                AlignWorkspace& work)
{
    return Aligner(first, second, request, work).run();
}

} // namespace vxlsync
