#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "wavfile.h"

namespace
{

using VXS::wavfile_t;

constexpr unsigned int forReading = 8;
constexpr unsigned int forWriting = 16;

// The header of a written file, with the two sizes that are patched at the end.
wave::Bytes header(std::uint32_t riffSize, std::uint32_t channels, std::uint32_t sampleRate,
                   std::uint32_t dataSize)
{
    wave::Bytes bytes;
    wave::appendText(bytes, "RIFF");
    wave::append32(bytes, riffSize);
    wave::appendText(bytes, "WAVEfmt ");
    wave::append32(bytes, 16);
    wave::append16(bytes, 1);
    wave::append16(bytes, channels);
    wave::append32(bytes, sampleRate);
    wave::append32(bytes, sampleRate * channels * 2u);
    wave::append16(bytes, channels * 2u);
    wave::append16(bytes, 16);
    wave::appendText(bytes, "data");
    wave::append32(bytes, dataSize);
    return bytes;
}

class WavfileWrite : public testing::Test
{
protected:
    wave::TempFolder folder;
};

} // namespace

// 44 bytes: 44 - 4 = 40 in the RIFF size, 40 - 40 = 0 in the data size.
TEST_F(WavfileWrite, FileConsistsOfItsHeaderByteForByte)
{
    const std::string path = folder / "out.wav";

    {
        const wavfile_t file(path, forWriting, 1, 8000);
    }

    const wave::Bytes expected = {'R', 'I', 'F',  'F',  40,  0,   0,    0,    'W', 'A', 'V',
                                  'E', 'f', 'm',  't',  ' ', 16,  0,    0,    0,   1,   0,
                                  1,   0,   0x40, 0x1F, 0,   0,   0x80, 0x3E, 0,   0,   2,
                                  0,   16,  0,    'd',  'a', 't', 'a',  0,    0,   0,   0};
    EXPECT_EQ(expected, wave::readFile(path));
}

TEST_F(WavfileWrite, SizesStayZeroUntilTheFileIsFinished)
{
    const std::string path = folder / "out.wav";
    wavfile_t file(path, forWriting, 1, 8000);

    file.stream.flush();

    EXPECT_EQ(header(0, 1, 8000, 0), wave::readFile(path));
}

// 44100 * 2 * 2 = 176400 bytes a second, 4 bytes a frame.
TEST_F(WavfileWrite, HeaderHoldsChannelsAndSampleRate)
{
    const std::string path = folder / "out.wav";

    {
        const wavfile_t file(path, forWriting, 2, 44100);
    }

    const wave::Bytes bytes = wave::readFile(path);
    EXPECT_EQ(header(40, 2, 44100, 0), bytes);
    wave::Bytes byteRate;
    wave::append32(byteRate, 176400);
    EXPECT_EQ(byteRate, wave::Bytes(bytes.begin() + 28, bytes.begin() + 32));
}

TEST_F(WavfileWrite, FieldsStayThoseOfTheConstructor)
{
    const wavfile_t file(folder / "out.wav", forWriting, 2, 44100);

    EXPECT_EQ(2, file.channels);
    EXPECT_EQ(44100u, file.sampleRate);
    EXPECT_EQ(0u, file.frames);
    EXPECT_EQ(0, file.bitsPerSample);
    EXPECT_EQ(2, file.mode);
    EXPECT_EQ(44, static_cast<std::streamoff>(file.dataStart));
}

// 44 + 10 = 54 bytes: 54 - 4 = 50, and 50 - 40 = 10.
TEST_F(WavfileWrite, FinishingCountsWhatWentThroughTheStream)
{
    const std::string path = folder / "out.wav";

    {
        wavfile_t file(path, forWriting, 1, 8000);
        file.stream.write("0123456789", 10);
    }

    wave::Bytes expected = header(50, 1, 8000, 10);
    wave::appendText(expected, "0123456789");
    EXPECT_EQ(expected, wave::readFile(path));
}

TEST_F(WavfileWrite, FinishingLooksForTheEndItself)
{
    const std::string path = folder / "out.wav";

    {
        wavfile_t file(path, forWriting, 1, 8000);
        file.stream.write("0123456789", 10);
        file.stream.seekp(2);
    }

    wave::Bytes expected = header(50, 1, 8000, 10);
    wave::appendText(expected, "0123456789");
    EXPECT_EQ(expected, wave::readFile(path));
}

TEST_F(WavfileWrite, EarlierContentsAreDropped)
{
    const std::string path = folder.write("out.wav", wave::Bytes(1000, 7));

    {
        const wavfile_t file(path, forWriting, 1, 8000);
    }

    EXPECT_EQ(header(40, 1, 8000, 0), wave::readFile(path));
}

TEST_F(WavfileWrite, WrittenFileCanBeReadBack)
{
    const std::string path = folder / "out.wav";
    {
        wavfile_t file(path, forWriting, 2, 44100);
        file.stream.write("01234567", 8);
    }

    const wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(2, file.channels);
    EXPECT_EQ(44100u, file.sampleRate);
    EXPECT_EQ(16, file.bitsPerSample);
    // 8 bytes / 2 / 2.
    EXPECT_EQ(2u, file.frames);
}

TEST_F(WavfileWrite, PathThatCannotBeOpenedRaisesNothing)
{
    const std::string path = folder / "missing" + "/out.wav";

    EXPECT_NO_THROW({ const wavfile_t file(path, forWriting, 1, 8000); });

    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(WavfileWrite, PathIsTakenAsUtf8)
{
    const std::string path = folder / "tak\xC3\xA9.wav";

    {
        const wavfile_t file(path, forWriting, 1, 8000);
    }

    EXPECT_EQ(header(40, 1, 8000, 0), wave::readFile(path));
}

TEST_F(WavfileWrite, DirectoryRaisesNothing)
{
    EXPECT_NO_THROW({ const wavfile_t file(folder.path, forWriting, 1, 8000); });
}
