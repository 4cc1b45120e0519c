#ifndef VXL_SYNC_TESTS_SIGNALS_H
#define VXL_SYNC_TESTS_SIGNALS_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/SampleStore.h"

// Sounds for the units that take samples.
namespace signals
{

constexpr int rate = 8000;

// Noise between -0.5 and 0.5, the same for the same seed.
inline std::vector<float> noise(std::uint32_t seed, std::size_t count)
{
    std::vector<float> samples(count);
    std::uint32_t state = seed * 2654435761U + 1U;
    for (float& sample : samples) {
        state = state * 1664525U + 1013904223U;
        sample = static_cast<float>(state >> 8U) / 16777216.0f - 0.5f;
    }
    return samples;
}

inline std::vector<float> part(const std::vector<float>& samples, std::size_t start,
                               std::size_t count)
{
    const auto from = samples.begin() + static_cast<std::ptrdiff_t>(start);
    return {from, from + static_cast<std::ptrdiff_t>(count)};
}

// `level` times the second added to the first.
inline std::vector<float> mixed(std::vector<float> samples, const std::vector<float>& other,
                                float level)
{
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] += level * other[i];
    return samples;
}

inline std::vector<float> tone(double frequency, std::size_t count)
{
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<float>(
            0.3 * std::sin(2.0 * std::acos(-1.0) * frequency * static_cast<double>(i) / rate));
    }
    return samples;
}

// Slowly changing sound below 1 kHz as a clock reads it that runs slow by `ppm`: sample n is what
// happens at n * (1 + ppm / 1e6).
inline std::vector<float> chirps(double ppm, std::size_t count, double start = 0.0)
{
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = start + static_cast<double>(i) * (1.0 + ppm * 1e-6) / rate;
        double sum = 0.0;
        // Sweeps of unrelated length never meet in the same way twice.
        for (const double period : {0.73, 1.09, 1.61, 2.03, 2.77}) {
            const double phase = std::fmod(t, period);
            sum +=
                std::sin(2.0 * std::acos(-1.0) * (150.0 * phase + 900.0 * phase * phase / period));
        }
        samples[i] = static_cast<float>(0.1 * sum);
    }
    return samples;
}

inline vxlsync::SampleStore<float> stored(const std::vector<float>& samples)
{
    vxlsync::SampleStore<float> store;
    store.append(samples.data(), samples.size());
    return store;
}

inline std::vector<float> samplesOf(const vxlsync::SampleStore<float>& store)
{
    std::vector<float> samples(store.size());
    store.copy(0, samples.size(), samples.data());
    return samples;
}

} // namespace signals

#endif
