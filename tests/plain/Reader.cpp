#include "plain/Reader.h"

#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace plain
{

namespace
{

[[noreturn]] void fail(const std::string& what)
{
    throw std::runtime_error("wavfile_t::wavfile_t() : " + what);
}

} // namespace

Reader::Reader(const std::string& path)
{
    // A directory or a pipe counts as a file that cannot be opened.
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored)) stream.open(path, std::ios::binary);
    stream.seekg(0);

    if (word() != "RIFF") fail("File doesn't start with 'RIFF'");
    skip(4);
    if (word() != "WAVE") fail("File doesn't have 'WAVE' id");

    findChunk("fmt ");
    const std::uint32_t formatSize = field<std::uint32_t>();
    const std::int16_t formatTag = field<std::int16_t>();
    channels = field<std::int16_t>();
    sampleRate = field<std::uint32_t>();
    field<std::uint32_t>();
    skip(2);
    bitsPerSample = field<std::int16_t>();
    const bool knownWidth = bitsPerSample == 8 || bitsPerSample == 16 || bitsPerSample == 32;
    if (formatTag >= 2 && !knownWidth) {
        fail("WAVE file isn't PCM VXFloat,16-bit or 8-bit, can't read that format");
    }
    // In 32 bits, so that a chunk too small skips nearly 4 GiB ahead and never back.
    skip(formatSize - 16);

    findChunk("data");
    const std::uint32_t dataSize = field<std::uint32_t>();
    const std::uint32_t sampleBytes = static_cast<std::uint32_t>(bitsPerSample / 8);
    if (sampleBytes == 0) fail("no sample width");
    if (channels <= 0) fail("no channels");
    frameCount = dataSize / sampleBytes / static_cast<std::uint32_t>(channels);
    // A stream that failed here has come to the file's end, which it would not tell.
    if (stream.good()) {
        dataStart = stream.tellg();
    } else {
        dataStart = static_cast<std::streamoff>(std::filesystem::file_size(path));
    }
}

// Bytes that the file does not hold are 0.
template <typename T>
T Reader::field()
{
    char bytes[sizeof(T)] = {};
    stream.read(bytes, sizeof bytes);
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

std::string Reader::word()
{
    char bytes[4] = {};
    stream.read(bytes, sizeof bytes);
    return std::string(bytes, sizeof bytes);
}

void Reader::skip(std::uint32_t bytes)
{
    stream.seekg(static_cast<std::ifstream::off_type>(bytes), std::ios::cur);
}

void Reader::findChunk(const std::string& id)
{
    while (true) {
        if (!stream.good()) fail("Could not locate '" + id + "' chunk");
        if (word() == id) return;
        skip(field<std::uint32_t>());
    }
}

void Reader::read(std::vector<float>& block)
{
    if (bitsPerSample != 8 && bitsPerSample != 16 && bitsPerSample != 32) return;
    const std::size_t frameBytes = static_cast<std::size_t>(channels * (bitsPerSample / 8));
    // Once a call, so that a read past the end repeats what this call read last.
    std::vector<char> frame(frameBytes, 0);
    if (stream.eof()) return;
    for (float& sample : block) {
        stream.read(frame.data(), static_cast<std::streamsize>(frameBytes));
        if (bitsPerSample == 8) {
            sample = static_cast<float>(static_cast<signed char>(frame[0])) * 0.0078125f;
        } else if (bitsPerSample == 16) {
            std::int16_t value;
            std::memcpy(&value, frame.data(), sizeof value);
            sample = static_cast<float>(value) * 0.000030517578125f;
        } else {
            std::memcpy(&sample, frame.data(), sizeof sample);
        }
        if (stream.eof()) return;
    }
}

void Reader::rewind()
{
    stream.clear();
    stream.seekg(dataStart);
}

} // namespace plain
