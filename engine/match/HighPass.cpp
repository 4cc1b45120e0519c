#include "match/HighPass.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace vxlsync
{

namespace
{

constexpr double cutoffHertz = 80.0;
constexpr double endFadeSeconds = 0.25;
// Two sections with these qualities make a Butterworth filter of the fourth order.
constexpr double firstQuality = 0.54119610;
constexpr double secondQuality = 1.30656296;
// What rings on below this, of a full scale of 1, nobody hears: 240 dB down.
constexpr double inaudible = 1e-12;
// Silence is looked for in steps of so many samples: short enough that what rings on at the start
// of a step cannot fall to where processors compute slowly before it ends.
constexpr std::size_t silenceStep = 256;

// One second-order high-pass section with what it remembers.
class Section
{
public:
    Section(int rate, double quality)
    {
        const double omega = 2.0 * std::acos(-1.0) * cutoffHertz / rate;
        const double alpha = std::sin(omega) / (2.0 * quality);
        const double cosine = std::cos(omega);
        const double norm = 1.0 + alpha;
        b0 = (1.0 + cosine) / 2.0 / norm;
        b1 = -2.0 * b0;
        a1 = -2.0 * cosine / norm;
        a2 = (1.0 - alpha) / norm;
    }

    void run(float* samples, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) {
            const double in = samples[i];
            const double out = b0 * in + first;
            first = b1 * in - a1 * out + second;
            second = b0 * in - a2 * out;
            samples[i] = static_cast<float>(out);
        }
    }

    bool isQuiet() const { return std::max(std::fabs(first), std::fabs(second)) < inaudible; }
    void forget() { first = second = 0.0; }

private:
    double b0;
    double b1;
    double a1;
    double a2;
    double first = 0.0;
    double second = 0.0;
};

class Filter
{
public:
    explicit Filter(int rate) : sections{Section(rate, firstQuality), Section(rate, secondQuality)}
    {
    }

    void run(float* samples, std::size_t count)
    {
        for (std::size_t at = 0; at < count; at += silenceStep)
            runStep(samples + at, std::min(silenceStep, count - at));
    }

    // True if silence in is silence out.
    bool isQuiet() const { return sections[0].isQuiet() && sections[1].isQuiet(); }

private:
    void runStep(float* samples, std::size_t count)
    {
        const bool isSilence =
            std::all_of(samples, samples + count, [](float sample) { return sample == 0.0f; });
        if (isSilence && isQuiet()) {
            for (Section& section : sections)
                section.forget();
            return;
        }
        for (Section& section : sections)
            section.run(samples, count);
    }

    Section sections[2];
};

// Weakens what lies within `fade` samples of either end of a whole of `length`. `block` begins at
// `from` of the whole.
void fadeEnds(std::vector<float>& block, std::size_t from, std::size_t length, std::size_t fade)
{
    for (std::size_t i = 0; i < block.size(); ++i) {
        const std::size_t toEnd = std::min(from + i, length - 1 - (from + i));
        if (toEnd < fade) block[i] *= static_cast<float>(toEnd) / static_cast<float>(fade);
    }
}

} // namespace

template <typename Stored>
SampleStore<float> highPassed(const SampleStore<Stored>& samples, int rate,
                              const Interrupt& interrupt)
{
    SampleStore<float> out;
    Filter filter(rate);
    const std::size_t length = samples.size();
    const std::size_t fade = std::min(static_cast<std::size_t>(endFadeSeconds * rate), length / 2);
    std::vector<float> block;
    while (out.size() < length) {
        interrupt.check();
        const std::size_t from = out.size();
        const std::size_t count = std::min(SampleStore<Stored>::blockSize, length - from);
        if (filter.isQuiet() && !samples.hasSound(from, count)) {
            out.appendSilence(count);
            continue;
        }
        block.resize(count);
        samples.copy(from, count, block.data());
        filter.run(block.data(), count);
        if (from < fade || from + count + fade > length) fadeEnds(block, from, length, fade);
        out.append(block.data(), count);
    }
    return out;
}

template SampleStore<float> highPassed(const SampleStore<float>& samples, int rate,
                                       const Interrupt& interrupt);
template SampleStore<float> highPassed(const SampleStore<std::uint16_t>& samples, int rate,
                                       const Interrupt& interrupt);

} // namespace vxlsync
