#ifndef VXL_SYNC_TESTS_EVENTS_H
#define VXL_SYNC_TESTS_EVENTS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Signals.h"
#include "model/Recording.h"

namespace events
{

constexpr std::size_t frame = 256;

// 20 s of an event that is noise of changing loudness, from so many frames into it.
inline std::vector<float> eventFrom(std::size_t startFrame)
{
    constexpr std::size_t samplesPerLoudness = 800;
    const std::size_t first = startFrame * frame;
    std::vector<float> samples = signals::noise(12345, first + 20 * signals::rate);
    std::uint32_t state = 1;
    float loudness = 0.0f;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (i % samplesPerLoudness == 0) {
            state = state * 1664525u + 1013904223u;
            loudness = static_cast<float>((state >> 20u) % 64u + 1u) / 64.0f;
        }
        samples[i] *= loudness;
    }
    return {samples.begin() + static_cast<std::ptrdiff_t>(first), samples.end()};
}

inline vxlsync::Recording recordingOf(const std::vector<float>& samples)
{
    vxlsync::Recording recording;
    recording.samples = signals::stored(samples);
    recording.durationSeconds = static_cast<double>(samples.size()) / signals::rate;
    return recording;
}

} // namespace events

#endif
