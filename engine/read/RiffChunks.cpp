#include "read/RiffChunks.h"

#include "read/LittleEndian.h"

namespace vxlsync
{

namespace
{

// Files of recorders have a dozen chunks before their sound; a file of zeros is one empty chunk
// after the other.
constexpr int mostChunks = 1000;

} // namespace

std::optional<RiffChunk> RiffChunks::next()
{
    std::array<unsigned char, 8> head{};
    if (count == mostChunks || at + static_cast<std::int64_t>(head.size()) > end ||
        file.read(at, head.data(), head.size()) < head.size())
        return std::nullopt;
    ++count;
    RiffChunk chunk;
    std::memcpy(chunk.name.data(), head.data(), chunk.name.size());
    chunk.at = at + static_cast<std::int64_t>(head.size());
    chunk.bytes = static_cast<std::int64_t>(littleEndian(head.data() + 4, 4));
    // Chunks begin at even places.
    at = chunk.at + chunk.bytes + chunk.bytes % 2;
    return chunk;
}

} // namespace vxlsync
