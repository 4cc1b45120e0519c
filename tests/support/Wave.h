#ifndef VXS_TESTS_SUPPORT_WAVE_H
#define VXS_TESTS_SUPPORT_WAVE_H

#include <cstdint>
#include <string>
#include <vector>

// WAV files for tests: put together byte by byte, so that a test can break them where it wants.
namespace wave
{

using Bytes = std::vector<unsigned char>;

void append16(Bytes& bytes, std::uint32_t value);
void append32(Bytes& bytes, std::uint32_t value);
void appendText(Bytes& bytes, const std::string& text);
void append(Bytes& bytes, const Bytes& more);

// Little-endian bytes of 16-bit and of 32-bit float samples.
Bytes samples16(const std::vector<int>& samples);
Bytes samplesFloat(const std::vector<float>& samples);

// The fields of a format chunk. `chunkSize` is what the chunk claims; bytes beyond the 16 of its
// fields are written as zeros.
struct Format {
    std::uint32_t tag = 1;
    std::uint32_t channels = 1;
    std::uint32_t sampleRate = 8000;
    std::uint32_t bits = 16;
    std::uint32_t chunkSize = 16;
};

Format format(std::uint32_t tag, std::uint32_t channels, std::uint32_t bits);

// "RIFF", the size and "WAVE". No reader of the library looks at the size.
Bytes riffStart();
// Id, true size and content, without a pad byte.
Bytes chunk(const std::string& id, const Bytes& content);
Bytes formatChunk(const Format& format);
// A whole file: header, format chunk, data chunk.
Bytes file(const Format& format, const Bytes& data);
// The same with a size of the data chunk that need not be true.
Bytes fileClaiming(const Format& format, std::uint32_t dataBytes, const Bytes& data);
// A mono 16-bit file.
Bytes file16(const std::vector<int>& samples, std::uint32_t sampleRate = 8000);

void writeFile(const std::string& path, const Bytes& bytes);
Bytes readFile(const std::string& path);

// A folder of its own under the temporary directory, removed with all that is in it.
class TempFolder
{
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // Path of an entry of the folder, which need not exist.
    std::string operator/(const std::string& name) const;
    // Writes the file and returns its path.
    std::string write(const std::string& name, const Bytes& bytes) const;

    const std::string path;
};

} // namespace wave

#endif
