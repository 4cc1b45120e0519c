#include "read/WaveHeader.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "read/LittleEndian.h"

namespace vxlsync
{

namespace
{

// Files of recorders have a dozen chunks before their sound; a file of zeros is one empty chunk
// after the other.
constexpr int mostChunks = 1000;

// How the chunks of a file lie in it.
struct ChunkForm {
    // Place of the first one.
    std::int64_t start;
    // Name and size in front of what a chunk holds. The size takes the last bytes of them.
    std::size_t headBytes;
    std::size_t sizeBytes;
    // What the size counts besides what the chunk holds.
    std::size_t countedBytes;
    // Chunks begin at multiples of it.
    std::int64_t alignment;
};

constexpr ChunkForm riffForm{12, 8, 4, 0, 2};
constexpr ChunkForm wave64Form{40, 24, 8, 24, 8};
// Of both.
constexpr std::size_t mostHeadBytes = 24;

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

// Bytes that the chunk holds; what is no size comes out negative.
std::int64_t contentBytes(const unsigned char* head, const ChunkForm& form)
{
    const unsigned char* size = head + form.headBytes - form.sizeBytes;
    return static_cast<std::int64_t>(littleEndian(size, form.sizeBytes) - form.countedBytes);
}

// The sizes 0 and all ones are what recorders leave that were switched off, and what streams have.
// RF64 files have them where the wide size counts.
std::int64_t dataBytesOf(std::int64_t chunkBytes, std::int64_t wideBytes, const ChunkForm& form)
{
    constexpr std::int64_t allOnes = 0xFFFFFFFF;
    const bool isAllOnes = form.sizeBytes == sizeof(std::uint32_t) && chunkBytes == allOnes;
    if (chunkBytes > 0 && !isAllOnes) return chunkBytes;
    return wideBytes > 0 ? wideBytes : WaveHeader::runsToTheEnd;
}

// Walks the chunks up to the sound, which comes after its format.
std::optional<WaveHeader> walkChunks(const InputFile& file, const ChunkForm& form)
{
    WaveHeader header;
    bool isKnown = false;
    std::int64_t wideBytes = 0;
    std::int64_t at = form.start;
    for (int chunks = 0; chunks < mostChunks; ++chunks) {
        std::array<unsigned char, mostHeadBytes> head{};
        if (file.read(at, head.data(), form.headBytes) < form.headBytes) break;
        const std::int64_t bytes = contentBytes(head.data(), form);
        at += static_cast<std::int64_t>(form.headBytes);
        if (startsWith(head.data(), "data")) {
            header.dataStart = at;
            header.dataBytes = dataBytesOf(bytes, wideBytes, form);
            return isKnown ? std::optional(header) : std::nullopt;
        }
        // Nothing lies behind it.
        if (bytes < 0 || bytes > file.size()) break;
        if (startsWith(head.data(), "ds64")) wideBytes = wideSizeAt(file, at);
        if (startsWith(head.data(), "fmt ")) isKnown = readFormat(file, at, bytes, header);
        at = (at + bytes + form.alignment - 1) / form.alignment * form.alignment;
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
    std::array<unsigned char, 28> start{};
    file.read(0, start.data(), start.size());
    const bool isRiff = startsWith(start.data(), "RIFF") || startsWith(start.data(), "RF64");
    if (isRiff && startsWith(start.data() + 8, "WAVE")) return walkChunks(file, riffForm);
    // Its names are 16 bytes long and begin like these.
    if (startsWith(start.data(), "riff") && startsWith(start.data() + 24, "wave"))
        return walkChunks(file, wave64Form);
    return std::nullopt;
}

} // namespace vxlsync
