#include "Sounds.h"

namespace sounds
{

wave::Bytes recordingOf(std::uint32_t event, std::size_t startFrame, std::size_t seconds)
{
    constexpr std::size_t sampleRate = 8000;
    constexpr std::size_t samplesPerLoudness = 800;
    const std::size_t first = startFrame * hop;
    const std::size_t end = first + seconds * sampleRate;
    std::uint32_t state = event;
    std::int32_t loudness = 0;
    std::vector<int> samples;
    for (std::size_t i = 0; i < end; ++i) {
        state = state * 1664525u + 1013904223u;
        if (i % samplesPerLoudness == 0) {
            loudness = static_cast<std::int32_t>((state >> 20u) % 64u) + 1;
        }
        const std::int32_t raw = static_cast<std::int32_t>(state >> 16u) - 32768;
        if (i >= first) samples.push_back(raw * loudness / 128);
    }
    return wave::file16(samples);
}

} // namespace sounds
