#include "read/WaveFacts.h"

#include <algorithm>

#include "read/FactFields.h"
#include "read/LittleEndian.h"
#include "read/RiffChunks.h"

namespace vxlsync
{

namespace
{

// Behind "RIFF", a size and "WAVE".
constexpr std::int64_t firstChunk = 12;

std::string bytesOf(const InputFile& file, std::int64_t at, std::int64_t count)
{
    std::string bytes(static_cast<std::size_t>(count), '\0');
    bytes.resize(file.read(at, bytes.data(), bytes.size()));
    return bytes;
}

// A description of 256 bytes, two names of 32, a date of 10, a time of 8, and the samples since
// midnight in 8.
void readBroadcast(const InputFile& file, const RiffChunk& chunk, std::int64_t rate,
                   FileFacts& facts)
{
    constexpr std::int64_t descriptionBytes = 256;
    constexpr std::int64_t fieldBytes = 90;
    if (chunk.bytes < descriptionBytes + fieldBytes) return;
    const std::string fields = bytesOf(file, chunk.at + descriptionBytes, fieldBytes);
    if (fields.size() < static_cast<std::size_t>(fieldBytes)) return;
    facts.originator = factText(fields.substr(0, 32));
    facts.originatorReference = factText(fields.substr(32, 32));
    facts.created = parseDateTime(fields.substr(64, 10) + ' ' + fields.substr(74, 8));
    const auto* samples = reinterpret_cast<const unsigned char*>(fields.data()) + 82;
    setTimeReference(littleEndian(samples, 8), rate, facts);
}

void readRemarks(const InputFile& file, const RiffChunk& list, FileFacts& facts)
{
    constexpr std::int64_t kindBytes = 4;
    constexpr std::int64_t mostBytes = 256;
    if (bytesOf(file, list.at, kindBytes) != "INFO") return;
    RiffChunks remarks(file, list.at + kindBytes, list.at + list.bytes);
    while (const std::optional<RiffChunk> remark = remarks.next()) {
        const std::string text = bytesOf(file, remark->at, std::min(remark->bytes, mostBytes));
        if (remark->is("ISFT")) facts.encoder = factText(text);
        if (remark->is("ICRD") && !facts.created) facts.created = parseDateTime(text);
    }
}

} // namespace

FileFacts waveFactsOf(const InputFile& file, const WaveHeader& header)
{
    FileFacts facts;
    if (header.isWave64) return facts;
    RiffChunks before(file, firstChunk, header.dataStart);
    const auto readAll = [&](RiffChunks& chunks) {
        while (const std::optional<RiffChunk> chunk = chunks.next()) {
            if (chunk->is("bext")) readBroadcast(file, *chunk, header.rate, facts);
            if (chunk->is("LIST")) readRemarks(file, *chunk, facts);
        }
    };
    readAll(before);
    if (header.dataBytes == WaveHeader::runsToTheEnd || header.dataBytes > file.size())
        return facts;
    RiffChunks behind(file, header.dataStart + header.dataBytes + header.dataBytes % 2,
                      file.size());
    readAll(behind);
    return facts;
}

} // namespace vxlsync
