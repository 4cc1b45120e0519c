#include "match/Mix.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace vxlsync
{

namespace
{

// A recording is laid down in stretches of so many samples, each where its clock says; over one,
// clocks differ by less than a hundredth of a sample.
constexpr std::size_t stretch = SampleStore<float>::blockSize;

constexpr std::size_t coarseStep = 4;
// Taps of the low-pass on either side, which leaves 0.8 of the band that is left and is down by
// 50 dB where it folds back.
constexpr std::size_t halfTaps = 32;
constexpr double coarsePass = 0.9;

double meanSquareOf(const Prepared& recording)
{
    double sum = 0.0;
    for (const float energy : recording.energy)
        sum += static_cast<double>(energy);
    return sum / static_cast<double>(std::max<std::size_t>(1, recording.energy.size()));
}

// What has been laid down.
struct Sheet {
    std::vector<float> samples;
    // How many members each stretch has.
    std::vector<std::uint16_t> depths;
};

void lay(const Prepared& recording, const Clock& clock, double sheetStart, Sheet& sheet,
         const Interrupt& interrupt)
{
    const double loudness = meanSquareOf(recording);
    if (loudness <= 0.0) return;
    const auto gain = static_cast<float>(1.0 / std::sqrt(loudness));
    const auto end = static_cast<std::int64_t>(sheet.samples.size());
    std::array<float, stretch> part;
    for (std::size_t at = 0; at < recording.samples.size(); at += stretch) {
        interrupt.check();
        const std::size_t count = std::min(stretch, recording.samples.size() - at);
        const double seconds = clock.at(static_cast<double>(at) / recording.rate) - sheetStart;
        const std::int64_t exact = std::llround(seconds * recording.rate);
        const auto place = static_cast<std::size_t>(std::clamp<std::int64_t>(exact, 0, end));
        const std::size_t fitting = std::min(count, sheet.samples.size() - place);
        recording.samples.copy(at, count, part.data());
        for (std::size_t i = 0; i < fitting; ++i)
            sheet.samples[place + i] += gain * part[i];
        ++sheet.depths[place / stretch];
    }
}

// Taps of a low-pass for every coarseStep-th sample, of sum 1.
std::array<float, 2 * halfTaps + 1> lowPassTaps()
{
    const double pi = std::acos(-1.0);
    const double cutoff = coarsePass / static_cast<double>(coarseStep);
    std::array<double, 2 * halfTaps + 1> exact{};
    double sum = 0.0;
    for (std::size_t i = 0; i < exact.size(); ++i) {
        const double x = static_cast<double>(i) - static_cast<double>(halfTaps);
        const double sinc = x == 0.0 ? 1.0 : std::sin(pi * cutoff * x) / (pi * cutoff * x);
        const double window = 0.5 + 0.5 * std::cos(pi * x / (static_cast<double>(halfTaps) + 1.0));
        exact[i] = sinc * window;
        sum += exact[i];
    }
    std::array<float, 2 * halfTaps + 1> taps{};
    for (std::size_t i = 0; i < exact.size(); ++i)
        taps[i] = static_cast<float>(exact[i] / sum);
    return taps;
}

} // namespace

Mix mixOf(const std::vector<Prepared>& recordings, const Gathering& gathering, std::size_t group,
          const Interrupt& interrupt)
{
    const std::vector<std::size_t>& members = gathering.membersOf(group);
    double start = std::numeric_limits<double>::infinity();
    double end = -start;
    for (const std::size_t member : members) {
        start = std::min(start, gathering.clockOf(member).start);
        end = std::max(end, gathering.endOf(member));
    }
    const int rate = recordings[members.front()].rate;
    Sheet sheet;
    sheet.samples.assign(static_cast<std::size_t>((end - start) * rate) + 1, 0.0f);
    sheet.depths.assign(sheet.samples.size() / stretch + 1, 0);
    for (const std::size_t member : members)
        lay(recordings[member], gathering.clockOf(member), start, sheet, interrupt);

    Mix mix;
    mix.start = start;
    mix.sound.rate = rate;
    for (std::size_t at = 0; at < sheet.samples.size(); at += stretch) {
        const std::size_t count = std::min(stretch, sheet.samples.size() - at);
        const std::uint16_t depth = sheet.depths[at / stretch];
        const float share = depth > 1 ? 1.0f / static_cast<float>(depth) : 1.0f;
        for (std::size_t i = 0; i < count; ++i)
            sheet.samples[at + i] *= share;
        mix.sound.samples.append(sheet.samples.data() + at, count);
    }
    return mix;
}

Prepared coarse(const Prepared& sound, const Interrupt& interrupt)
{
    const std::array<float, 2 * halfTaps + 1> taps = lowPassTaps();
    const std::size_t count = sound.samples.size();
    Prepared result;
    result.rate = sound.rate / static_cast<int>(coarseStep);
    std::vector<float> in(stretch + 2 * halfTaps);
    std::array<float, stretch / coarseStep> out;
    for (std::size_t at = 0; at < count; at += stretch) {
        interrupt.check();
        std::fill(in.begin(), in.end(), 0.0f);
        const std::size_t from = at < halfTaps ? 0 : at - halfTaps;
        const std::size_t to = std::min(count, at + stretch + halfTaps);
        sound.samples.copy(from, to - from, in.data() + (from + halfTaps - at));
        const std::size_t number = (std::min(stretch, count - at) + coarseStep - 1) / coarseStep;
        for (std::size_t i = 0; i < number; ++i) {
            float sum = 0.0f;
            for (std::size_t tap = 0; tap < taps.size(); ++tap)
                sum += taps[tap] * in[i * coarseStep + tap];
            out[i] = sum;
        }
        result.samples.append(out.data(), number);
    }
    return result;
}

} // namespace vxlsync
