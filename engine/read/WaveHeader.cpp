#include "read/WaveHeader.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "read/LittleEndian.h"
#include "read/RiffChunks.h"

namespace vxlsync
{

namespace
{

bool startsWith(const unsigned char* bytes, const char* word)
{
    return std::memcmp(bytes, word, 4) == 0;
}

std::int64_t wideSizeAt(const InputFile& file, std::int64_t at)
{
    std::array<unsigned char, 16> sizes{};
    file.read(at, sizes.data(), sizes.size());
    return static_cast<std::int64_t>(littleEndian(sizes.data() + 8, 8));
}

// True if the format is one that is known.
bool readFormat(const InputFile& file, std::int64_t at, std::int64_t chunkBytes, WaveHeader& header)
{
    constexpr std::uint64_t integerTag = 1;
    constexpr std::uint64_t realTag = 3;
    constexpr std::uint64_t extensibleTag = 0xFFFE;
    std::array<unsigned char, 26> fields{};
    file.read(at, fields.data(), std::min(static_cast<std::size_t>(chunkBytes), fields.size()));
    std::uint64_t tag = littleEndian(fields.data(), 2);
    // The first two bytes of the long name of the coding are the tag it stands for.
    if (tag == extensibleTag) tag = littleEndian(fields.data() + 24, 2);
    const std::uint64_t bits = littleEndian(fields.data() + 14, 2);
    header.coding = tag == realTag ? WaveHeader::Coding::real : WaveHeader::Coding::integer;
    header.channels = static_cast<int>(littleEndian(fields.data() + 2, 2));
    header.rate = static_cast<std::int64_t>(littleEndian(fields.data() + 4, 4));
    // Samples of an odd width fill the upper bits of whole bytes.
    header.sampleBytes = static_cast<std::size_t>((bits + 7) / 8);
    const bool isInteger = tag == integerTag && bits >= 1 && bits <= 32;
    const bool isReal = tag == realTag && (bits == 32 || bits == 64);
    return (isInteger || isReal) && header.channels > 0;
}

// The sizes 0 and all ones are what recorders leave that were switched off, and what streams have.
std::int64_t dataBytesOf(std::int64_t chunkBytes, std::int64_t wideBytes)
{
    constexpr std::int64_t allOnes = 0xFFFFFFFF;
    if (wideBytes > 0) return wideBytes;
    return chunkBytes == 0 || chunkBytes == allOnes ? WaveHeader::runsToTheEnd : chunkBytes;
}

// Walks the chunks up to the sound, which comes after its format. Of several formats the first
// counts, as it does to FFmpeg.
std::optional<WaveHeader> walkChunks(const InputFile& file, std::int64_t at, bool isWide)
{
    WaveHeader header;
    bool isKnown = false;
    std::int64_t wideBytes = 0;
    RiffChunks chunks(file, at, file.size());
    while (const std::optional<RiffChunk> chunk = chunks.next()) {
        if (chunk->is("data")) {
            header.dataStart = chunk->at;
            header.dataBytes = dataBytesOf(chunk->bytes, wideBytes);
            return isKnown ? std::optional(header) : std::nullopt;
        }
        if (isWide && chunk->is("ds64")) wideBytes = wideSizeAt(file, chunk->at);
        if (chunk->is("fmt ") && !isKnown) {
            if (!readFormat(file, chunk->at, chunk->bytes, header)) return std::nullopt;
            isKnown = true;
        }
    }
    return std::nullopt;
}

bool isWave64(const InputFile& file)
{
    std::array<unsigned char, 28> start{};
    file.read(0, start.data(), start.size());
    // Names are 16 bytes long, which begin like these.
    return startsWith(start.data(), "riff") && startsWith(start.data() + 24, "wave");
}

// The same for a Wave64 file, whose chunks have a name of 16 bytes, then a size of 8 that counts
// both, and begin at multiples of 8.
std::optional<WaveHeader> walkWave64(const InputFile& file)
{
    // As in a RIFF file, more are no recording.
    constexpr int mostWave64Chunks = 1000;
    constexpr std::int64_t firstChunk = 40;
    constexpr std::size_t headBytes = 24;
    WaveHeader header;
    header.isWave64 = true;
    bool isKnown = false;
    std::int64_t at = firstChunk;
    for (int chunks = 0; chunks < mostWave64Chunks; ++chunks) {
        std::array<unsigned char, headBytes> head{};
        if (file.read(at, head.data(), headBytes) < headBytes) break;
        // Negative for what is no size, the zeros and ones of unknown ones among it.
        const auto bytes = static_cast<std::int64_t>(littleEndian(head.data() + 16, 8) - headBytes);
        at += static_cast<std::int64_t>(headBytes);
        if (startsWith(head.data(), "data")) {
            header.dataStart = at;
            header.dataBytes = bytes > 0 ? bytes : WaveHeader::runsToTheEnd;
            return isKnown ? std::optional(header) : std::nullopt;
        }
        // Nothing lies behind it.
        if (bytes < 0 || bytes > file.size()) break;
        if (startsWith(head.data(), "fmt ") && !isKnown) {
            if (!readFormat(file, at, bytes, header)) break;
            isKnown = true;
        }
        at += (bytes + 7) / 8 * 8;
    }
    return std::nullopt;
}

} // namespace

double WaveHeader::statedSeconds() const
{
    return static_cast<double>(dataBytes) / static_cast<double>(frameBytes()) /
           static_cast<double>(rate);
}

std::optional<WaveHeader> findWaveHeader(const InputFile& file)
{
    if (isWave64(file)) return walkWave64(file);
    std::array<unsigned char, 12> start{};
    const std::size_t got = file.read(0, start.data(), start.size());
    const bool isWide = startsWith(start.data(), "RF64");
    if (got < start.size() || (!isWide && !startsWith(start.data(), "RIFF")) ||
        !startsWith(start.data() + 8, "WAVE"))
        return std::nullopt;
    return walkChunks(file, static_cast<std::int64_t>(start.size()), isWide);
}

} // namespace vxlsync
