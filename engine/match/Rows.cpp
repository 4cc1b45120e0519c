#include "match/Rows.h"

#include <algorithm>
#include <cmath>

#include "match/Band.h"

namespace vxlsync
{

namespace
{

// Share of the rate above which converters' own filters leave nothing to compare.
constexpr double usableShareOfRate = 0.45;
// Of a window's length, at each end.
constexpr std::size_t windowsPerFade = 8;
// A window gives up to so much of its length to the margins about it, where that halves its
// transform, which is a power of two.
constexpr double leastWindowShare = 0.8;
// The faded ends make neighbouring bins alike, so that fewer of them are independent: the variance
// of a value against that of bins which are.
constexpr double fadedVariance = 1.1;
// A slope that blurs the longest window by less than a tenth of a sample at 8 kHz.
constexpr double gentleSlope = 3e-6;

// Bins of one band.
struct BandBins {
    std::size_t from;
    std::size_t to;
    std::size_t band;
};

// All that the correlation of every window shares.
struct Layout {
    int rate;
    // Samples of a window, of the transform, and on either side of the second's cut.
    std::size_t length;
    std::size_t size;
    std::size_t margin;
    std::vector<float> fade;
    std::size_t lowBin;
    std::size_t endBin;
    std::vector<BandBins> bandBins;
    std::size_t bandCount;

    std::size_t bins() const { return endBin - lowBin; }
};

std::vector<BandBins> bandsOf(std::size_t lowBin, std::size_t endBin, double binsPerHertz)
{
    std::vector<BandBins> bands;
    for (std::size_t bin = lowBin; bin < endBin;) {
        const auto band = static_cast<std::size_t>(
            (static_cast<double>(bin) / binsPerHertz - lowestFrequency) / bandWidthHertz);
        const double top = lowestFrequency + static_cast<double>(band + 1) * bandWidthHertz;
        const std::size_t to =
            std::clamp(static_cast<std::size_t>(std::ceil(top * binsPerHertz)), bin + 1, endBin);
        bands.push_back({bin, to, band});
        bin = to;
    }
    return bands;
}

Layout layoutOf(int rate, double windowSeconds, const RowsRequest& request)
{
    Layout layout;
    layout.rate = rate;
    layout.margin = static_cast<std::size_t>(request.reach);
    const auto whole = static_cast<std::size_t>(windowSeconds * rate);
    const std::size_t margins = 2 * layout.margin + 2;
    layout.size = fastLength(whole);
    layout.length = std::min(whole, layout.size - std::min(layout.size, margins));
    if (static_cast<double>(layout.length) < leastWindowShare * static_cast<double>(whole)) {
        layout.size = fastLength(whole + margins);
        layout.length = whole;
    }
    layout.fade = cosineFade(layout.length / windowsPerFade);
    const double binsPerHertz = static_cast<double>(layout.size) / rate;
    const double top = std::min(request.highest, usableShareOfRate * rate);
    layout.lowBin = static_cast<std::size_t>(std::ceil(lowestFrequency * binsPerHertz));
    layout.endBin = static_cast<std::size_t>(top * binsPerHertz) + 1;
    layout.bandBins = bandsOf(layout.lowBin, layout.endBin, binsPerHertz);
    layout.bandCount =
        static_cast<std::size_t>(std::ceil((top - lowestFrequency) / bandWidthHertz));
    return layout;
}

// Where a window's parts are cut. The second is cut at a whole sample unless it is stretched;
// `late` is where the line stands in the parts as they are cut, in samples.
struct CutPlace {
    std::int64_t first;
    double second;
    double step;
    double late;
};

CutPlace placeOf(const Layout& layout, const Windows& windows, std::size_t index, const Line& line,
                 bool isStretched)
{
    const double half = static_cast<double>(layout.length) / 2.0;
    const double start = std::round(windows.times[index] * layout.rate - half);
    const double startSeconds = start / layout.rate;
    const double time = isStretched ? startSeconds : startSeconds + half / layout.rate;
    const double step = isStretched ? 1.0 - line.slope : 1.0;
    // Position in the second recording of what stands at `start` in the first.
    const double exact = start - line.at(time) * layout.rate;
    const double from = isStretched ? exact : std::round(exact);
    const auto margin = static_cast<double>(layout.margin);
    return {static_cast<std::int64_t>(start), from - step * margin, step, margin + (exact - from)};
}

// The spectrum of the first recording's part, or null if that is silent. It stays for the next line
// about which the same windows are correlated.
const Spectrum* firstSpectrumOf(const Prepared& first, const Layout& layout, const CutPlace& place,
                                Spectrum& kept, AlignWorkspace& work)
{
    if (!kept.empty()) return &kept;
    if (!work.cutter.cut(first.samples, place.first, layout.length, layout.fade,
                         work.firstPart.data()))
        return nullptr;
    Transform& transform = work.transform(layout.size);
    kept.resize(transform.bins());
    transform.forward(work.firstPart.data(), kept.data());
    return &kept;
}

// False if the second recording's part is silent.
bool cutSecond(const Prepared& second, const Layout& layout, const CutPlace& place,
               AlignWorkspace& work)
{
    const std::size_t length = layout.length + 2 * layout.margin;
    float* part = work.secondPart.data();
    if (place.step != 1.0)
        return work.cutter.cutStretched(second.samples, place.second, place.step, length,
                                        layout.fade, part);
    return work.cutter.cut(second.samples, static_cast<std::int64_t>(place.second), length,
                           layout.fade, part);
}

// Bins that are turned side by side.
constexpr std::size_t turnLanes = 8;

// The turns of so many bins from one that is not turned.
struct LaneTurns {
    float real[turnLanes];
    float imaginary[turnLanes];

