#ifndef VXL_SYNC_TESTS_BROADCAST_H
#define VXL_SYNC_TESTS_BROADCAST_H

#include <cstdint>
#include <string>

#include "Wave.h"

// What recorders write into WAV files.
namespace broadcast
{

constexpr std::uint32_t rate = 8000;

// A text and zeros up to the width.
inline wave::Bytes field(const std::string& text, std::size_t width)
{
    wave::Bytes bytes(text.begin(), text.end());
    bytes.resize(width);
    return bytes;
}

// A chunk from a recorder called "camera a", which begins so many seconds after midnight.
inline wave::Bytes chunk(const std::string& date, const std::string& time, std::uint32_t seconds)
{
    wave::Bytes content = field("a remark", 256);
    wave::append(content, field("camera a", 32));
    wave::append(content, field("reference 7", 32));
    wave::append(content, field(date, 10));
    wave::append(content, field(time, 8));
    wave::append32(content, seconds * rate);
    wave::append32(content, 0);
    return wave::chunk("bext", content);
}

// A file of samples at `rate` with such a chunk before them.
inline wave::Bytes file(const wave::Bytes& broadcastChunk, const std::vector<int>& samples)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::append(bytes, broadcastChunk);
    wave::append(bytes, wave::chunk("data", wave::samples16(samples)));
    return bytes;
}

} // namespace broadcast

#endif
