#ifndef VXL_SYNC_TESTS_READING_H
#define VXL_SYNC_TESTS_READING_H

#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "Wave.h"
#include "read/ReadWithin.h"
#include "read/Reader.h"

// What the tests of reading share.
namespace reading
{

constexpr std::size_t plenty = std::size_t{4} << 30U;

inline vxlsync::Source fileSource(const std::string& path)
{
    vxlsync::Source source;
    source.path = path;
    return source;
}

inline vxlsync::Source sampleSource(std::vector<float> samples, int rate)
{
    vxlsync::Source source;
    source.samples = std::move(samples);
    source.sampleRate = rate;
    return source;
}

inline vxlsync::Recording readSource(const vxlsync::Source& source,
                                     const vxlsync::Options& options = {},
                                     const vxlsync::ReadLimits& limits = {})
{
    vxlsync::Run run(1, plenty, {});
    return std::move(vxlsync::readWithin({source}, options, run, limits).front());
}

inline vxlsync::Recording readFile(const std::string& path, const vxlsync::Options& options = {},
                                   const vxlsync::ReadLimits& limits = {})
{
    return readSource(fileSource(path), options, limits);
}

// What one reader makes of a file by itself.
struct Direct {
    vxlsync::Recording recording;
    vxlsync::ReadFindings findings;
};

template <typename Reader>
Direct readWith(Reader&& reader, const std::string& path, const vxlsync::Options& options = {},
                bool bytesAsSigned = false)
{
    Direct result;
    vxlsync::Run run(1, plenty, {});
    const vxlsync::ReadLimits limits;
    vxlsync::Intake intake(result.recording, run, limits);
    result.findings = reader({path, options, limits, run.interrupt, bytesAsSigned}, intake);
    intake.finish();
    return result;
}

template <typename Stored>
std::vector<float> allOf(const vxlsync::SampleStore<Stored>& store)
{
    std::vector<float> samples(store.size());
    store.copy(0, samples.size(), samples.data());
    return samples;
}

inline std::vector<float> samplesOf(const vxlsync::Recording& recording)
{
    return allOf(recording.samples);
}

// True if the program ffmpeg did it.
inline bool encode(const std::string& arguments)
{
    const std::string command =
        VXL_SYNC_FFMPEG_PROGRAM " -v error -nostdin -y " + arguments + " 2>/dev/null";
    return std::system(command.c_str()) == 0;
}

// The name of a chunk of a Wave64 file, or of the whole, in 16 bytes, and its size in 8, which
// counts these.
constexpr std::uint64_t wideHeadBytes = 24;

inline void appendWideHead(wave::Bytes& bytes, const std::string& name, std::uint64_t size)
{
    wave::appendText(bytes, name);
    bytes.resize(bytes.size() + 12, 0xF3);
    wave::append32(bytes, static_cast<std::uint32_t>(size));
    wave::append32(bytes, static_cast<std::uint32_t>(size >> 32U));
}

inline wave::Bytes wave64Start()
{
    wave::Bytes bytes;
    appendWideHead(bytes, "riff", 0);
    wave::appendText(bytes, "wave");
    bytes.resize(bytes.size() + 12, 0xF3);
    return bytes;
}

// What stands before the sound, which is mono of 16 bits at 8000 Hz and claims `dataSize`: a note,
// the format and the head of the sound.
inline void appendWave64Sound(wave::Bytes& bytes, std::uint64_t dataSize)
{
    appendWideHead(bytes, "note", wideHeadBytes + 3);
    // Padded to a multiple of 8.
    bytes.resize(bytes.size() + 8);
    appendWideHead(bytes, "fmt ", wideHeadBytes + 16);
    const wave::Bytes format = wave::formatChunk(wave::Format());
    bytes.insert(bytes.end(), format.begin() + 8, format.end());
    appendWideHead(bytes, "data", dataSize);
}

inline wave::Bytes wave64(std::uint64_t dataSize)
{
    wave::Bytes bytes = wave64Start();
    appendWave64Sound(bytes, dataSize);
    return bytes;
}

} // namespace reading

#endif
