#include "Sound.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace fuzz
{

namespace
{

void appendTone(Bytes& bytes, std::size_t count, Samples& samples)
{
    const float step = static_cast<float>(bytes.byte()) / 81.0f;
    const float level = static_cast<float>(bytes.byte()) / 255.0f;
    for (std::size_t i = 0; i < count; ++i)
        samples.push_back(level * std::sin(step * static_cast<float>(i)));
}

void appendNoise(Bytes& bytes, std::size_t count, Samples& samples)
{
    std::uint32_t state = bytes.raw<std::uint16_t>();
    const float level = std::ldexp(1.0f, bytes.between(-80, 70)) / 2147483648.0f;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        samples.push_back(level * (static_cast<float>(state) - 2147483648.0f));
    }
}

void appendSquare(Bytes& bytes, std::size_t count, Samples& samples)
{
    const std::size_t half = bytes.byte() + std::size_t{1};
    const float level = bytes.raw<float>();
    for (std::size_t i = 0; i < count; ++i)
        samples.push_back(i / half % 2 == 0 ? level : -level);
}

void appendGrowth(Bytes& bytes, std::size_t count, Samples& samples)
{
    float level = std::ldexp(1.0f, bytes.between(-149, 20));
    const float factor = 1.0f + static_cast<float>(bytes.byte()) / 256.0f;
    for (std::size_t i = 0; i < count; ++i) {
        samples.push_back(i % 3 == 0 ? level : -level);
        level *= factor;
    }
}

void appendClicks(Bytes& bytes, std::size_t count, Samples& samples)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float greatest = std::numeric_limits<float>::max();
    constexpr float tiniest = std::numeric_limits<float>::denorm_min();
    const float click = bytes.pick({1.0f, -1.0f, nan, infinity, -infinity, greatest, -greatest,
                                    tiniest, -0.0f, 1e19f, 1e-20f});
    const std::size_t period = bytes.byte() + std::size_t{1};
    for (std::size_t i = 0; i < count; ++i)
        samples.push_back(i % period == 0 ? click : 0.0f);
}

void appendBytes(Bytes& bytes, Samples& samples)
{
    for (std::size_t count = bytes.byte(); count > 0 && !bytes.empty(); --count)
        samples.push_back(static_cast<float>(bytes.raw<std::int8_t>()) * 0.0078125f);
}

void appendFloats(Bytes& bytes, Samples& samples)
{
    for (std::size_t count = bytes.below(32); count > 0 && !bytes.empty(); --count)
        samples.push_back(bytes.raw<float>());
}

// The front of the sound once more, so that one recording holds a sound twice.
void appendEcho(Bytes& bytes, std::size_t count, Samples& samples)
{
    const std::size_t begin = samples.size();
    const float level = static_cast<float>(bytes.byte()) / 128.0f;
    for (std::size_t i = 0; i < std::min(count, begin); ++i)
        samples.push_back(level * samples[i]);
}

} // namespace

Samples soundOf(Bytes& bytes, std::size_t mostSamples)
{
    Samples samples;
    while (!bytes.empty() && samples.size() < mostSamples) {
        const std::uint32_t kind = bytes.below(10);
        const std::size_t count = kind < 8 ? bytes.byte() * std::size_t{8} : 0;
        switch (kind) {
        case 0:
            samples.resize(samples.size() + count, 0.0f);
            break;
        case 1:
        case 2:
            appendTone(bytes, count, samples);
            break;
        case 3:
            appendNoise(bytes, count, samples);
            break;
        case 4:
            appendSquare(bytes, count, samples);
            break;
        case 5:
            appendGrowth(bytes, count, samples);
            break;
        case 6:
            appendClicks(bytes, count, samples);
            break;
        case 7:
            appendEcho(bytes, count, samples);
            break;
        case 8:
            appendBytes(bytes, samples);
            break;
        default:
            appendFloats(bytes, samples);
            break;
        }
    }
    if (samples.size() > mostSamples) samples.resize(mostSamples);
    return samples;
}

plain::Parameters parametersOf(Bytes& bytes)
{
    constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    plain::Parameters parameters;
    const std::uint32_t size = 8u << bytes.pick({3u, 3u, 0u, 1u, 2u, 4u, 5u, 6u, 7u, 9u});
    parameters.fftSize = size;
    const std::uint32_t hop =
        bytes.pick({size / 2u, size / 2u, size / 4u, size / 8u | 1u, size / 2u + 3u, size - 1u,
                    size, size + 1u, 3u * size + 1u, 1u, bytes.byte() + 1u});
    // Of a large transform and a short hop the frames behind the last sample alone are too many.
    parameters.hopSize = std::max(hop, size / 64u);
    parameters.maxPairsPerPeak = bytes.pick({10u, 10u, 0u, 1u, 3u, 40u, none});
    if (bytes.pick({true, true, false})) return parameters;

    parameters.frequencyRange = bytes.pick({62u, 0u, 1u, none});
    parameters.timeRange = bytes.pick({126u, 0u, 1u, 7u, 2000u, none});
    parameters.initialFrames = bytes.pick({10u, 0u, 1u, 2u, 5u});
    parameters.maxPeaksPerFrame = bytes.pick({5u, 0u, 1u, 2u, 20u, size > 128u ? 20u : none});
    parameters.maskHeight = bytes.pick({40.0f, 0.0f, 0.1f, -10.0f, 200.0f});
    parameters.peakFloor = bytes.pick({-60.0f, -3.0f, 0.0f, 10.0f, -400.0f});
    parameters.thresholdDecay = bytes.pick({0.2f, 0.0f, -0.3f, 1e-3f, 3.0f, 30.0f});
    parameters.maskWidth = bytes.pick({25.0f, 1.0f, 0.5f, 300.0f, 1e-30f, -25.0f});
    return parameters;
}

std::uint32_t affordableClaim(const plain::Parameters& parameters)
{
    constexpr std::uint64_t budget = std::uint64_t{1} << 18u;
    const std::uint64_t bins = parameters.fftSize / 2;
    // Every second bin at most is a peak.
    const std::uint64_t peaks = std::min<std::uint64_t>(parameters.maxPeaksPerFrame, bins / 2);
    const std::uint64_t partners = std::min<std::uint64_t>(
        parameters.maxPairsPerPeak, peaks * std::min(parameters.timeRange, 1000u));
    const std::uint64_t costOfFrame = bins * (16 + peaks) + 32 * peaks * partners;
    const std::uint64_t frames = std::max<std::uint64_t>(12, budget / costOfFrame);
    return static_cast<std::uint32_t>(frames * parameters.hopSize);
}

} // namespace fuzz
