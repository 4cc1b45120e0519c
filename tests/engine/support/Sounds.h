#ifndef VXL_SYNC_TESTS_SOUNDS_H
#define VXL_SYNC_TESTS_SOUNDS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Wave.h"

namespace sounds
{

// Samples from one frame to the next, and the frames of a second: 8000 / 256.
constexpr std::size_t hop = 256;
constexpr float framesPerSecond = 31.25f;

// A WAV file of `seconds` seconds out of an event that is noise of changing loudness. It begins
// `startFrame` frames into the event. Events of different seeds have nothing in common.
wave::Bytes recordingOf(std::uint32_t event, std::size_t startFrame, std::size_t seconds);

} // namespace sounds

#endif
