#include "Prepare.h"

#include <algorithm>
#include <cmath>

namespace vxlsync
{

namespace
{

constexpr double cutoff = 80.0;
constexpr double fadeSeconds = 0.25;

// One second-order high-pass section; two with these qualities make a Butterworth filter of the
// fourth order.
void highPassSection(std::vector<float>& samples, int rate, double quality)
{
    const double pi = std::acos(-1.0);
    const double omega = 2.0 * pi * cutoff / rate;
    const double alpha = std::sin(omega) / (2.0 * quality);
    const double cosine = std::cos(omega);
    const double norm = 1.0 + alpha;
    const double b0 = (1.0 + cosine) / 2.0 / norm;
    const double b1 = -2.0 * b0;
    const double a1 = -2.0 * cosine / norm;
    const double a2 = (1.0 - alpha) / norm;
    double first = 0.0;
    double second = 0.0;
    for (float& sample : samples) {
        const double in = sample;
        const double out = b0 * in + first;
        first = b1 * in - a1 * out + second;
        second = b0 * in - a2 * out;
        sample = static_cast<float>(out);
    }
}

} // namespace

std::vector<float> highPassed(const std::vector<float>& samples, int rate)
{
    std::vector<float> out = samples;
    highPassSection(out, rate, 0.54119610);
    highPassSection(out, rate, 1.30656296);
    const std::size_t fade = std::min(static_cast<std::size_t>(fadeSeconds * rate), out.size() / 2);
    for (std::size_t i = 0; i < fade; ++i) {
        const float gain = static_cast<float>(i) / static_cast<float>(fade);
        out[i] *= gain;
        out[out.size() - 1 - i] *= gain;
    }
    return out;
}

Phases phasesOf(const std::vector<float>& samples, int rate, Transform& transform)
{
    std::vector<float> padded(transform.length(), 0.0F);
    std::copy(samples.begin(), samples.end(), padded.begin());
    Spectrum spectrum(transform.bins());
    transform.forward(padded.data(), spectrum.data());

    Phases phases;
    phases.length = transform.length();
    const double binsPerHertz = static_cast<double>(phases.length) / rate;
    phases.firstBin = static_cast<std::size_t>(std::ceil(lowestFrequency * binsPerHertz));
    const std::size_t endBin =
        std::min(spectrum.size(), static_cast<std::size_t>(highestFrequency * binsPerHertz) + 1);
    if (endBin <= phases.firstBin) return phases;
    phases.parts.resize(2 * (endBin - phases.firstBin));
    std::size_t at = 0;
    for (std::size_t bin = phases.firstBin; bin < endBin; ++bin) {
        const float power = std::norm(spectrum[bin]);
        const float scale = power > 0.0F ? 127.0F / std::sqrt(power) : 0.0F;
        phases.parts[at++] = static_cast<std::int8_t>(std::lrintf(spectrum[bin].real() * scale));
        phases.parts[at++] = static_cast<std::int8_t>(std::lrintf(spectrum[bin].imag() * scale));
    }
    return phases;
}

} // namespace vxlsync
