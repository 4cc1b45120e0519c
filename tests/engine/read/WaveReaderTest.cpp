#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Reading.h"
#include "Wave.h"
#include "read/Failure.h"

namespace
{

using reading::appendWave64Sound;
using reading::appendWideHead;
using reading::Direct;
using reading::samplesOf;
using reading::wave64;
using reading::wave64Start;
using reading::wideHeadBytes;
using testing::ElementsAre;
using testing::IsEmpty;

Direct readWave(const std::string& path, const vxlsync::Options& options = {},
                bool bytesAsSigned = false)
{
    return reading::readWith(vxlsync::readWave, path, options, bytesAsSigned);
}

std::string failureOf(const std::string& path, const vxlsync::Options& options = {})
{
    try {
        readWave(path, options);
    } catch (const vxlsync::ReadFailure& failure) {
        return failure.what();
    }
    return "";
}

class WaveReader : public testing::Test
{
protected:
    std::vector<float> read(const wave::Format& format, const wave::Bytes& data) const
    {
        return samplesOf(readWave(folder.write("a.wav", wave::file(format, data))).recording);
    }

    const wave::TempFolder folder;
};

TEST_F(WaveReader, ReadsIntegersOfAnyWidth)
{
    EXPECT_THAT(read(wave::format(1, 1, 8), {0xC0, 0x60, 0x80}), ElementsAre(0.5f, -0.25f, 0.0f));
    EXPECT_THAT(read(wave::format(1, 1, 16), wave::samples16({16384, -8192})),
                ElementsAre(0.5f, -0.25f));
    EXPECT_THAT(read(wave::format(1, 1, 24), {0, 0, 0x40, 0, 0, 0xE0}), ElementsAre(0.5f, -0.25f));
    EXPECT_THAT(read(wave::format(1, 1, 32), {0, 0, 0, 0x40, 0, 0, 0, 0xE0}),
                ElementsAre(0.5f, -0.25f));
    // 12 bits in the upper part of two bytes.
    EXPECT_THAT(read(wave::format(1, 1, 12), {0, 0x40}), ElementsAre(0.5f));
}

TEST_F(WaveReader, ReadsFloats)
{
    EXPECT_THAT(read(wave::format(3, 1, 32), wave::samplesFloat({0.5f, -2.0f})),
                ElementsAre(0.5f, -2.0f));
    const double value = 0.1;
    wave::Bytes bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    EXPECT_THAT(read(wave::format(3, 1, 64), bytes), ElementsAre(0.1f));
}

TEST_F(WaveReader, TakesTheLeftChannelTheMixOrAnyOther)
{
    const std::string path = folder.write(
        "stereo.wav", wave::file(wave::format(1, 2, 16), wave::samples16({16384, -8192})));
    vxlsync::Options options;

    EXPECT_THAT(samplesOf(readWave(path, options).recording), ElementsAre(0.5f));
    options.channel = vxlsync::Channel::mix;
    // (0.5 - 0.25) / 2.
    EXPECT_THAT(samplesOf(readWave(path, options).recording), ElementsAre(0.125f));
    options.channel = vxlsync::Channel::numbered;
    options.channelNumber = 2;
    EXPECT_THAT(samplesOf(readWave(path, options).recording), ElementsAre(-0.25f));
    options.channelNumber = 3;
    EXPECT_EQ(failureOf(path, options), "no channel 3 among 2");
}

TEST_F(WaveReader, HasOneStream)
{
    const std::string path = folder.write("a.wav", wave::file16({16384}));
    vxlsync::Options options;

    options.stream = 1;
    EXPECT_EQ(failureOf(path, options), "");
    options.stream = 2;
    EXPECT_EQ(failureOf(path, options), "no audio stream 2");
}

TEST_F(WaveReader, SeesBytesThatAreSignedAgainstTheRule)
{
    // 0, 1, -1 and 64 as signed bytes.
    const std::string path =
        folder.write("a.wav", wave::file(wave::format(1, 1, 8), {0x00, 0x01, 0xFF, 0x40}));

    EXPECT_TRUE(readWave(path).findings.bytesLookSigned);
    const Direct direct = readWave(path, {}, true);
    EXPECT_FALSE(direct.findings.bytesLookSigned);
    EXPECT_THAT(samplesOf(direct.recording),
                ElementsAre(0.0f, 1.0f / 128.0f, -1.0f / 128.0f, 0.5f));
}

TEST_F(WaveReader, ReadsMoreThanABlockOfAnyNumberOfChannels)
{
    std::vector<int> samples;
    for (int i = 0; i < 30000; ++i) {
        samples.push_back(i);
        samples.insert(samples.end(), 6, 0);
    }

    const std::vector<float> out = read(wave::format(1, 7, 16), wave::samples16(samples));

    ASSERT_EQ(out.size(), 30000u);
    for (int i = 0; i < 30000; ++i)
        ASSERT_EQ(out[static_cast<std::size_t>(i)], static_cast<float>(i) / 32768.0f);
}

TEST_F(WaveReader, ReadsFramesLargerThanABlock)
{
    // 65535 channels of 8 bytes.
    wave::Bytes data(std::size_t{2} * 65535 * 8);
    const double value = 0.5;
    std::memcpy(data.data() + std::size_t{65535} * 8, &value, sizeof value);

    EXPECT_THAT(read(wave::format(3, 65535, 64), data), ElementsAre(0.0f, 0.5f));
}

TEST_F(WaveReader, ReadsToTheEndWhereTheSizeIsNotKnown)
{
    const wave::Bytes data = wave::samples16({16384, -8192});

    for (const std::uint32_t claim : {0u, 0xFFFFFFFFu}) {
        const Direct direct = readWave(
            folder.write("a.wav", wave::fileClaiming(wave::format(1, 1, 16), claim, data)));
        EXPECT_THAT(samplesOf(direct.recording), ElementsAre(0.5f, -0.25f));
        EXPECT_THAT(direct.findings.notes, IsEmpty());
    }
}

TEST_F(WaveReader, ReadsNothingBehindTheSound)
{
    wave::Bytes bytes = wave::file16({16384});
    wave::append(bytes, wave::chunk("LIST", {1, 2, 3, 4}));

    EXPECT_THAT(samplesOf(readWave(folder.write("a.wav", bytes)).recording), ElementsAre(0.5f));
}

TEST_F(WaveReader, SaysWhereItEndsEarly)
{
    const wave::Bytes data = wave::samples16(std::vector<int>(16000, 100));

    const Direct direct = readWave(
        folder.write("a.wav", wave::fileClaiming(wave::format(1, 1, 16), 5 * 16000, data)));

    EXPECT_EQ(direct.recording.samples.size(), 16000u);
    EXPECT_THAT(direct.findings.notes, ElementsAre("ends early: 2.0 of 5.0 s could be read"));
}

// The note is for more than a second.
TEST_F(WaveReader, KeepsQuietAboutALastBlockThatIsMissing)
{
    const Direct direct = readWave(folder.write(
        "a.wav", wave::fileClaiming(wave::format(1, 1, 16), 16000 + 2, wave::samples16({100}))));

    EXPECT_THAT(direct.findings.notes, IsEmpty());
}

TEST_F(WaveReader, ReadsWave64)
{
    wave::Bytes bytes = wave64(wideHeadBytes + 4);
    wave::append(bytes, wave::samples16({16384, -8192, 1, 2}));

    EXPECT_THAT(samplesOf(readWave(folder.write("a.w64", bytes)).recording),
                ElementsAre(0.5f, -0.25f));
}

// Bytes that would be a recorder's name in a RIFF file.
TEST_F(WaveReader, TakesNoFactsFromWave64)
{
    wave::Bytes bytes = wave64Start();
    const std::string chunk = "bext";
    std::copy(chunk.begin(), chunk.end(), bytes.begin() + 12);
    constexpr std::size_t noteBytes = 704;
    bytes[16] = noteBytes % 256;
    bytes[17] = noteBytes / 256;
    appendWideHead(bytes, "note", wideHeadBytes + noteBytes);
    bytes.resize(bytes.size() + noteBytes, 'x');
    appendWave64Sound(bytes, wideHeadBytes + 4);
    wave::append(bytes, wave::samples16({16384, -8192}));

    const Direct direct = readWave(folder.write("a.w64", bytes));

    EXPECT_EQ(samplesOf(direct.recording).size(), 2u);
    EXPECT_EQ(direct.findings.facts.originator, "");
}

TEST_F(WaveReader, ReadsWave64ToTheEndWhereTheSizeIsNotKnown)
{
    for (const std::uint64_t size : {std::uint64_t{0}, wideHeadBytes, ~std::uint64_t{0}}) {
        wave::Bytes bytes = wave64(size);
        wave::append(bytes, wave::samples16({16384, -8192}));

        const Direct direct = readWave(folder.write("a.w64", bytes));

        EXPECT_THAT(samplesOf(direct.recording), ElementsAre(0.5f, -0.25f)) << size;
        EXPECT_THAT(direct.findings.notes, IsEmpty()) << size;
    }
}

TEST_F(WaveReader, SaysWhereWave64EndsEarly)
{
    // All ones in 32 bits are a size as any other here.
    wave::Bytes bytes = wave64(wideHeadBytes + 0xFFFFFFFF);
    wave::append(bytes, wave::samples16(std::vector<int>(16000, 100)));

    // (2^32 - 1) / 2 / 8000 = 268435.456.
    EXPECT_THAT(readWave(folder.write("a.w64", bytes)).findings.notes,
                ElementsAre("ends early: 2.0 of 268435.5 s could be read"));
}

TEST_F(WaveReader, RefusesWhatIsNoWave)
{
    EXPECT_EQ(failureOf(folder.write("empty.wav", {})), "is not a WAV file that can be read");
    EXPECT_EQ(failureOf(folder / "gone.wav"), "does not exist");
}

TEST_F(WaveReader, RefusesRatesThatAreTooLow)
{
    wave::Format slow;
    slow.sampleRate = 300;

    EXPECT_EQ(failureOf(folder.write("a.wav", wave::file(slow, wave::Bytes(64)))),
              "sampled 300 times a second; 2000 are the least that can be compared");
}

} // namespace
