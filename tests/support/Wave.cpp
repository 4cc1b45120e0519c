#include "Wave.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

#include <gtest/gtest.h>

namespace wave
{

namespace
{

// A new folder under a name that nothing else has: test programs run side by side, and one that was
// killed leaves its folders behind. Answers false where the name is taken, so that no two programs
// get the same folder.
std::string makeFolder()
{
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::filesystem::path path = std::filesystem::path(testing::TempDir()) /
                                           ("vxl_audio_test_" + std::to_string(random()));
        std::error_code error;
        if (std::filesystem::create_directory(path, error)) return path.generic_string();
    }
    ADD_FAILURE() << testing::TempDir() << ": no folder could be made in it";
    return "";
}

} // namespace

void append16(Bytes& bytes, std::uint32_t value)
{
    bytes.push_back(static_cast<unsigned char>(value & 0xFFu));
    bytes.push_back(static_cast<unsigned char>((value >> 8u) & 0xFFu));
}

void append32(Bytes& bytes, std::uint32_t value)
{
    append16(bytes, value & 0xFFFFu);
    append16(bytes, value >> 16u);
}

void appendText(Bytes& bytes, const std::string& text)
{
    for (const char letter : text)
        bytes.push_back(static_cast<unsigned char>(letter));
}

void append(Bytes& bytes, const Bytes& more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes samples16(const std::vector<int>& samples)
{
    Bytes bytes;
    bytes.reserve(2 * samples.size());
    for (const int sample : samples)
        append16(bytes, static_cast<std::uint32_t>(sample));
    return bytes;
}

Bytes samplesFloat(const std::vector<float>& samples)
{
    Bytes bytes;
    bytes.reserve(4 * samples.size());
    for (const float sample : samples) {
        std::uint32_t bits = 0;
        std::memcpy(&bits, &sample, sizeof(bits));
        append32(bytes, bits);
    }
    return bytes;
}

Format format(std::uint32_t tag, std::uint32_t channels, std::uint32_t bits)
{
    Format result;
    result.tag = tag;
    result.channels = channels;
    result.bits = bits;
    return result;
}

Bytes riffStart()
{
    Bytes bytes;
    appendText(bytes, "RIFF");
    append32(bytes, 0x12345678u);
    appendText(bytes, "WAVE");
    return bytes;
}

Bytes chunk(const std::string& id, const Bytes& content)
{
    Bytes bytes;
    appendText(bytes, id);
    append32(bytes, static_cast<std::uint32_t>(content.size()));
    append(bytes, content);
    return bytes;
}

Bytes formatChunk(const Format& format)
{
    const std::uint32_t frameBytes = format.channels * (format.bits / 8u);
    Bytes bytes;
    appendText(bytes, "fmt ");
    append32(bytes, format.chunkSize);
    append16(bytes, format.tag);
    append16(bytes, format.channels);
    append32(bytes, format.sampleRate);
    append32(bytes, format.sampleRate * frameBytes);
    append16(bytes, frameBytes);
    append16(bytes, format.bits);
    for (std::uint32_t i = 16; i < format.chunkSize; ++i)
        bytes.push_back(0);
    return bytes;
}

Bytes file(const Format& format, const Bytes& data)
{
    return fileClaiming(format, static_cast<std::uint32_t>(data.size()), data);
}

Bytes fileClaiming(const Format& format, std::uint32_t dataBytes, const Bytes& data)
{
    Bytes bytes = riffStart();
    append(bytes, formatChunk(format));
    appendText(bytes, "data");
    append32(bytes, dataBytes);
    append(bytes, data);
    return bytes;
}

Bytes file16(const std::vector<int>& samples, std::uint32_t sampleRate)
{
    Format mono;
    mono.sampleRate = sampleRate;
    return file(mono, samples16(samples));
}

void writeFile(const std::string& path, const Bytes& bytes)
{
    std::ofstream stream(std::filesystem::u8path(path), std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    stream.close();
    EXPECT_TRUE(stream.good()) << path << ": could not be written";
}

Bytes readFile(const std::string& path)
{
    std::ifstream stream(std::filesystem::u8path(path), std::ios::binary);
    EXPECT_TRUE(stream.good()) << path << ": could not be opened";
    const std::string text{std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>()};
    return Bytes(text.begin(), text.end());
}

TempFolder::TempFolder() : path(makeFolder()) {}

TempFolder::~TempFolder()
{
    std::error_code error;
    std::filesystem::remove_all(path, error);
}

std::string TempFolder::operator/(const std::string& name) const
{
    return path + "/" + name;
}

std::string TempFolder::write(const std::string& name, const Bytes& bytes) const
{
    writeFile(*this / name, bytes);
    return *this / name;
}

} // namespace wave
