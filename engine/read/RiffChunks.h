#ifndef VXL_SYNC_RIFFCHUNKS_H
#define VXL_SYNC_RIFFCHUNKS_H

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>

#include "read/InputFile.h"

namespace vxlsync
{

// One part of a RIFF file.
struct RiffChunk {
    std::array<char, 4> name{};
    // Place of its content in the file, and the length that it claims.
    std::int64_t at = 0;
    std::int64_t bytes = 0;

    bool is(const char* word) const { return std::memcmp(name.data(), word, name.size()) == 0; }
};

// Walks the chunks between two places of a file.
class RiffChunks
{
public:
    // `newFile` is borrowed.
    RiffChunks(const InputFile& newFile, std::int64_t from, std::int64_t newEnd)
        : file(newFile), at(from), end(newEnd)
    {
    }

    // Nothing behind the last, and after so many that the file is no recording.
    std::optional<RiffChunk> next();

private:
    const InputFile& file;
    std::int64_t at;
    std::int64_t end;
    int count = 0;
};

} // namespace vxlsync

#endif
