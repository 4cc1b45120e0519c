#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>

#include "Bits.h"
#include "Extraction.h"
#include "Random.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "plain/Extractor.h"
#include "plain/Reader.h"
#include "twin/Comparison.h"
#include "wavfile.h"

using property::Random;

namespace
{

void append(std::string& bytes, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xFFu);
}

std::string noise(Random& random, std::size_t count)
{
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes += static_cast<char>(random.bits());
    return bytes;
}

std::string strangerChunk(Random& random)
{
    const std::string id = random.pick<const char*>({"LIST", "fact", "junk", "fmt_"});
    const std::size_t size = random.below(40);
    std::string bytes = id;
    append(bytes, static_cast<std::uint32_t>(size), 4);
    bytes += noise(random, size);
    // Nothing skips the pad byte, so that a file that has one is out of step from here on.
    if (size % 2 == 1 && random.oneIn(4)) bytes += '\0';
    return bytes;
}

// A file that may be sound or broken in any of its fields.
std::string anyFile(Random& random)
{
    const std::uint32_t tag = random.pick<std::uint32_t>({1, 1, 1, 1, 0, 3, 3, 2, 0xFFFE, 0x8000});
    const std::uint32_t bits = random.pick<std::uint32_t>(
        {16, 16, 16, 8, 8, 32, 32, 24, 12, 20, 64, 7, 0, 0xFFF9, 0xFFF8, 0xFFE0});
    const std::uint32_t channels =
        random.pick<std::uint32_t>({1, 1, 1, 2, 2, 3, 16, 17, 40, 0, 0xFFFF, 0x8000, 0x7FFF});
    const std::uint32_t formatSize =
        random.pick<std::uint32_t>({16, 16, 16, 16, 18, 40, 17, 15, 0, 0xFFFFFFFF});
    const std::size_t size = random.below(random.oneIn(3) ? 20000 : 300);
    const std::uint32_t claim = random.pick<std::uint32_t>(
        {static_cast<std::uint32_t>(size), static_cast<std::uint32_t>(size),
         static_cast<std::uint32_t>(size), 0, 0xFFFFFFFF, 100});

    std::string bytes = random.oneIn(30) ? "RIFX" : "RIFF";
    append(bytes, static_cast<std::uint32_t>(random.bits()), 4);
    bytes += random.oneIn(30) ? "WAVX" : "WAVE";
    if (random.oneIn(4)) bytes += strangerChunk(random);
    bytes += "fmt ";
    append(bytes, formatSize, 4);
    append(bytes, tag, 2);
    append(bytes, channels, 2);
    append(bytes, random.pick<std::uint32_t>({8000, 44100, 0, 8, 0xFFFFFFFF}), 4);
    append(bytes, static_cast<std::uint32_t>(random.bits()), 4);
    append(bytes, static_cast<std::uint32_t>(random.bits()), 2);
    append(bytes, bits, 2);
    if (formatSize > 16 && formatSize <= 40) bytes += noise(random, formatSize - 16);
    if (random.oneIn(3)) bytes += strangerChunk(random);
    bytes += "data";
    append(bytes, claim, 4);
    bytes += noise(random, size);
    if (random.oneIn(3)) bytes += strangerChunk(random);
    return bytes;
}

