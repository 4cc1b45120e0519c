#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ios>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "wavfile.h"

namespace
{

using VXS::array;
using VXS::wavfile_t;

constexpr unsigned int forReading = 8;
// What a block holds where nothing was stored.
constexpr float untouched = -77.0f;

class WavfileRead : public testing::Test
{
protected:
    std::string write(const wave::Bytes& bytes) const { return folder.write("take.wav", bytes); }

    std::string write16(const std::vector<int>& samples) const
    {
        return write(wave::file16(samples));
    }

    wave::TempFolder folder;
};

std::vector<float> read(wavfile_t& file, int count)
{
    array<float> block(count);
    std::fill_n(block.data, count, untouched);
    EXPECT_TRUE(file.read_mono(block));
    return std::vector<float>(block.data, block.data + count);
}

// The value of a 16-bit sample.
float value16(int sample)
{
    return static_cast<float>(sample) / 32768.0f;
}

std::vector<float> values16(const std::vector<int>& samples)
{
    std::vector<float> values;
    for (const int sample : samples)
        values.push_back(value16(sample));
    return values;
}

// Some 16-bit samples, no two neighbours alike.
std::vector<int> manySamples(int count)
{
    std::vector<int> samples;
    for (int i = 0; i < count; ++i)
        samples.push_back(i * 7919 % 65536 - 32768);
    return samples;
}

} // namespace

TEST_F(WavfileRead, Scales16BitSamplesBy32768)
{
    const std::string path = write16({-32768, 32767, 1, 0, -1, 16384});
    wavfile_t file(path, forReading, 1, 16000);

    const std::vector<float> values = read(file, 6);

    EXPECT_EQ((std::vector<float>{-1.0f, 32767.0f / 32768.0f, 0.000030517578125f, 0.0f,
                                  -0.000030517578125f, 0.5f}),
              values);
}

// The bytes are taken as signed: 0x80, which a WAVE file means as 0, is -128.
TEST_F(WavfileRead, Takes8BitSamplesAsSignedAndScalesThemBy128)
{
    const std::string path =
        write(wave::file(wave::format(1, 1, 8), {0x80, 0x7F, 0xFF, 0x01, 0x00, 0x40}));
    wavfile_t file(path, forReading, 1, 16000);

    const std::vector<float> values = read(file, 6);

    EXPECT_EQ((std::vector<float>{-1.0f, 127.0f / 128.0f, -0.0078125f, 0.0078125f, 0.0f, 0.5f}),
              values);
}

TEST_F(WavfileRead, Takes32BitFloatsUnscaled)
{
    const std::vector<float> samples = {0.25f, -3.5f, 1.0e20f, -0.0f};
    const std::string path = write(wave::file(wave::format(3, 1, 32), wave::samplesFloat(samples)));
    wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(samples, read(file, 4));
}

// 0x3F800000 and 0xC0000000 are the floats 1 and -2.
TEST_F(WavfileRead, Takes32BitIntegersAsIfTheyWereFloats)
{
    wave::Bytes data;
    wave::append32(data, 0x3F800000u);
    wave::append32(data, 0xC0000000u);
    const std::string path = write(wave::file(wave::format(1, 1, 32), data));
    wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ((std::vector<float>{1.0f, -2.0f}), read(file, 2));
}

TEST_F(WavfileRead, Copies32BitSamplesUnchangedWhateverTheirBits)
{
    wave::Bytes data;
    wave::append32(data, 0x7FC12345u);
    const std::string path = write(wave::file(wave::format(3, 1, 32), data));
    wavfile_t file(path, forReading, 1, 16000);

    const std::vector<float> values = read(file, 1);

    std::uint32_t bits = 0;
    std::memcpy(&bits, values.data(), sizeof(bits));
    EXPECT_EQ(0x7FC12345u, bits);
}

TEST_F(WavfileRead, StereoGivesExactlyTheLeftChannel)
{
    const std::string path =
        write(wave::file(wave::format(1, 2, 16), wave::samples16({10, -1, 20, -2, 30, -3})));
    wavfile_t file(path, forReading, 1, 16000);

    // 12 bytes / 4.
    EXPECT_EQ(3u, file.frames);
    EXPECT_EQ(values16({10, 20, 30}), read(file, 3));
}

