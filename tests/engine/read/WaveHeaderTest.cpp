#include "read/WaveHeader.h"

#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "Reading.h"
#include "Wave.h"

namespace
{

using reading::appendWave64Sound;
using reading::appendWideHead;
using reading::wave64;
using reading::wave64Start;
using reading::wideHeadBytes;
using wave::Bytes;
using Header = vxlsync::WaveHeader;

// Of mono, 16 bits and 8000 Hz.
constexpr std::uint32_t bytesPerSecond = 16000;

class WaveHeader : public testing::Test
{
protected:
    std::optional<Header> headerOf(const Bytes& bytes) const
    {
        return vxlsync::findWaveHeader(vxlsync::InputFile(folder.write("a", bytes)));
    }

    std::optional<Header> headerOf(std::uint32_t tag, std::uint32_t channels,
                                   std::uint32_t bits) const
    {
        return headerOf(wave::file(wave::format(tag, channels, bits), Bytes(64)));
    }

    // Width of a sample in bytes; 0 for a refusal.
    std::size_t widthOf(std::uint32_t tag, std::uint32_t bits) const
    {
        const std::optional<Header> header = headerOf(tag, 1, bits);
        return header ? header->sampleBytes : 0;
    }

    const wave::TempFolder folder;
};

TEST_F(WaveHeader, SaysHowTheSoundIsCodedAndWhereItStands)
{
    wave::Format format = wave::format(1, 2, 24);
    format.sampleRate = 48000;

    const Header header = headerOf(wave::file(format, Bytes(144000))).value();

    EXPECT_EQ(header.coding, Header::Coding::integer);
    EXPECT_EQ(header.channels, 2);
    EXPECT_EQ(header.rate, 48000);
    EXPECT_EQ(header.sampleBytes, 3u);
    EXPECT_EQ(header.frameBytes(), 6u);
    // Behind 12 bytes of the file, 24 of the format and 8 of the chunk's own.
    EXPECT_EQ(header.dataStart, 44);
    EXPECT_EQ(header.dataBytes, 144000);
    EXPECT_FALSE(header.isWave64);
    // 144000 / 6 / 48000.
    EXPECT_EQ(header.statedSeconds(), 0.5);
}

TEST_F(WaveHeader, KnowsIntegersOfUpToFourBytesAndRealNumbersOfFourAndEight)
{
    for (const std::uint32_t bits : {1u, 8u})
        EXPECT_EQ(widthOf(1, bits), 1u) << bits;
    for (const std::uint32_t bits : {9u, 12u, 16u})
        EXPECT_EQ(widthOf(1, bits), 2u) << bits;
    for (const std::uint32_t bits : {25u, 32u})
        EXPECT_EQ(widthOf(1, bits), 4u) << bits;
    EXPECT_EQ(widthOf(3, 32), 4u);
    EXPECT_EQ(widthOf(3, 64), 8u);
    EXPECT_EQ(headerOf(3, 1, 32)->coding, Header::Coding::real);
}

TEST_F(WaveHeader, IsNoneOfACodingThatIsNotKnown)
{
    EXPECT_EQ(widthOf(2, 4), 0u);
    EXPECT_EQ(widthOf(1, 0), 0u);
    EXPECT_EQ(widthOf(1, 33), 0u);
    EXPECT_EQ(widthOf(1, 65535), 0u);
    for (const std::uint32_t bits : {0u, 16u, 31u, 33u, 63u})
        EXPECT_EQ(widthOf(3, bits), 0u) << bits;
    EXPECT_FALSE(headerOf(1, 0, 16));
    EXPECT_TRUE(headerOf(1, 65535, 16));
}

// A format of 40 bytes whose long name begins with the tag.
Bytes extended(std::uint32_t tag)
{
    Bytes bytes = wave::riffStart();
    wave::Format format = wave::format(0xFFFE, 1, 32);
    format.chunkSize = 40;
    wave::append(bytes, wave::formatChunk(format));
    // Of the file's head, the chunk's, and its fields before the name.
    bytes[12 + 8 + 24] = static_cast<unsigned char>(tag);
    wave::append(bytes, wave::chunk("data", Bytes(4)));
    return bytes;
}

TEST_F(WaveHeader, OfALongFormatSaysWhatTheNameStandsFor)
{
    EXPECT_EQ(headerOf(extended(1))->coding, Header::Coding::integer);
    EXPECT_EQ(headerOf(extended(3))->coding, Header::Coding::real);
    EXPECT_FALSE(headerOf(extended(2)));
}

// What lies behind a short one would make it a good one.
TEST_F(WaveHeader, TakesNothingOfAFormatThatLiesBehindIt)
{
    Bytes unnamed = wave::riffStart();
    wave::append(unnamed, wave::formatChunk(wave::format(0xFFFE, 1, 32)));
    wave::append(unnamed, wave::chunk("note", {1, 0}));
    wave::append(unnamed, wave::chunk("data", Bytes(4)));
    EXPECT_FALSE(headerOf(unnamed));

    Bytes narrow = wave::riffStart();
    Bytes fields = wave::formatChunk(wave::Format());
    // Without its last field, the width; the name of the next chunk would make 13 bits of it.
    fields[4] = 14;
    fields.resize(fields.size() - 2);
    wave::append(narrow, fields);
    wave::append(narrow, wave::chunk(std::string("\x0D\0xx", 4), {}));
    wave::append(narrow, wave::chunk("data", Bytes(4)));
    EXPECT_FALSE(headerOf(narrow));
}

// As decoders read it; a second one could say anything of the sound, no rate at all among it.
TEST_F(WaveHeader, IsOfTheFirstFormat)
{
    const auto fileWith = [](const wave::Format& first, const wave::Format& second) {
        Bytes bytes = wave::riffStart();
        wave::append(bytes, wave::formatChunk(first));
        wave::append(bytes, wave::formatChunk(second));
        wave::append(bytes, wave::chunk("data", Bytes(4)));
        return bytes;
    };
    wave::Format none;
    none.sampleRate = 0;

    EXPECT_EQ(headerOf(fileWith(wave::Format(), none))->rate, 8000);
    EXPECT_TRUE(headerOf(fileWith(wave::Format(), wave::format(2, 1, 4))));
    EXPECT_FALSE(headerOf(fileWith(wave::format(2, 1, 4), wave::Format())));
}

TEST_F(WaveHeader, OfWave64IsOfTheFirstFormat)
{
    const auto fileWith = [](const wave::Format& first) {
        const Bytes chunk = wave::formatChunk(first);
        Bytes bytes = wave64Start();
        appendWideHead(bytes, "fmt ", wideHeadBytes + 16);
        bytes.insert(bytes.end(), chunk.begin() + 8, chunk.end());
        appendWave64Sound(bytes, wideHeadBytes + 4);
        return bytes;
    };

    EXPECT_EQ(headerOf(fileWith(wave::format(3, 2, 64)))->frameBytes(), 16u);
    EXPECT_FALSE(headerOf(fileWith(wave::format(2, 1, 4))));
}

TEST_F(WaveHeader, SkipsChunksAndTheirPadding)
{
    Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::chunk("bext", {1, 2, 3}));
    bytes.push_back(0);
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::append(bytes, wave::chunk("data", wave::samples16({16384})));

