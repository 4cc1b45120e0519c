#include "Recording.h"

#include <cstring>

namespace vxlsync
{

void CompactSamples::append(const float* values, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t bits = 0;
        std::memcpy(&bits, values + i, sizeof bits);
        words.push_back(static_cast<std::uint16_t>((bits + 0x8000U) >> 16U));
    }
}

float CompactSamples::operator[](std::size_t index) const
{
    const std::uint32_t bits = static_cast<std::uint32_t>(words[index]) << 16U;
    float value = 0.0F;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

void Recording::measure()
{
    durationSeconds = static_cast<double>(samples.size()) / analysisRate;
    meanSquare = 0.0;
    if (samples.empty()) return;
    double sum = 0.0;
    double squares = 0.0;
    for (const float sample : samples) {
        sum += static_cast<double>(sample);
        squares += static_cast<double>(sample) * static_cast<double>(sample);
    }
    const double count = static_cast<double>(samples.size());
    meanSquare = squares / count - (sum / count) * (sum / count);
}

} // namespace vxlsync