TEST_F(WavfileRead, StereoOf8And32BitsGivesTheLeftChannel)
{
    const std::string narrow =
        folder.write("narrow.wav", wave::file(wave::format(1, 2, 8), {0x40, 0x11, 0x20, 0x11}));
    const std::string wide =
        folder.write("wide.wav", wave::file(wave::format(3, 2, 32),
                                            wave::samplesFloat({0.5f, 9.0f, 0.25f, 9.0f})));
    wavfile_t narrowFile(narrow, forReading, 1, 16000);
    wavfile_t wideFile(wide, forReading, 1, 16000);

    EXPECT_EQ((std::vector<float>{0.5f, 0.25f}), read(narrowFile, 2));
    EXPECT_EQ((std::vector<float>{0.5f, 0.25f}), read(wideFile, 2));
}

TEST_F(WavfileRead, ManyChannelsGiveTheFirstOne)
{
    for (const int channels : {16, 17, 32767}) {
        std::vector<int> samples;
        for (int frame = 0; frame < 5; ++frame) {
            samples.push_back(100 + frame);
            samples.resize(samples.size() + static_cast<std::size_t>(channels) - 1, -5);
        }
        const std::string path = write(wave::file(
            wave::format(1, static_cast<std::uint32_t>(channels), 16), wave::samples16(samples)));
        wavfile_t file(path, forReading, 1, 16000);

        EXPECT_EQ(values16({100, 101, 102, 103, 104}), read(file, 5)) << channels;
    }
}

TEST_F(WavfileRead, OtherWidthsLeaveTheBlockAloneAndAnswerTrue)
{
    for (const std::uint32_t bits : {12u, 24u, 64u, 0xFFF8u, 0xFFF0u}) {
        const std::string path = write(wave::file(wave::format(1, 1, bits), wave::Bytes(48, 1)));
        wavfile_t file(path, forReading, 1, 16000);

        EXPECT_EQ((std::vector<float>{untouched, untouched}), read(file, 2)) << bits;
    }
}

TEST_F(WavfileRead, FileThatWasNotOpenedLeavesTheBlockAlone)
{
    wavfile_t file(folder / "none.wav", 0, 1, 8000);

    EXPECT_EQ((std::vector<float>{untouched}), read(file, 1));
}

TEST_F(WavfileRead, EachReadGoesOnWhereTheLastOneStopped)
{
    const std::string path = write16({1, 2, 3, 4, 5, 6});
    wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(values16({1, 2}), read(file, 2));
    EXPECT_EQ(values16({3}), read(file, 1));
    EXPECT_EQ(values16({4, 5, 6}), read(file, 3));
}

TEST_F(WavfileRead, BlockOfNoElementsReadsNothing)
{
    const std::string path = write16({1, 2});
    wavfile_t file(path, forReading, 1, 16000);
    array<float> empty;

    EXPECT_TRUE(file.read_mono(empty));

    EXPECT_EQ(values16({1}), read(file, 1));
}

TEST_F(WavfileRead, BlockOfANegativeCountReadsNothing)
{
    const std::string path = write16({1, 2});
    wavfile_t file(path, forReading, 1, 16000);
    array<float> negative;
    negative.dim0 = -3;
    negative.dim1 = 1;
    negative.dim2 = 1;

    EXPECT_TRUE(file.read_mono(negative));

    EXPECT_EQ(values16({1}), read(file, 1));
}

TEST_F(WavfileRead, BlockOfSeveralDimensionsIsFilledLinearly)
{
    const std::string path = write16({1, 2, 3, 4, 5});
    wavfile_t file(path, forReading, 1, 16000);
    array<float> square(2, 1, 2);

    EXPECT_TRUE(file.read_mono(square));

    EXPECT_EQ(values16({1, 2, 3, 4}), std::vector<float>(square.data, square.data + 4));
}

