#include <filesystem>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "wavfile.h"

namespace
{

using VXS::wavfile_t;

constexpr unsigned int forReading = 8;

const char* const noRiff = "wavfile_t::wavfile_t() : File doesn't start with 'RIFF'";
const char* const noWave = "wavfile_t::wavfile_t() : File doesn't have 'WAVE' id";
const char* const noFormat = "wavfile_t::wavfile_t() : Could not locate 'fmt ' chunk";
const char* const noData = "wavfile_t::wavfile_t() : Could not locate 'data' chunk";
const char* const badFormat = "wavfile_t::wavfile_t() : WAVE file isn't PCM VXFloat,16-bit or "
                              "8-bit, can't read that format";

// What opening the file throws, or "opened".
std::string openingPath(const std::string& path)
{
    try {
        const wavfile_t file(path, forReading, 1, 16000);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "opened";
}

class WavfileHeader : public testing::Test
{
protected:
    std::string opening(const wave::Bytes& bytes) const
    {
        return openingPath(folder.write("take.wav", bytes));
    }

    std::string openingFormat(std::uint32_t tag, std::uint32_t channels, std::uint32_t bits) const
    {
        return opening(wave::file(wave::format(tag, channels, bits), wave::Bytes(24)));
    }

    // A failure of the reader's own, which is none of the five fixed ones.
    static void expectOwnError(const std::string& message)
    {
        const std::string start = "wavfile_t::wavfile_t() : ";
        EXPECT_EQ(start, message.substr(0, start.size()));
        EXPECT_LT(start.size(), message.size());
        for (const char* fixed : {noRiff, noWave, noFormat, noData, badFormat})
            EXPECT_NE(fixed, message);
    }

    wave::TempFolder folder;
};

wave::Bytes cut(wave::Bytes bytes, std::size_t length)
{
    bytes.resize(length);
    return bytes;
}

} // namespace

TEST_F(WavfileHeader, GivesTheFieldsOfTheFile)
{
    wave::Format stereo = wave::format(1, 2, 16);
    stereo.sampleRate = 44100;
    const std::string path = folder.write("take.wav", wave::file(stereo, wave::Bytes(40)));

    wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(2, file.channels);
    EXPECT_EQ(44100u, file.sampleRate);
    EXPECT_EQ(16, file.bitsPerSample);
    // 40 bytes / 2 bytes / 2 channels.
    EXPECT_EQ(10u, file.frames);
    EXPECT_EQ(1, file.mode);
    EXPECT_EQ(44, static_cast<std::streamoff>(file.dataStart));
}

TEST_F(WavfileHeader, SampleRateUsesAllOf32Bits)
{
    wave::Format fast = wave::format(1, 1, 16);
    fast.sampleRate = 0xFFFFFFFFu;
    const std::string path = folder.write("take.wav", wave::file(fast, {}));

    const wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(0xFFFFFFFFu, file.sampleRate);
}

TEST_F(WavfileHeader, MissingFileRaisesTheRiffMessage)
{
    EXPECT_EQ(noRiff, openingPath(folder / "missing.wav"));
}

TEST_F(WavfileHeader, EmptyPathRaisesTheRiffMessage)
{
    EXPECT_EQ(noRiff, openingPath(""));
}

TEST_F(WavfileHeader, DirectoryRaisesTheRiffMessage)
{
    EXPECT_EQ(noRiff, openingPath(folder.path));
}

// "take" with an accent, in UTF-8: also where the system's own encoding is another one.
TEST_F(WavfileHeader, PathIsTakenAsUtf8)
{
    const std::string path = folder.write("tak\xC3\xA9.wav", wave::file16({1, 2, 3}));

    EXPECT_EQ("opened", openingPath(path));
}

TEST_F(WavfileHeader, EmptyFileRaisesTheRiffMessage)
{
    EXPECT_EQ(noRiff, opening({}));
}

TEST_F(WavfileHeader, OtherMagicWordRaisesTheRiffMessage)
{
    wave::Bytes bytes = wave::file16({1, 2, 3});
    bytes[3] = 'X';

    EXPECT_EQ(noRiff, opening(bytes));
}

TEST_F(WavfileHeader, OtherFormRaisesTheWaveMessage)
{
    wave::Bytes bytes = wave::file16({1, 2, 3});
    bytes[8] = 'w';

    EXPECT_EQ(noWave, opening(bytes));
}

TEST_F(WavfileHeader, RiffSizeIsNotChecked)
{
    wave::Bytes bytes = wave::file16({1, 2, 3});
    for (std::size_t i = 4; i < 8; ++i)
        bytes[i] = 0xFF;

    EXPECT_EQ("opened", opening(bytes));
}

TEST_F(WavfileHeader, FileCutInTheFirstWordRaisesTheRiffMessage)
{
    for (std::size_t length = 0; length < 4; ++length) {
        EXPECT_EQ(noRiff, opening(cut(wave::file16({1}), length))) << length << " bytes";
    }
}

TEST_F(WavfileHeader, FileCutBeforeTheEndOfTheFormRaisesTheWaveMessage)
{
    for (std::size_t length = 4; length < 12; ++length) {
        EXPECT_EQ(noWave, opening(cut(wave::file16({1}), length))) << length << " bytes";
    }
}

TEST_F(WavfileHeader, FileCutInTheFirstChunkIdRaisesTheFormatMessage)
{
    for (std::size_t length = 12; length < 16; ++length) {
        EXPECT_EQ(noFormat, opening(cut(wave::file16({1}), length))) << length << " bytes";
    }
}

TEST_F(WavfileHeader, FileCutInTheFormatChunkRaisesTheDataMessage)
{
    for (std::size_t length = 16; length < 36; ++length) {
        EXPECT_EQ(noData, opening(cut(wave::file16({1}), length))) << length << " bytes";
    }
}

TEST_F(WavfileHeader, FileCutInTheDataIdRaisesTheDataMessage)
{
    for (std::size_t length = 36; length < 40; ++length) {
        EXPECT_EQ(noData, opening(cut(wave::file16({1}), length))) << length << " bytes";
    }
}

// A width that the file no longer holds counts as 0, which tag 3 does not allow. Bytes 20 and 21
// hold the tag, bytes 34 and 35 the width of 32.
TEST_F(WavfileHeader, FileCutBetweenAFloatTagAndItsWidthRaisesTheMessageOfTheFormat)
{
    const wave::Bytes bytes = wave::file(wave::format(3, 1, 32), {});

    for (std::size_t length = 22; length < 35; ++length) {
        EXPECT_EQ(badFormat, opening(cut(bytes, length))) << length << " bytes";
    }
}

TEST_F(WavfileHeader, FileThatEndsWithTheDataIdHasNoFrames)
{
    const std::string path = folder.write("take.wav", cut(wave::file16({1}), 40));

    const wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(0u, file.frames);
    EXPECT_EQ(40, static_cast<std::streamoff>(file.dataStart));
}

TEST_F(WavfileHeader, ChunksAroundTheFormatAreSkipped)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::chunk("bext", wave::Bytes(602, 7)));
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::append(bytes, wave::chunk("LIST", wave::Bytes(26, 9)));
    wave::append(bytes, wave::chunk("data", wave::samples16({1, 2, 3})));
    const std::string path = folder.write("take.wav", bytes);

    const wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(3u, file.frames);
    // 12 + (8 + 602) + (8 + 16) + (8 + 26) + 8.
    EXPECT_EQ(688, static_cast<std::streamoff>(file.dataStart));
}