    EXPECT_EQ(headerOf(bytes)->dataStart, 56);
    EXPECT_EQ(headerOf(bytes)->dataBytes, 2);
}

TEST_F(WaveHeader, TakesASizeAsItIsUnlessItIsNone)
{
    const auto dataBytesFor = [&](std::uint32_t claim) {
        return headerOf(wave::fileClaiming(wave::Format(), claim, Bytes(64)))->dataBytes;
    };

    EXPECT_EQ(dataBytesFor(0), Header::runsToTheEnd);
    EXPECT_EQ(dataBytesFor(0xFFFFFFFF), Header::runsToTheEnd);
    EXPECT_EQ(dataBytesFor(1), 1);
    EXPECT_EQ(dataBytesFor(0xFFFFFFFE), 0xFFFFFFFE);
    EXPECT_LT(headerOf(wave::fileClaiming(wave::Format(), 0, Bytes(64)))->statedSeconds(), 0.0);
}

// A file of that kind whose sound is `dataBytes` long by its first chunk, and by its own all ones.
Bytes withWideSizes(const std::string& kind, std::uint64_t dataBytes)
{
    Bytes sizes(8);
    wave::append32(sizes, static_cast<std::uint32_t>(dataBytes));
    wave::append32(sizes, static_cast<std::uint32_t>(dataBytes >> 32U));
    sizes.resize(28);
    Bytes bytes;
    wave::appendText(bytes, kind);
    wave::append32(bytes, 0xFFFFFFFF);
    wave::appendText(bytes, "WAVE");
    wave::append(bytes, wave::chunk("ds64", sizes));
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::appendText(bytes, "data");
    wave::append32(bytes, 0xFFFFFFFF);
    wave::append(bytes, Bytes(64));
    return bytes;
}