TEST_F(WavfileRead, AskingForMoreThanRemainsStoresOneStaleValueAndKeepsTheRest)
{
    const std::string path = write16({1, 2, 3, 4, 5});
    wavfile_t file(path, forReading, 1, 16000);

    const std::vector<float> values = read(file, 7);

    std::vector<float> expected = values16({1, 2, 3, 4, 5, 5});
    expected.push_back(untouched);
    EXPECT_EQ(expected, values);
}

TEST_F(WavfileRead, AfterAShortReadNothingIsStored)
{
    const std::string path = write16({1, 2, 3});
    wavfile_t file(path, forReading, 1, 16000);
    read(file, 5);

    EXPECT_EQ((std::vector<float>{untouched, untouched}), read(file, 2));
}

TEST_F(WavfileRead, AfterExactlyTheLastSampleTheNextReadStoresOneZero)
{
    const std::string path = write16({1, 2, 3});
    wavfile_t file(path, forReading, 1, 16000);
    read(file, 3);

    EXPECT_EQ((std::vector<float>{0.0f, untouched, untouched}), read(file, 3));
}

TEST_F(WavfileRead, TheReadAfterThatOneStoresNothing)
{
    const std::string path = write16({1, 2, 3});
    wavfile_t file(path, forReading, 1, 16000);
    read(file, 3);
    read(file, 3);

    EXPECT_EQ((std::vector<float>{untouched, untouched, untouched}), read(file, 3));
}

// The sample is 0x1234, its low byte first; the byte 0x78 comes to lie over that one.
TEST_F(WavfileRead, OddTrailingByteReplacesTheLowByteOfTheSampleBefore)
{
    const std::string path = write(wave::file(wave::format(1, 1, 16), {0x34, 0x12, 0x78}));
    wavfile_t file(path, forReading, 1, 16000);

    const std::vector<float> values = read(file, 3);

    EXPECT_EQ((std::vector<float>{value16(0x1234), value16(0x1278), untouched}), values);
}

TEST_F(WavfileRead, OddTrailingByteInAReadOfItsOwnLiesOverZeros)
{
    const std::string path = write(wave::file(wave::format(1, 1, 16), {0x34, 0x12, 0x78}));
    wavfile_t file(path, forReading, 1, 16000);
    read(file, 1);

    EXPECT_EQ((std::vector<float>{value16(0x0078), untouched}), read(file, 2));
}

TEST_F(WavfileRead, TrailingBytesOfAStereoFrameGiveItsLeftSample)
{
    const std::string path =
        write(wave::file(wave::format(1, 2, 16), {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07}));
    wavfile_t file(path, forReading, 1, 16000);

    const std::vector<float> values = read(file, 3);

    EXPECT_EQ((std::vector<float>{value16(0x0201), value16(0x0605), untouched}), values);
}

// 1.0 is 0x3F800000. Three bytes of zeros leave its top byte: 0x3F000000 is 0.5.
TEST_F(WavfileRead, TrailingBytesOfAFloatLieOverTheFloatBefore)
{
    const std::string path =
        write(wave::file(wave::format(3, 1, 32), {0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00}));
    wavfile_t file(path, forReading, 1, 16000);

    const std::vector<float> values = read(file, 3);

    EXPECT_EQ((std::vector<float>{1.0f, 0.5f, untouched}), values);
}

TEST_F(WavfileRead, BytesAfterTheDataChunkComeInAsSamples)
{
    wave::Bytes bytes = wave::file16({7});
    wave::append(bytes, {'L', 'I', 'S', 'T'});
    const std::string path = write(bytes);
    wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(1u, file.frames);
    // "LI" is 0x494C and "ST" 0x5453, low byte first.
    EXPECT_EQ(values16({7, 0x494C, 0x5453}), read(file, 3));
}

TEST_F(WavfileRead, DataSizeOf0DoesNotLimitTheReading)
{
    const std::string path =
        write(wave::fileClaiming(wave::Format(), 0, wave::samples16({1, 2, 3})));
    wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(values16({1, 2, 3}), read(file, 3));
}

TEST_F(WavfileRead, FileThatEndsWithTheDataIdStoresNothing)
{
    wave::Bytes bytes = wave::file16({});
    bytes.resize(40);
    const std::string path = write(bytes);
    wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ((std::vector<float>{untouched}), read(file, 1));
}

