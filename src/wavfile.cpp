#include "wavfile.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <locale>
#include <stdexcept>
#include <system_error>

#include "VXLandmarkExtract.h"

namespace VXS
{

namespace
{

constexpr unsigned int openForReading = 8;
constexpr unsigned int openForWriting = 16;
constexpr std::int32_t reading = 1;
constexpr std::int32_t writing = 2;
constexpr std::size_t idBytes = 4;
constexpr std::size_t readBufferBytes = 16384;
constexpr std::streamsize nearBytes = 4096;

// Opening a directory, a pipe or a device could block or read without end.
bool isRegularFile(const std::filesystem::path& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

bool canBeWritten(const std::filesystem::path& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) || !std::filesystem::exists(path, error);
}

// What a truncated file does not fill stays 0. The stream's flags stay set from then on, so that
// nothing after the short read is read either.
template <typename T>
T readField(std::fstream& stream)
{
    char bytes[sizeof(T)] = {};
    stream.read(bytes, sizeof(T));
    T value;
    std::memcpy(&value, bytes, sizeof(T));
    return value;
}

std::string readId(std::fstream& stream)
{
    char bytes[idBytes] = {};
    stream.read(bytes, idBytes);
    return std::string(bytes, idBytes);
}

void skip(std::fstream& stream, std::uint32_t bytes)
{
    // A seek drops the stream's buffer, so that a file of many small chunks, or of zeros, which are
    // empty ones, would be read anew for each.
    const std::streamsize inBuffer =
        std::min<std::streamsize>(stream.rdbuf()->in_avail(), nearBytes);
    if (static_cast<std::streamsize>(bytes) <= inBuffer) {
        stream.ignore(static_cast<std::streamsize>(bytes));
        return;
    }
    stream.seekg(static_cast<std::fstream::off_type>(bytes), std::ios::cur);
}

template <typename T>
void writeField(std::fstream& stream, T value)
{
    char bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof(T));
    stream.write(bytes, sizeof(T));
}

float toFloat(std::int8_t sample)
{
    return static_cast<float>(sample) * 0.0078125f;
}

float toFloat(std::int16_t sample)
{
    return static_cast<float>(sample) * 0.000030517578125f;
}

float toFloat(float sample)
{
    return sample;
}

template <typename Sample>
float firstSample(const char* frame)
{
    Sample sample;
    std::memcpy(&sample, frame, sizeof(Sample));
    return toFloat(sample);
}

// Reads `count` sample frames a bufferful at a time. The result is what reading them one by one
// into one scratch frame gives, the end of the file included.
template <typename Sample>
void readSamples(std::fstream& stream, std::vector<char>& buffer, std::size_t frameBytes,
                 float* samples, std::size_t count)
{
    const std::size_t framesPerRead = buffer.size() / frameBytes;
    char scratch[sizeof(Sample)] = {};
    std::size_t done = 0;
    while (done < count) {
        const std::size_t wanted = std::min(framesPerRead, count - done);
        stream.read(buffer.data(), static_cast<std::streamsize>(wanted * frameBytes));
        const auto bytes = static_cast<std::size_t>(stream.gcount());
        const std::size_t whole = bytes / frameBytes;
        for (std::size_t i = 0; i < whole; ++i) {
            samples[done + i] = firstSample<Sample>(buffer.data() + i * frameBytes);
        }
        done += whole;
        if (whole > 0) {
            std::memcpy(scratch, buffer.data() + (whole - 1) * frameBytes, sizeof(Sample));
        }
        if (whole == wanted) continue;

        // A frame cut short lies over the frame before it, and what that gives is stored.
        std::memcpy(scratch, buffer.data() + whole * frameBytes,
                    std::min(bytes - whole * frameBytes, sizeof(Sample)));
        const std::size_t stop = stream.eof() ? done + 1 : count;
        std::fill(samples + done, samples + stop, firstSample<Sample>(scratch));
        return;
    }
}

} // namespace

wavfile_t::wavfile_t(const std::string& path, unsigned int openMode, int newChannels,
                     unsigned int newSampleRate)
    : channels(newChannels), sampleRate(newSampleRate)
{
    // A stream begins with the locale of the process, which may convert what is read and written.
    stream.imbue(std::locale::classic());
    // The bytes as they are, or UTF-8 where the system's paths are not made of bytes.
    const std::filesystem::path place = std::filesystem::u8path(path);
    if (openMode == openForReading) {
        if (isRegularFile(place)) {
            stream.open(place, std::ios::in | std::ios::binary);
        } else {
            stream.setstate(std::ios::failbit);
        }
        readHeader();
        mode = reading;
    } else if (openMode == openForWriting) {
        if (canBeWritten(place)) {
            stream.open(place, std::ios::out | std::ios::trunc | std::ios::binary);
        } else {
            stream.setstate(std::ios::failbit);
        }
        writeHeader();
        mode = writing;
    }
}

wavfile_t::~wavfile_t()
{
    if (mode == writing) finishHeader();
}