TEST_F(WaveHeader, OfALargeFileHasTheSizeThatStandsApart)
{
    constexpr std::uint64_t large = std::uint64_t{bytesPerSecond} * 1000000;
    EXPECT_EQ(headerOf(withWideSizes("RF64", 4))->dataBytes, 4);
    EXPECT_EQ(headerOf(withWideSizes("RF64", large))->dataBytes, large);
    EXPECT_EQ(headerOf(withWideSizes("RF64", large))->statedSeconds(), 1000000.0);
    // Of no other file.
    EXPECT_EQ(headerOf(withWideSizes("RIFF", 4))->dataBytes, Header::runsToTheEnd);
}

TEST_F(WaveHeader, OfALargeFileHasNoSizeBeyondWhatFilesCanHave)
{
    for (const std::uint64_t size : {std::uint64_t{0}, std::uint64_t{1} << 63U, ~std::uint64_t{0}})
        EXPECT_EQ(headerOf(withWideSizes("RF64", size))->dataBytes, Header::runsToTheEnd) << size;
}

TEST_F(WaveHeader, OfWave64SaysTheSame)
{
    const Header header = headerOf(wave64(wideHeadBytes + bytesPerSecond)).value();

    EXPECT_TRUE(header.isWave64);
    EXPECT_EQ(header.coding, Header::Coding::integer);
    EXPECT_EQ(header.channels, 1);
    EXPECT_EQ(header.rate, 8000);
    EXPECT_EQ(header.sampleBytes, 2u);
    // Behind 40 bytes of the file, 32 of a note, 40 of the format and 24 of the chunk's own.
    EXPECT_EQ(header.dataStart, 136);
    EXPECT_EQ(header.dataBytes, bytesPerSecond);
    EXPECT_EQ(header.statedSeconds(), 1.0);
}

TEST_F(WaveHeader, OfWave64KnowsWhatIsNoSize)
{
    for (const std::uint64_t size : {std::uint64_t{0}, wideHeadBytes - 1, wideHeadBytes,
                                     (std::uint64_t{1} << 63U) + wideHeadBytes, ~std::uint64_t{0}})
        EXPECT_EQ(headerOf(wave64(size))->dataBytes, Header::runsToTheEnd) << size;
    EXPECT_EQ(headerOf(wave64(wideHeadBytes + 1))->dataBytes, 1);
    // All ones in 32 bits are a size as any other here.
    EXPECT_EQ(headerOf(wave64(wideHeadBytes + 0xFFFFFFFF))->dataBytes, 0xFFFFFFFF);
}