TEST_F(WavfileHeader, ListBetweenFormatAndDataIsSkipped)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::append(bytes, wave::chunk("LIST", wave::Bytes(4)));
    wave::append(bytes, wave::chunk("data", wave::samples16({1, 2, 3})));

    EXPECT_EQ("opened", opening(bytes));
}

TEST_F(WavfileHeader, ListBeforeTheFormatIsSkipped)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::chunk("LIST", wave::Bytes(4)));
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::append(bytes, wave::chunk("data", wave::samples16({1, 2, 3})));

    EXPECT_EQ("opened", opening(bytes));
}

TEST_F(WavfileHeader, PadByteBeforeTheDataLosesStep)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::append(bytes, wave::chunk("LIST", wave::Bytes(3)));
    bytes.push_back(0);
    wave::append(bytes, wave::chunk("data", wave::samples16({1, 2, 3})));

    EXPECT_EQ(noData, opening(bytes));
}

TEST_F(WavfileHeader, PadByteBeforeTheFormatLosesStep)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::chunk("LIST", wave::Bytes(3)));
    bytes.push_back(0);
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::append(bytes, wave::chunk("data", wave::samples16({1, 2, 3})));

    EXPECT_EQ(noFormat, opening(bytes));
}

TEST_F(WavfileHeader, ChunkOfOddSizeWithoutPadByteIsSkipped)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::append(bytes, wave::chunk("LIST", wave::Bytes(3)));
    wave::append(bytes, wave::chunk("data", wave::samples16({1, 2, 3})));

    EXPECT_EQ("opened", opening(bytes));
}