void wavfile_t::readHeader()
{
    if (readId(stream) != "RIFF") {
        throw std::runtime_error("wavfile_t::wavfile_t() : File doesn't start with 'RIFF'");
    }
    skip(stream, 4);
    if (readId(stream) != "WAVE") {
        throw std::runtime_error("wavfile_t::wavfile_t() : File doesn't have 'WAVE' id");
    }

    findChunk("fmt ");
    const auto chunkSize = readField<std::uint32_t>(stream);
    const auto formatTag = readField<std::int16_t>(stream);
    channels = readField<std::int16_t>(stream);
    sampleRate = readField<std::uint32_t>(stream);
    skip(stream, 4 + 2);
    bitsPerSample = readField<std::int16_t>(stream);
    checkFormat(formatTag);
    // Unsigned: a chunk that claims less than its fields skips forward past the end of any file.
    skip(stream, chunkSize - 16u);

    findChunk("data");
    const auto dataBytes = readField<std::uint32_t>(stream);
    const std::int32_t bytesPerSample = bitsPerSample / 8;
    if (bytesPerSample == 0) {
        throw std::runtime_error("wavfile_t::wavfile_t() : Sample width is below 8 bits");
    }
    if (channels <= 0) {
        throw std::runtime_error("wavfile_t::wavfile_t() : Channel count is not positive");
    }
    frames = dataBytes / static_cast<std::uint32_t>(bytesPerSample) /
             static_cast<std::uint32_t>(channels);

    // Asked of the buffer, which answers also where the file ends right here.
    dataStart = stream.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in);
    const std::size_t frameBytes = static_cast<std::size_t>(channels) * sizeof(float);
    readBuffer.resize(std::max(readBufferBytes, frameBytes));
}

// Leaves the stream behind the id. The pad byte of a chunk of odd size is not skipped: nothing in
// the file tells whether its writer added one, so the sizes are taken at their word. A file with
// pad bytes loses step with its chunks, and the walk fails or finds nothing.
void wavfile_t::findChunk(const char* id)
{
    while (stream.good()) {
        if (readId(stream) == id) return;
        skip(stream, readField<std::uint32_t>(stream));
    }
    throw std::runtime_error(std::string("wavfile_t::wavfile_t() : Could not locate '") + id +
                             "' chunk");
}

// Below 2, which takes in every tag with its top bit set, any width passes: 24-bit PCM opens, and
// its reads deliver nothing.
void wavfile_t::checkFormat(std::int16_t formatTag) const
{
    if (formatTag < 2) return;
    if (bitsPerSample == 8 || bitsPerSample == 16 || bitsPerSample == 32) return;
    throw std::runtime_error("wavfile_t::wavfile_t() : WAVE file isn't PCM VXFloat,"
                             "16-bit or 8-bit, can't read that format");
}

template <>
bool wavfile_t::read_mono<float>(array<float>& block)
{
    if (mode == writing) {
        throw std::runtime_error("wavfile_t::read_mono(): Can't read from a write file");
    }
    const std::int32_t count = block.count();
    if (mode != reading || count <= 0 || stream.eof()) return true;

    const auto wanted = static_cast<std::size_t>(count);
    const auto frameSamples = static_cast<std::size_t>(channels);
    // 8-bit samples are taken as signed although the format stores them with an offset of 128, so
    // that their values wrap around. Another reading would give the same file other keys, and
    // landmarks made before and after the change would no longer meet.
    if (bitsPerSample == 8) {
        readSamples<std::int8_t>(stream, readBuffer, frameSamples, block.data, wanted);
    } else if (bitsPerSample == 16) {
        readSamples<std::int16_t>(stream, readBuffer, frameSamples * 2, block.data, wanted);
    } else if (bitsPerSample == 32) {
        readSamples<float>(stream, readBuffer, frameSamples * 4, block.data, wanted);
    }
    return true;
}

void wavfile_t::rewind()
{
    // The end-of-file flag would turn the seek down, and the samples would not come again.
    stream.clear();
    stream.seekg(dataStart, std::ios::beg);
}

void wavfile_t::writeHeader()
{
    const auto channelCount = static_cast<std::uint32_t>(channels);
    stream.write("RIFF", idBytes);
    writeField<std::uint32_t>(stream, 0);
    stream.write("WAVEfmt ", 2 * idBytes);
    writeField<std::uint32_t>(stream, 16);
    writeField<std::uint16_t>(stream, 1);
    writeField(stream, static_cast<std::uint16_t>(channelCount));
    writeField(stream, sampleRate);
    writeField(stream, sampleRate * channelCount * 2u);
    writeField(stream, static_cast<std::uint16_t>(channelCount * 2u));
    writeField<std::uint16_t>(stream, 16);
    stream.write("data", idBytes);
    writeField<std::uint32_t>(stream, 0);
    dataStart = stream.tellp();
}

void wavfile_t::finishHeader()
{
    stream.seekp(0, std::ios::end);
    const auto end = static_cast<std::fstream::off_type>(stream.tellp());
    // Of all that follows the first id, this size itself included, which is four more than the RIFF
    // rule asks for. The size of the data, worked out from it, is exact.
    const auto size = static_cast<std::uint32_t>(end - 4);
    stream.seekp(4, std::ios::beg);
    writeField(stream, size);
    stream.seekp(40, std::ios::beg);
    writeField(stream, size - 40u);
}

} // namespace VXS