// Behind it there would be the sound, if additions ran over.
TEST_F(WaveHeader, OfWave64LiesBehindNoChunkThatIsLongerThanTheFile)
{
    for (const std::uint64_t size : {std::uint64_t{0}, std::uint64_t{wideHeadBytes + 1000},
                                     std::uint64_t{1} << 63U, ~std::uint64_t{0} - 7}) {
        Bytes bytes = wave64Start();
        appendWideHead(bytes, "note", size);
        appendWave64Sound(bytes, wideHeadBytes + 4);

        EXPECT_FALSE(headerOf(bytes)) << size;
    }
}

// A size that would be negative leads to what another chunk holds.
TEST_F(WaveHeader, OfWave64LiesBehindNoChunkThatLeadsBack)
{
    Bytes hidden;
    appendWave64Sound(hidden, wideHeadBytes + 4);
    Bytes bytes = wave64Start();
    appendWideHead(bytes, "note", wideHeadBytes + hidden.size());
    wave::append(bytes, hidden);
    // To the first of them from behind its own head, what rounds to eight in excess.
    const std::uint64_t back = hidden.size() + wideHeadBytes + 7;
    appendWideHead(bytes, "note", wideHeadBytes - back);

    EXPECT_FALSE(headerOf(bytes));
}

TEST_F(WaveHeader, IsNoneOfWhatIsNoWave)
{
    const Bytes good = wave::file16({16384});
    ASSERT_TRUE(headerOf(good));
    for (const std::size_t place : {0u, 3u, 8u, 11u}) {
        Bytes other = good;
        other[place] = 'X';
        EXPECT_FALSE(headerOf(other)) << place;
    }
    for (const std::size_t place : {0u, 24u}) {
        Bytes other = wave64(wideHeadBytes + 2);
        other[place] = 'X';
        EXPECT_FALSE(headerOf(other)) << place;
    }
    // Cut anywhere before the sound.
    for (std::size_t bytes = 0; bytes < 44; ++bytes)
        EXPECT_FALSE(headerOf(Bytes(good.begin(), good.begin() + static_cast<long>(bytes))));
}

TEST_F(WaveHeader, IsNoneOfSoundWithoutAFormatBeforeIt)
{
    Bytes soundFirst = wave::riffStart();
    wave::append(soundFirst, wave::chunk("data", wave::samples16({1})));
    wave::append(soundFirst, wave::formatChunk(wave::Format()));
    EXPECT_FALSE(headerOf(soundFirst));

    Bytes wide = wave64Start();
    EXPECT_FALSE(headerOf(wide));
    appendWideHead(wide, "data", wideHeadBytes + 2);
    EXPECT_FALSE(headerOf(wide));
}

// One empty chunk after the other, and only then the sound. The format and the sound are among the
// thousand that are walked at the most, and in Wave64 a note.
TEST_F(WaveHeader, LiesBehindNoMoreChunksThanARecordingHas)
{
    const auto behindEmpty = [](std::size_t count) {
        Bytes bytes = wave::riffStart();
        bytes.resize(bytes.size() + count * 8);
        wave::append(bytes, wave::formatChunk(wave::Format()));
        wave::append(bytes, wave::chunk("data", wave::samples16({1})));
        return bytes;
    };
    EXPECT_TRUE(headerOf(behindEmpty(998)));
    EXPECT_FALSE(headerOf(behindEmpty(999)));

    const auto behindEmptyWide = [](int count) {
        Bytes bytes = wave64Start();
        for (int i = 0; i < count; ++i)
            appendWideHead(bytes, "note", wideHeadBytes);
        appendWave64Sound(bytes, wideHeadBytes + 4);
        return bytes;
    };
    EXPECT_TRUE(headerOf(behindEmptyWide(997)));
    EXPECT_FALSE(headerOf(behindEmptyWide(998)));
}

} // namespace