TEST_F(WavfileRead, EmptyDataChunkStoresOneZero)
{
    const std::string path = write16({});
    wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ((std::vector<float>{0.0f, untouched}), read(file, 2));
}

TEST_F(WavfileRead, LongReadGivesEverySample)
{
    const std::vector<int> samples = manySamples(50001);
    const std::string path = write16(samples);
    wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(values16(samples), read(file, 50001));
}

TEST_F(WavfileRead, LongReadBeyondTheEndStoresOneStaleValue)
{
    const std::vector<int> samples = manySamples(50001);
    const std::string path = write16(samples);
    wavfile_t file(path, forReading, 1, 16000);
    std::vector<float> expected = values16(samples);
    expected.push_back(expected.back());
    expected.push_back(untouched);

    EXPECT_EQ(expected, read(file, 50003));
}

// The end of the file falls on each place of a block, and on each place of the reader's own buffer.
TEST_F(WavfileRead, BlocksOfAnySizeGiveWhatSingleSamplesGive)
{
    const std::vector<int> samples = manySamples(9001);
    const std::string path = write16(samples);
    for (const int size : {1, 7, 256, 1000, 4096, 8192}) {
        wavfile_t file(path, forReading, 1, 16000);
        std::vector<float> values;

        while (values.size() < samples.size()) {
            const std::vector<float> block = read(file, size);
            values.insert(values.end(), block.begin(), block.end());
        }
        values.resize(samples.size());

        EXPECT_EQ(values16(samples), values) << size;
    }
}

TEST_F(WavfileRead, ThreeBytesPerFrameAcrossTheBufferStayInStep)
{
    wave::Bytes data;
    std::vector<float> expected;
    for (int i = 0; i < 20000; ++i) {
        const auto byte = static_cast<unsigned char>(i % 251);
        wave::append(data, {byte, 0xEE, 0xEE});
        expected.push_back(static_cast<float>(static_cast<signed char>(byte)) / 128.0f);
    }
    const std::string path = write(wave::file(wave::format(1, 3, 8), data));
    wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(expected, read(file, 20000));
}

TEST_F(WavfileRead, RewindFromTheMiddleStartsAgain)
{
    const std::string path = write16({1, 2, 3});
    wavfile_t file(path, forReading, 1, 16000);
    read(file, 2);

    file.rewind();

    EXPECT_EQ(values16({1, 2, 3}), read(file, 3));
}

TEST_F(WavfileRead, RewindAfterTheEndMakesTheSameSamplesComeAgain)
{
    const std::string path = write16({1, 2, 3});
    wavfile_t file(path, forReading, 1, 16000);
    read(file, 10);

    file.rewind();

    EXPECT_EQ(values16({1, 2, 3}), read(file, 3));
}

TEST_F(WavfileRead, RewindMakesTheEndComeAgainAsWell)
{
    const std::string path = write16({1, 2});
    wavfile_t file(path, forReading, 1, 16000);
    const std::vector<float> first = read(file, 5);

    file.rewind();

    EXPECT_EQ(first, read(file, 5));
}

// After an error that is not the end of the file the loop runs to the last element, and the scratch
// frame, zeroed at the start of the call, stays as it is.
TEST_F(WavfileRead, ErrorOtherThanTheEndFillsTheBlockWithTheScratchFrame)
{
    const std::string path = write16({1, 2, 3});
    wavfile_t file(path, forReading, 1, 16000);
    file.stream.setstate(std::ios::failbit);

    EXPECT_EQ((std::vector<float>{0.0f, 0.0f, 0.0f}), read(file, 3));
}

TEST_F(WavfileRead, FileOpenedForWritingThrows)
{
    wavfile_t file(folder / "out.wav", 16, 1, 8000);
    array<float> block(1);

    try {
        file.read_mono(block);
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ("wavfile_t::read_mono(): Can't read from a write file", error.what());
    }
}

TEST_F(WavfileRead, FileOpenedForWritingThrowsForAnEmptyBlockToo)
{
    wavfile_t file(folder / "out.wav", 16, 1, 8000);
    array<float> empty;

    EXPECT_THROW(file.read_mono(empty), std::runtime_error);
}
