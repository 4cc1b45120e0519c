// The bytes of a WAV file through loadFile and run, beside the plain reader and extractor.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Bytes.h"
#include "Comparison.h"
#include "Console.h"
#include "Harness.h"
#include "MemoryFile.h"
#include "Sound.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "plain/Reader.h"
#include "support/Bits.h"
#include "support/twin/Comparison.h"
#include "wavfile.h"

namespace
{

using fuzz::Bytes;
using fuzz::require;

constexpr std::int64_t fileID = 3;

// The reader passes over the size in the RIFF header, so that it is free to choose the parameters.
// Small transforms make frames of short files.
plain::Parameters parametersOf(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t riffSizeAt = 4;
    Bytes bytes(nullptr, 0);
    if (size > riffSizeAt)
        bytes = Bytes(data + riffSizeAt, std::min<std::size_t>(size - riffSizeAt, 4));
    plain::Parameters parameters;
    const std::uint32_t fftSize = bytes.pick({64u, 512u, 8u, 16u, 32u, 128u, 256u, 1024u});
    parameters.fftSize = fftSize;
    parameters.hopSize =
        bytes.pick({fftSize / 2u, fftSize / 4u, fftSize, fftSize + 1u, fftSize / 2u - 3u});
    parameters.maxPairsPerPeak = bytes.pick({10u, 0u, 3u});
    return parameters;
}

std::unique_ptr<plain::Reader> openPlain(const std::string& path)
{
    try {
        return std::make_unique<plain::Reader>(path);
    } catch (const std::runtime_error&) {
        return nullptr;
    }
}

// Reads past the end, with blocks of several lengths, twice.
void compareReading(VXS::wavfile_t& file, plain::Reader& reader, std::size_t size)
{
    constexpr float held = 0.375f;
    require(file.channels == reader.channels, "the twin's channels");
    require(file.frames == reader.frames(), "the twin's frames");
    require(file.sampleRate == reader.sampleRate, "the twin's rate");
    for (const std::size_t blockSize : {std::size_t{7}, std::size_t{256}, size / 2 + 3}) {
        file.rewind();
        reader.rewind();
        for (std::size_t read = 0; read < size + 4 * blockSize; read += blockSize) {
            VXS::array<float> block(static_cast<std::int32_t>(blockSize));
            std::fill(block.data, block.data + blockSize, held);
            std::vector<float> expected(blockSize, held);
            require(file.read_mono<float>(block), "a read that answers true");
            reader.read(expected);
            require(support::sameBits(block.data, expected.data(), blockSize),
                    "the twin's samples");
        }
        // Of many channels or wide samples the smallest blocks show all that there is to show.
        if (reader.channels > 40) break;
    }
    file.rewind();
    reader.rewind();
}

// The twin's source for the extractor is the reader itself.
void compareLandmarks(VXS::VXLandmarkExtract& extractor, const std::string& path,
                      plain::Reader& reader, const plain::Parameters& parameters)
{
    plain::Extractor twin(parameters);
    plain::Recording recording(fileID);
    twin.run(reader, recording);
    for (int i = 0; i < 2; ++i) {
        const std::unique_ptr<VXS::VXFile> file(extractor.run(path, fileID));
        require(file != nullptr, "a file of what was loaded before");
        fuzz::requireSamePeaks(extractor, twin);
        fuzz::requireSameLandmarks(*file, recording);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const fuzz::SilentConsole silence;
    const fuzz::MemoryFile memory(data, size);
    const std::string path = memory.path();
    plain::Parameters parameters = parametersOf(data, size);
    const std::unique_ptr<plain::Reader> reader = openPlain(path);

    VXS::VXExtractParams params = twins::toLibrary(parameters);
    // Files of any rate are analysed, if it is one that the parameters can name.
    const bool isRateKnown = reader != nullptr && params.setSampleRate(reader->sampleRate);
    const bool isLoaded =
        reader != nullptr && (isRateKnown || reader->sampleRate == params.getSampleRate());
    VXS::VXLandmarkExtract extractor(params);
    const std::unique_ptr<VXS::wavfile_t> file(extractor.loadFile(path));
    require((file != nullptr) == isLoaded, "the files that the twin can read, and no others");
    if (file == nullptr) return 0;

    compareReading(*file, *reader, size);
    // What is claimed beyond the file is silence and much of it takes long.
    if (reader->frames() > fuzz::affordableClaim(parameters)) return 0;
    compareLandmarks(extractor, path, *reader, parameters);
    return 0;
}
