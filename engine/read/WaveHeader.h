#ifndef VXL_SYNC_WAVEHEADER_H
#define VXL_SYNC_WAVEHEADER_H

#include <cstddef>
#include <cstdint>
#include <optional>

#include "read/InputFile.h"

namespace vxlsync
{

// What a WAV file says of its sound: RIFF, RF64 or Wave64.
struct WaveHeader {
    enum class Coding { integer, real };

    // For `dataBytes`.
    static constexpr std::int64_t runsToTheEnd = -1;

    Coding coding = Coding::integer;
    // At least one.
    int channels = 0;
    std::int64_t rate = 0;
    // From 1 to 4 of an integer, 4 or 8 of a real number.
    std::size_t sampleBytes = 0;
    // Place and length of the sound in the file, which may be shorter.
    std::int64_t dataStart = 0;
    std::int64_t dataBytes = runsToTheEnd;
    // Its chunks are not those of a RIFF file.
    bool isWave64 = false;

    std::size_t frameBytes() const { return static_cast<std::size_t>(channels) * sampleBytes; }
    // Length of the sound, negative if it is not known. Requires a rate.
    double statedSeconds() const;
};

// Nothing for a file that is none or whose samples are coded in another way.
std::optional<WaveHeader> findWaveHeader(const InputFile& file);

} // namespace vxlsync

#endif