TEST_F(WavfileHeader, FileWithoutFormatChunkRaisesTheFormatMessage)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::chunk("data", wave::samples16({1, 2, 3})));

    EXPECT_EQ(noFormat, opening(bytes));
}

TEST_F(WavfileHeader, FileWithoutDataChunkRaisesTheDataMessage)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::append(bytes, wave::chunk("LIST", wave::Bytes(10)));

    EXPECT_EQ(noData, opening(bytes));
}

TEST_F(WavfileHeader, ChunkThatClaimsMoreThanTheFileRaisesTheDataMessage)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::appendText(bytes, "LIST");
    wave::append32(bytes, 0xFFFFFFFFu);
    wave::append(bytes, wave::chunk("data", wave::samples16({1, 2, 3})));

    EXPECT_EQ(noData, opening(bytes));
}

TEST_F(WavfileHeader, DataChunkBeforeTheFormatIsSkipped)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::chunk("data", wave::Bytes(10)));
    wave::append(bytes, wave::formatChunk(wave::Format()));

    EXPECT_EQ(noData, opening(bytes));
}

TEST_F(WavfileHeader, FormatChunksOf18And40BytesAreAccepted)
{
    for (const std::uint32_t chunkSize : {18u, 40u}) {
        wave::Format longer;
        longer.chunkSize = chunkSize;
        const std::string path =
            folder.write("take.wav", wave::file(longer, wave::samples16({1, 2, 3})));

        const wavfile_t file(path, forReading, 1, 16000);

        EXPECT_EQ(3u, file.frames) << chunkSize;
        // 12 + 8 + the chunk + 8.
        EXPECT_EQ(28 + chunkSize, static_cast<std::streamoff>(file.dataStart));
    }
}

// 0 - 16 is 0xFFFFFFF0 in 32 bits, and that many bytes forward there is nothing.
TEST_F(WavfileHeader, FormatChunkOfNoBytesSkipsForwardAndRaisesTheDataMessage)
{
    wave::Format empty;
    empty.chunkSize = 0;

    EXPECT_EQ(noData, opening(wave::file(empty, wave::samples16({1, 2, 3}))));
}

TEST_F(WavfileHeader, FormatChunkOf14BytesSkipsForwardAndRaisesTheDataMessage)
{
    wave::Format shorter;
    shorter.chunkSize = 14;

    EXPECT_EQ(noData, opening(wave::file(shorter, wave::samples16({1, 2, 3}))));
}

TEST_F(WavfileHeader, TagsBelow2AreTakenAtAnyWidth)
{
    for (const std::uint32_t tag : {0u, 1u}) {
        for (const std::uint32_t bits : {8u, 12u, 16u, 24u, 32u, 64u}) {
            EXPECT_EQ("opened", openingFormat(tag, 1, bits)) << tag << ", " << bits;
        }
    }
}

TEST_F(WavfileHeader, TagsWithTheTopBitAreTakenAtAnyWidth)
{
    for (const std::uint32_t tag : {0x8000u, 0xFFFEu, 0xFFFFu}) {
        EXPECT_EQ("opened", openingFormat(tag, 1, 24)) << tag;
    }
}

TEST_F(WavfileHeader, TagsFrom2AreTakenAt8And16And32Bits)
{
    for (const std::uint32_t tag : {2u, 3u, 0x7FFFu}) {
        for (const std::uint32_t bits : {8u, 16u, 32u}) {
            EXPECT_EQ("opened", openingFormat(tag, 1, bits)) << tag << ", " << bits;
        }
    }
}

TEST_F(WavfileHeader, TagsFrom2AreRefusedAtOtherWidths)
{
    for (const std::uint32_t tag : {2u, 3u, 0x7FFFu}) {
        for (const std::uint32_t bits : {0u, 4u, 12u, 24u, 64u, 0xFFF8u}) {
            EXPECT_EQ(badFormat, openingFormat(tag, 1, bits)) << tag << ", " << bits;
        }
    }
}

TEST_F(WavfileHeader, FormatIsJudgedBeforeTheDataChunkIsLookedFor)
{
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::formatChunk(wave::format(3, 1, 24)));

    EXPECT_EQ(badFormat, opening(bytes));
}

TEST_F(WavfileHeader, WidthsWithinASingleByteRaiseAnErrorOfTheirOwn)
{
    for (int bits = -7; bits <= 7; ++bits) {
        const auto field = static_cast<std::uint32_t>(bits) & 0xFFFFu;
        SCOPED_TRACE(bits);

        expectOwnError(openingFormat(1, 1, field));
    }
}