    explicit LaneTurns(double turn)
    {
        for (std::size_t lane = 0; lane < turnLanes; ++lane) {
            real[lane] = static_cast<float>(std::cos(turn * static_cast<double>(lane)));
            imaginary[lane] = static_cast<float>(std::sin(turn * static_cast<double>(lane)));
        }
    }
};

// The phases of the first against the second, turned by `turn` for each bin; gives the sum of their
// cosines.
double turnPhases(const Spectrum& first, const Spectrum& second, const BandBins& bins, double turn,
                  const LaneTurns& lanes, Spectrum& product)
{
    float sums[turnLanes] = {};
    // Started anew in each band, so that rounding does not add up.
    std::complex<double> rotor = std::polar(1.0, turn * static_cast<double>(bins.from));
    const std::complex<double> next = std::polar(1.0, turn * static_cast<double>(turnLanes));
    for (std::size_t from = bins.from; from < bins.to; from += turnLanes) {
        const auto rotorReal = static_cast<float>(rotor.real());
        const auto rotorImaginary = static_cast<float>(rotor.imag());
        const std::size_t count = std::min(turnLanes, bins.to - from);
        for (std::size_t lane = 0; lane < count; ++lane) {
            const std::complex<float> a = first[from + lane];
            const std::complex<float> b = second[from + lane];
            const float real = a.real() * b.real() + a.imag() * b.imag();
            const float imaginary = a.imag() * b.real() - a.real() * b.imag();
            const float power = real * real + imaginary * imaginary;
            const float scale = power > 0.0f ? 1.0f / std::sqrt(power) : 0.0f;
            const float turnReal =
                rotorReal * lanes.real[lane] - rotorImaginary * lanes.imaginary[lane];
            const float turnImaginary =
                rotorReal * lanes.imaginary[lane] + rotorImaginary * lanes.real[lane];
            const float turnedReal = (real * turnReal - imaginary * turnImaginary) * scale;
            const float turnedImaginary = (real * turnImaginary + imaginary * turnReal) * scale;
            product[from + lane] = {turnedReal, turnedImaginary};
            sums[lane] += turnedReal;
        }
        rotor = {rotor.real() * next.real() - rotor.imag() * next.imag(),
                 rotor.real() * next.imag() + rotor.imag() * next.real()};
    }
    double sum = 0.0;
    for (const float lane : sums)
        sum += static_cast<double>(lane);
    return sum;
}

// Leaves the phases of the parts in the product, turned so that the line stands at lag 0.
void crossPhases(const Layout& layout, const Spectrum& first, double late, double weight,
                 std::vector<BandAgreement>& bands, AlignWorkspace& work)
{
    Spectrum& product = work.product;
    const std::complex<float> nothing(0.0f, 0.0f);
    std::fill(product.begin(), product.begin() + static_cast<std::ptrdiff_t>(layout.lowBin),
              nothing);
    std::fill(product.begin() + static_cast<std::ptrdiff_t>(layout.endBin), product.end(), nothing);
    const double turn = -2.0 * std::acos(-1.0) * late / static_cast<double>(layout.size);
    const LaneTurns lanes(turn);
    for (const BandBins& bins : layout.bandBins) {
        const double sum = turnPhases(first, work.secondSpectrum, bins, turn, lanes, product);
        // The band's upper end may be the first bin of one that is not counted.
        if (bins.band < bands.size()) bands[bins.band].sum += weight * sum;
    }
}

void copyRow(const std::vector<float>& correlation, std::int64_t reach, float scale, float* row)
{
    const auto size = static_cast<std::int64_t>(correlation.size());
    for (std::int64_t lag = -reach; lag <= reach; ++lag)
        row[lag + reach] =
            correlation[static_cast<std::size_t>(lag < 0 ? lag + size : lag)] * scale;
}

void reserve(const Layout& layout, std::size_t bins, AlignWorkspace& work)
{
    work.firstPart.assign(layout.size, 0.0f);
    work.secondPart.assign(layout.size, 0.0f);
    work.product.resize(bins);
    work.secondSpectrum.resize(bins);
    work.correlation.resize(layout.size);
}

Rows emptyRows(const Layout& layout, const Windows& windows, std::int64_t reach)
{
    Rows rows;
    rows.rate = layout.rate;
    rows.reach = reach;
    rows.values.resize(windows.count() * rows.width());
    rows.noise = std::sqrt(static_cast<double>(layout.size) / static_cast<double>(layout.length) *
                           fadedVariance / (2.0 * static_cast<double>(layout.bins())));
    rows.bands.resize(layout.bandCount);
    for (const BandBins& bins : layout.bandBins) {
        if (bins.band >= layout.bandCount) continue;
        for (const double weight : windows.weights)
            rows.bands[bins.band].squares +=
                weight * weight * static_cast<double>(bins.to - bins.from);
    }
    return rows;
}

} // namespace

Rows correlateWindows(const Prepared& first, const Prepared& second, const Windows& windows,
                      const Line& line, const RowsRequest& request, const Interrupt& interrupt,
                      AlignWorkspace& work)
{
    const Layout layout = layoutOf(first.rate, windows.seconds, request);
    Transform& transform = work.transform(layout.size);
    reserve(layout, transform.bins(), work);
    std::vector<Spectrum>& spectra = work.spectraOf(layout.length, windows.count());
    Rows rows = emptyRows(layout, windows, request.reach);
    const bool isStretched = request.followsClock && std::fabs(line.slope) > gentleSlope;
    const auto scale = static_cast<float>(line.sign / (2.0 * static_cast<double>(layout.bins())));
    for (std::size_t i = 0; i < windows.count(); ++i) {
        interrupt.check();
        const CutPlace place = placeOf(layout, windows, i, line, isStretched);
        const Spectrum* ofFirst = firstSpectrumOf(first, layout, place, spectra[i], work);
        // Silence agrees with nothing.
        if (!ofFirst || !cutSecond(second, layout, place, work)) continue;
        transform.forward(work.secondPart.data(), work.secondSpectrum.data());
        crossPhases(layout, *ofFirst, place.late, windows.weights[i], rows.bands, work);
        transform.inverse(work.product.data(), work.correlation.data());
        copyRow(work.correlation, request.reach, scale, rows.values.data() + i * rows.width());
    }
    return rows;
}

RowPeak peakOf(const float* row, std::int64_t from, std::int64_t to)
{
    const std::int64_t best = std::max_element(row + from, row + to + 1) - row;
    const double middle = row[best];
    if (best == from || best == to) return {static_cast<double>(best), middle};
    // The top of the parabola through the greatest value and its neighbours, of which the left one
    // is lower.
    const double left = row[best - 1];
    const double right = row[best + 1];
    const double shift = 0.5 * (left - right) / (left - 2.0 * middle + right);
    return {static_cast<double>(best) + shift, middle - 0.25 * (left - right) * shift};
}

} // namespace vxlsync
