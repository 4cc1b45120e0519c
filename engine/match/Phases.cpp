#include "match/Phases.h"

#include <algorithm>
#include <cmath>

#include "match/Band.h"

namespace vxlsync
{

namespace
{

struct Bins {
    std::size_t first;
    std::size_t end;
};

// Those of the band.
Bins bandBins(std::size_t length, int rate)
{
    const double binsPerHertz = static_cast<double>(length) / rate;
    return {static_cast<std::size_t>(std::ceil(lowestFrequency * binsPerHertz)),
            std::min(length / 2, static_cast<std::size_t>(highestFrequency * binsPerHertz)) + 1};
}

// What a part of 1 is stored as.
constexpr float wholePart = 127.0f;

} // namespace

CorrelationSpace::CorrelationSpace(std::size_t length, const Interrupt& interrupt)
    : transform(length, interrupt), spectrum(transform.bins()), samples(length)
{
}

std::size_t bytesOfSpace(std::size_t length)
{
    return length / 2 * sizeof(Spectrum::value_type) + length * sizeof(float);
}

std::size_t bytesOfPhases(std::size_t length, int rate)
{
    const Bins bins = bandBins(length, rate);
    return 2 * (bins.end - bins.first);
}

Phases phasesOf(const SampleStore<float>& samples, std::size_t start, std::size_t count, int rate,
                CorrelationSpace& space)
{
    Phases phases;
    phases.length = space.transform.length();
    const Bins bins = bandBins(phases.length, rate);
    phases.firstBin = bins.first;
    if (!samples.hasSound(start, count)) return phases;

    samples.copy(start, count, space.samples.data());
    std::fill(space.samples.begin() + static_cast<std::ptrdiff_t>(count), space.samples.end(),
              0.0f);
    space.transform.forward(space.samples.data(), space.spectrum.data());
    phases.parts.reserve(2 * (bins.end - bins.first));
    for (std::size_t bin = bins.first; bin < bins.end; ++bin) {
        const std::complex<float> value = space.spectrum[bin];
        const float power = std::norm(value);
        const float scale = power > 0.0f ? wholePart / std::sqrt(power) : 0.0f;
        phases.parts.push_back(static_cast<std::int8_t>(std::lrintf(value.real() * scale)));
        phases.parts.push_back(static_cast<std::int8_t>(std::lrintf(value.imag() * scale)));
    }
    return phases;
}

} // namespace vxlsync
