// The bytes of a media file through the engine's readers.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "Harness.h"
#include "MemoryFile.h"
#include "read/Read.h"
#include "running/Run.h"
#include "vxl_sync/Sync.h"

namespace
{

using fuzz::require;
using vxlsync::Recording;

constexpr std::size_t memoryBytes = std::size_t{64} << 20U;

// The size of the file chooses, so that a file needs no byte that is not its own.
vxlsync::Options optionsFor(std::size_t size)
{
    vxlsync::Options options;
    switch (size % 8) {
    case 5:
        options.channel = vxlsync::Channel::mix;
        break;
    case 6:
        options.channel = vxlsync::Channel::numbered;
        options.channelNumber = 2;
        break;
    case 7:
        options.stream = 1;
        break;
    default:
        break;
    }
    return options;
}

bool isPlain(const std::string& text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(),
                                        [](char letter) { return letter >= ' ' && letter <= '~'; });
}

template <typename Stored>
void requireFinite(const vxlsync::SampleStore<Stored>& samples)
{
    constexpr std::size_t step = 4096;
    std::vector<float> block(step);
    for (std::size_t at = 0; at < samples.size(); at += step) {
        const std::size_t count = std::min(step, samples.size() - at);
        if (!samples.hasSound(at, count)) continue;
        samples.copy(at, count, block.data());
        require(std::all_of(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(count),
                            [](float sample) { return std::isfinite(sample); }),
                "samples are numbers");
    }
}

void requireSane(const Recording& recording)
{
    if (!recording.failure.empty()) {
        require(isPlain(recording.failure), "a failure in plain words");
        require(recording.samples.size() == 0 && recording.fine.size() == 0,
                "nothing of a file that failed");
        return;
    }
    require(std::isfinite(recording.meanSquare) && recording.meanSquare >= 0.0, "a mean square");
    require(std::isfinite(recording.durationSeconds) && recording.durationSeconds >= 0.0,
            "a duration");
    require(recording.samples.bytes() + recording.fine.bytes() <= memoryBytes,
            "no more memory than was allowed");
    for (const std::string& note : recording.notes)
        require(isPlain(note), "a note in plain words");
    requireFinite(recording.samples);
    requireFinite(recording.fine);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool isTamed = [] {
        vxlsync::silenceDecoders();
        vxlsync::boundDecoders();
        return true;
    }();
    static_cast<void>(isTamed);
    const fuzz::MemoryFile file(data, size);
    vxlsync::Source source;
    source.path = file.path();
    vxlsync::Run run(1, memoryBytes, {});
    const std::vector<Recording> recordings = vxlsync::readAll({source}, optionsFor(size), run);
    require(recordings.size() == 1, "one recording for one source");
    requireSane(recordings[0]);
    return 0;
}