// Every test program has a file of its own, so that they may run side by side.
class TemporaryFile
{
public:
    TemporaryFile()
        : path(testing::TempDir() + "vxl_audio_property_" + std::to_string(getpid()) + "_" +
               testing::UnitTest::GetInstance()->current_test_info()->name() + ".wav")
    {
    }
    ~TemporaryFile() { std::remove(path.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void write(const std::string& bytes) const
    {
        std::ofstream stream(path, std::ios::binary | std::ios::trunc);
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    const std::string path;
};

template <typename T>
std::unique_ptr<T> open(const std::string& path, std::string& message);

template <>
std::unique_ptr<plain::Reader> open(const std::string& path, std::string& message)
{
    try {
        return std::make_unique<plain::Reader>(path);
    } catch (const std::runtime_error& error) {
        message = error.what();
        return nullptr;
    }
}

template <>
std::unique_ptr<VXS::wavfile_t> open(const std::string& path, std::string& message)
{
    try {
        return std::make_unique<VXS::wavfile_t>(path, 8, 1, 16000);
    } catch (const std::runtime_error& error) {
        message = error.what();
        return nullptr;
    }
}

// The texts that are fixed. What is said of a header without channels or width is free, so these
// all count as one.
std::string fixedPart(const std::string& message)
{
    const std::string start = "wavfile_t::wavfile_t() : ";
    const std::set<std::string> fixed = {
        start + "File doesn't start with 'RIFF'", start + "File doesn't have 'WAVE' id",
        start + "Could not locate 'fmt ' chunk", start + "Could not locate 'data' chunk",
        start + "WAVE file isn't PCM VXFloat,16-bit or 8-bit, can't read that format"};
    return message.empty() || fixed.count(message) == 1 ? message : message.substr(0, start.size());
}

void compareReads(Random& random, VXS::wavfile_t& file, plain::Reader& reader, int rounds)
{
    for (int round = 0; round < rounds; ++round) {
        if (random.oneIn(8)) {
            file.rewind();
            reader.rewind();
        }
        const std::size_t size = random.below(random.oneIn(3) ? 5000 : 9);
        // What a read leaves alone must keep what it held.
        std::vector<float> expected(size, 0.0f);
        for (float& sample : expected)
            sample = random.sample();
        VXS::array<float> block(static_cast<std::int32_t>(size));
        std::copy(expected.begin(), expected.end(), block.data);

        reader.read(expected);
        ASSERT_TRUE(file.read_mono<float>(block));

        ASSERT_EQ(static_cast<std::size_t>(block.count()), size);
        ASSERT_TRUE(property::sameFloats(block.data, expected.data(), size)) << "round " << round;
    }
}

void compareFiles(Random& random, const std::string& path, int rounds)
{
    std::string twinMessage;
    std::string message;
    const auto reader = open<plain::Reader>(path, twinMessage);
    const auto file = open<VXS::wavfile_t>(path, message);
    ASSERT_EQ(fixedPart(message), fixedPart(twinMessage)) << message << " / " << twinMessage;
    if (!reader) return;
    ASSERT_EQ(file->frames, reader->frames());
    ASSERT_EQ(file->channels, reader->channels);
    ASSERT_EQ(file->sampleRate, reader->sampleRate);
    ASSERT_EQ(file->bitsPerSample, reader->bitsPerSample);
    compareReads(random, *file, *reader, rounds);
}

} // namespace

TEST(wavfile_t, ReadsSoundAndBrokenFilesAsThePlainReader)
{
    const TemporaryFile file;
    for (std::uint64_t seed = 5000; seed < 5600; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        file.write(anyFile(random));

        compareFiles(random, file.path, 12);

        if (HasFatalFailure()) return;
    }
}

TEST(wavfile_t, ReadsAFileCutAnywhereAsThePlainReader)
{
    const TemporaryFile file;
    for (std::uint64_t seed = 5700; seed < 5706; ++seed) {
        std::string whole;
        {
            Random random(seed);
            whole = anyFile(random);
        }
        for (std::size_t length = 0; length < std::min<std::size_t>(whole.size(), 120); ++length) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", cut at " + std::to_string(length));
            Random random(seed);
            file.write(whole.substr(0, length));

            compareFiles(random, file.path, 6);

            if (HasFatalFailure()) return;
        }
    }
}

TEST(wavfile_t, ReadsAFileWithAnyBytesChangedAsThePlainReader)
{
    const TemporaryFile file;
    for (std::uint64_t seed = 5800; seed < 6100; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        std::string bytes = anyFile(random);
        for (std::uint64_t changes = 1 + random.below(3); changes > 0; --changes) {
            bytes[random.below(std::min<std::size_t>(bytes.size(), 60))] =
                static_cast<char>(random.bits());
        }
        file.write(bytes);

        compareFiles(random, file.path, 6);

        if (HasFatalFailure()) return;
    }
}

TEST(wavfile_t, ReadsAnExampleRecordingAsThePlainReader)
{
    const std::vector<std::string> paths = property::exampleRecordings();
    ASSERT_FALSE(paths.empty());
    const std::uint64_t seed = 6200;
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);

    compareFiles(random, paths.front(), 200);
}

// At these sizes the last reads come short, and what stands behind the samples is heard.
TEST(VXLandmarkExtract, EqualsThePlainTwinOnFilesWithBytesBehindTheirSamples)
{
    const TemporaryFile file;
    for (std::uint64_t seed = 6300; seed < 6340; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        plain::Parameters parameters = property::anyParameters(random);
        SCOPED_TRACE(property::describe(parameters));
        const std::uint32_t channels = random.pick<std::uint32_t>({1, 2});
        const std::uint32_t width = random.pick<std::uint32_t>({1, 2, 4});
        const std::size_t samples = 20 * parameters.hopSize + random.below(parameters.hopSize);
        std::string bytes = "RIFF";
        append(bytes, 0, 4);
        bytes += "WAVEfmt ";
        append(bytes, 16, 4);
        append(bytes, 1, 2);
        append(bytes, channels, 2);
        append(bytes, 8000, 4);
        append(bytes, 0, 4);
        append(bytes, 0, 2);
        append(bytes, 8 * width, 2);
        bytes += "data";
        append(bytes, static_cast<std::uint32_t>(samples) * channels * width, 4);
        bytes += noise(random, samples * channels * width);
        bytes += noise(random, random.below(4 * parameters.fftSize));
        file.write(bytes);
        plain::Reader reader(file.path);
        plain::Extractor twin(parameters);
        plain::Recording recording(1);
        VXS::VXLandmarkExtract extractor(twins::toLibrary(parameters));

        twin.run(reader, recording);
        const std::unique_ptr<VXS::VXFile> result(extractor.run(file.path, 1));

        ASSERT_NE(result, nullptr);
        ASSERT_TRUE(property::samePeaks(extractor, twin));
        ASSERT_TRUE(property::sameLandmarks(*result, recording));
    }
}