TEST_F(WavfileHeader, NoChannelsRaiseAnErrorOfTheirOwn)
{
    expectOwnError(openingFormat(1, 0, 16));
}

TEST_F(WavfileHeader, NegativeChannelsRaiseAnErrorOfTheirOwn)
{
    for (const std::uint32_t channels : {0xFFFFu, 0x8000u}) {
        SCOPED_TRACE(channels);

        expectOwnError(openingFormat(1, channels, 16));
    }
}

TEST_F(WavfileHeader, FramesAreTheBytesDividedTwiceWithoutRemainders)
{
    const std::string path =
        folder.write("take.wav", wave::fileClaiming(wave::format(1, 2, 16), 15, wave::Bytes(15)));

    const wavfile_t file(path, forReading, 1, 16000);

    // 15 / 2 = 7, 7 / 2 = 3.
    EXPECT_EQ(3u, file.frames);
}

// 12 bits divide to 1 byte, 24 to 3.
TEST_F(WavfileHeader, FramesOfOddWidthsCountWholeBytesOfASample)
{
    const std::string narrow =
        folder.write("narrow.wav", wave::file(wave::format(1, 1, 12), wave::Bytes(24)));
    const std::string wide =
        folder.write("wide.wav", wave::file(wave::format(1, 1, 24), wave::Bytes(24)));

    const wavfile_t narrowFile(narrow, forReading, 1, 16000);
    const wavfile_t wideFile(wide, forReading, 1, 16000);

    EXPECT_EQ(24u, narrowFile.frames);
    EXPECT_EQ(8u, wideFile.frames);
}

// -8 / 8 is -1, which as an unsigned divisor is 2^32 - 1.
TEST_F(WavfileHeader, WidthOfMinus8DividesByTheGreatestUnsigned)
{
    const wave::Format negative = wave::format(1, 1, 0xFFF8u);
    const std::string few = folder.write("few.wav", wave::fileClaiming(negative, 4000, {}));
    const std::string all = folder.write("all.wav", wave::fileClaiming(negative, 0xFFFFFFFFu, {}));

    const wavfile_t fewFile(few, forReading, 1, 16000);
    const wavfile_t allFile(all, forReading, 1, 16000);

    EXPECT_EQ(-8, fewFile.bitsPerSample);
    EXPECT_EQ(0u, fewFile.frames);
    EXPECT_EQ(1u, allFile.frames);
}

TEST_F(WavfileHeader, DataSizeOf0HasNoFrames)
{
    const std::string path =
        folder.write("take.wav", wave::fileClaiming(wave::Format(), 0, wave::samples16({1, 2, 3})));

    const wavfile_t file(path, forReading, 1, 16000);

    EXPECT_EQ(0u, file.frames);
}

TEST_F(WavfileHeader, DataSizeBeyondTheFileIsBelieved)
{
    const std::string path = folder.write(
        "take.wav", wave::fileClaiming(wave::Format(), 0xFFFFFFFFu, wave::samples16({1, 2, 3})));

    const wavfile_t file(path, forReading, 1, 16000);

    // (2^32 - 1) / 2.
    EXPECT_EQ(2147483647u, file.frames);
}

TEST_F(WavfileHeader, Accepts17And32767Channels)
{
    for (const std::uint32_t channels : {17u, 32767u}) {
        const std::string path = folder.write(
            "take.wav", wave::file(wave::format(1, channels, 16),
                                   wave::Bytes(2 * 2 * static_cast<std::size_t>(channels))));

        const wavfile_t file(path, forReading, 1, 16000);

        EXPECT_EQ(static_cast<int>(channels), file.channels);
        EXPECT_EQ(2u, file.frames);
    }
}

TEST_F(WavfileHeader, OtherOpenModesOpenNothing)
{
    const std::string path = folder.write("take.wav", wave::file16({1, 2, 3}));

    for (const unsigned int openMode : {0u, 1u, 12u, 24u}) {
        const wavfile_t file(path, openMode, 5, 12345);

        EXPECT_EQ(0, file.mode) << openMode;
        EXPECT_EQ(5, file.channels);
        EXPECT_EQ(12345u, file.sampleRate);
        EXPECT_EQ(0u, file.frames);
        EXPECT_EQ(0, file.bitsPerSample);
    }
    EXPECT_EQ(wave::file16({1, 2, 3}), wave::readFile(path));
}

TEST_F(WavfileHeader, OtherOpenModesMakeNoFile)
{
    const std::string path = folder / "new.wav";

    {
        const wavfile_t file(path, 24, 1, 8000);
    }

    EXPECT_FALSE(std::filesystem::exists(path));
}
