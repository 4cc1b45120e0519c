#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

extern "C" {
#include <libavutil/mem.h>
}

#include "Reading.h"
#include "Signals.h"
#include "Wave.h"

// Files that harm a reader which believes them.
namespace
{

using reading::encode;
using reading::readFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using vxlsync::Recording;

wave::Bytes bytesOf(const std::string& text)
{
    return wave::Bytes(text.begin(), text.end());
}

class MediaArmour : public testing::Test
{
protected:
    std::string source(std::size_t seconds, int sampleRate) const
    {
        const std::vector<float> noise =
            signals::noise(1, seconds * static_cast<std::size_t>(sampleRate));
        std::vector<int> samples;
        for (const float sample : noise)
            samples.push_back(static_cast<int>(20000.0f * sample));
        return folder.write("source.wav",
                            wave::file16(samples, static_cast<std::uint32_t>(sampleRate)));
    }

    std::string make(const std::string& name, const std::string& options, std::size_t seconds,
                     int sampleRate) const
    {
        EXPECT_TRUE(
            encode("-i " + source(seconds, sampleRate) + " " + options + " " + (folder / name)))
            << name;
        return folder / name;
    }

    const wave::TempFolder folder;
};

struct Blocks {
    const char* name;
    const char* options;
    int sampleRate;
};

void PrintTo(const Blocks& blocks, std::ostream* out)
{
    *out << blocks.name;
}

class MediaBlocks : public MediaArmour, public testing::WithParamInterface<Blocks>
{
};

// Decoded frames of tens of thousands of samples.
TEST_P(MediaBlocks, AreTakenUpWhole)
{
    const Blocks& blocks = GetParam();

    const Recording recording = readFile(make(blocks.name, blocks.options, 4, blocks.sampleRate));

    EXPECT_EQ(recording.failure, "");
    EXPECT_NEAR(static_cast<double>(recording.samples.size()), 4.0 * 8000.0, 1.0);
    EXPECT_THAT(recording.notes, IsEmpty());
}

constexpr Blocks largeBlocks[] = {
    {"a.tta", "", 22050},
    {"b.tta", "", 96000},
    {"a.wv", "", 22050},
    {"b.wv", "", 32000},
    {"a.flac", "-frame_size 30000", 44100},
    {"b.flac", "-frame_size 65535", 96000},
    {"slow.wav", "", 2000},
    {"fast.wav", "-ar 768000", 96000},
};

INSTANTIATE_TEST_SUITE_P(All, MediaBlocks, testing::ValuesIn(largeBlocks),
                         [](const testing::TestParamInfo<Blocks>& blocks) {
                             std::string name = blocks.param.name;
                             name[name.find('.')] = '_';
                             return name;
                         });

TEST_F(MediaArmour, RefusesRatesThatCannotBeComparedInWords)
{
    EXPECT_EQ(readFile(folder.write("a.wav", wave::file16(std::vector<int>(100, 1), 1))).failure,
              "sampled 1 times a second; 2000 are the least that can be compared");
    EXPECT_EQ(readFile(folder.write("b.wav", wave::file16(std::vector<int>(900, 1), 300))).failure,
              "sampled 300 times a second; 2000 are the least that can be compared");
    EXPECT_EQ(
        readFile(folder.write("c.wav", wave::file16(std::vector<int>(900, 1), 768001))).failure,
        "sampled 768001 times a second; 768000 are the most that can be compared");
}

// Each names a good recording beside it.
struct Pointer {
    const char* name;
    const char* text;
};

void PrintTo(const Pointer& pointer, std::ostream* out)
{
    *out << pointer.name;
}

class MediaPointers : public MediaArmour, public testing::WithParamInterface<Pointer>
{
};

TEST_P(MediaPointers, LeadNowhere)
{
    const std::string good = source(3, 8000);
    std::string text = GetParam().text;
    for (std::size_t at = text.find("GOOD"); at != std::string::npos; at = text.find("GOOD"))
        text.replace(at, 4, good);

    for (const std::string ending : {".wav", GetParam().name}) {
        const Recording recording = readFile(folder.write("x" + ending, bytesOf(text)));
        EXPECT_EQ(recording.failure,
                  "is in no format that can be read, or has lost its start or its end");
        EXPECT_EQ(recording.samples.size(), 0u);
    }
}

constexpr Pointer pointers[] = {
    {".m3u8", "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:3\n#EXT-X-MEDIA-SEQUENCE:0\n"
              "#EXTINF:3.0,\nfile:GOOD\n#EXT-X-ENDLIST\n"},
    {".mpd",
     "<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" "
     "mediaPresentationDuration=\"PT3S\" minBufferTime=\"PT1S\" "
     "profiles=\"urn:mpeg:dash:profile:isoff-on-demand:2011\"><Period><AdaptationSet "
     "contentType=\"audio\"><Representation id=\"1\" bandwidth=\"128000\" mimeType=\"audio/mp4\">"
     "<BaseURL>file:GOOD</BaseURL></Representation></AdaptationSet></Period></MPD>\n"},
    {".ffconcat", "ffconcat version 1.0\nfile 'GOOD'\n"},
    {".sdp", "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\n"
             "m=audio 5004 RTP/AVP 0\na=rtpmap:0 PCMU/8000\n"},
};

INSTANTIATE_TEST_SUITE_P(All, MediaPointers, testing::ValuesIn(pointers),
                         [](const testing::TestParamInfo<Pointer>& pointer) {
                             return std::string(pointer.param.name + 1);
                         });

// 25 frames a second are made of the letters that stand in it.
TEST_F(MediaArmour, TakesTextForNoSound)
{
    EXPECT_THAT(readFile(folder.write("a.txt", bytesOf(std::string(5000, 'a')))).failure,
                StartsWith("is in no format"));
    EXPECT_THAT(readFile(folder.write("noending", bytesOf("text"))).failure,
                StartsWith("is in no format"));
    EXPECT_THAT(readFile(folder.write("empty.mp3", {})).failure, StartsWith("is in no format"));
}

// The instructions of a program that makes sound.
TEST_F(MediaArmour, RunsNoProgramThatMakesSound)
{
    EXPECT_THAT(readFile(folder.write("a.sbg", bytesOf("-SE\nt: 200+10/10\nNOW t\n"))).failure,
                StartsWith("is in no format"));
}

TEST_F(MediaArmour, FailsAFileThatAsksForMoreMemoryThanThereIs)
{
    const std::string huge = make("a.flac", "", 2, 44100);
    const std::string good = folder.write("good.wav", wave::file16({16384}));
    vxlsync::Run run(1, reading::plenty, {});

    // No block of more than 4 KB from now on, and the buffers alone are larger; then none at all.
    for (const std::size_t largest : {4096u, 1u}) {
        av_max_alloc(largest);
        const std::vector<Recording> recordings = vxlsync::readAll(
            {reading::fileSource(huge), reading::sampleSource({0.5f}, 8000)}, {}, run);
        vxlsync::boundDecoders();

        EXPECT_EQ(recordings[0].failure, "asks for more memory than there is");
        EXPECT_EQ(recordings[1].failure, "");
    }
}

// Nothing of what is claimed is there, so that only the request itself shows.
TEST_F(MediaArmour, RefusesWhatOnlyADamagedFileClaims)
{
    av_max_alloc(INT32_MAX);
    void* const claimed = av_malloc(600u << 20u);
    vxlsync::boundDecoders();
    void* const refused = av_malloc(600u << 20u);
    void* const needed = av_malloc(400u << 20u);

    EXPECT_NE(claimed, nullptr);
    EXPECT_EQ(refused, nullptr);
    EXPECT_NE(needed, nullptr);
    av_free(claimed);
    av_free(refused);
    av_free(needed);
}

TEST_F(MediaArmour, GivesUpAFileThatGivesNothing)
{
    const std::string path = make("a.flac", "", 2, 44100);
    vxlsync::ReadLimits limits;
    // Eleven seconds go by whenever someone looks.
    double now = 0.0;
    limits.clock = [&now] { return now += 11.0; };

    EXPECT_EQ(readFile(path, {}, limits).failure, "gave nothing for 10 s, and was given up");
}

// The clock stands until half of the file is read.
TEST_F(MediaArmour, GivesUpAFileThatStopsInTheMiddle)
{
    const std::string path = make("a.flac", "-frame_size 1152", 20, 8000);
    vxlsync::ReadLimits limits;
    int looks = 0;
    limits.clock = [&looks] { return ++looks > 100 ? 11.0 * looks : 0.0; };

    EXPECT_EQ(readFile(path, {}, limits).failure, "gave nothing for 10 s, and was given up");
}

TEST_F(MediaArmour, IsPatientAsLongAsSomethingComes)
{
    const std::string path = make("a.flac", "", 5, 44100);
    vxlsync::ReadLimits limits;
    double now = 0.0;
    limits.clock = [&now] { return now += 0.5; };

    EXPECT_EQ(readFile(path, {}, limits).failure, "");
}

TEST_F(MediaArmour, DecodesNoMoreThanASizeCanHold)
{
    const std::string path = make("a.flac", "", 2, 44100);
    vxlsync::ReadLimits limits;
    limits.compressedSamplesPerByte = 0;

    EXPECT_THAT(readFile(path, {}, limits).failure, StartsWith("decodes to more than"));
}

TEST_F(MediaArmour, DecodesNoLongerThanAnyRecordingIs)
{
    const std::string path = make("a.flac", "", 2, 44100);
    vxlsync::ReadLimits limits;
    limits.longestSeconds = 1.5;

    EXPECT_EQ(readFile(path, {}, limits).failure,
              "decodes to more than 1.5 s of sound, which no recording of its size and kind holds");
}

// As sound it would need more than the 128 MB that the job may take.
TEST_F(MediaArmour, KeepsSilenceForNothing)
{
    const std::string path = folder / "silence.flac";
    ASSERT_TRUE(
        encode("-f lavfi -i anullsrc=r=2000:cl=mono:n=65535 -t 1500 -frame_size 65535 " + path));
    vxlsync::Run run(1, vxlsync::leastMemoryBytes, {});

    const std::vector<Recording> recordings =
        vxlsync::readAll({reading::fileSource(path)}, {}, run);

    EXPECT_EQ(recordings[0].failure, "");
    EXPECT_EQ(recordings[0].samples.size(), std::size_t{1500} * 8000);
    EXPECT_LT(recordings[0].samples.bytes(), 200'000u);
    EXPECT_LT(vxlsync::leastMemoryBytes - run.memory.remaining(), 500'000u);
}

// Six hours between two packets.
TEST_F(MediaArmour, KeepsGapsForNothing)
{
    const std::string path = make(
        "gap.mkv", "-af \"asetpts=PTS+if(gte(T\\,1)\\,3500/TB\\,0)\" -c:a pcm_s16le", 2, 44100);

    const Recording recording = readFile(path);

    EXPECT_NEAR(recording.durationSeconds, 3502.0, 0.1);
    EXPECT_LT(recording.samples.bytes() + recording.fine.bytes(), 2'000'000u);
    EXPECT_THAT(recording.notes, ElementsAre("1 gap of 3500.0 s is filled with silence"));
}

TEST_F(MediaArmour, LosesNoSoundToAClockThatJumpsBack)
{
    const std::string first = make("first.ts", "-c:a aac", 6, 44100);
    const std::string second = make("second.ts", "-c:a aac", 4, 44100);
    wave::Bytes both = wave::readFile(first);
    wave::append(both, wave::readFile(second));

    const Recording recording = readFile(folder.write("both.ts", both));

    EXPECT_NEAR(recording.durationSeconds, 10.0, 0.2);
    ASSERT_EQ(recording.notes.size(), 1u);
    EXPECT_THAT(recording.notes.front(), StartsWith("its clock jumps back by 6."));
}

TEST_F(MediaArmour, HearsNothingFromStampsThatAreAllZero)
{
    const std::string path = make("zero.mkv", "-c:a pcm_s16le -bsf:a setts=pts=0:dts=0", 3, 8000);

    const Recording recording = readFile(path);

    EXPECT_NEAR(recording.durationSeconds, 3.0, 0.01);
    EXPECT_THAT(recording.notes, IsEmpty());
}

// Place of the block of that number, below 128, in a FLAC file of blocks of 1152 samples, mono of
// 16 bits at 8000 Hz, by the header that all its blocks have.
std::size_t blockStart(const wave::Bytes& bytes, unsigned char number)
{
    const wave::Bytes header{0xFF, 0xF8, 0x34, 0x08, number};
    return static_cast<std::size_t>(
        std::search(bytes.begin(), bytes.end(), header.begin(), header.end()) - bytes.begin());
}

TEST_F(MediaArmour, GivesEachWholeBlockOfAFileThatIsCut)
{
    const wave::Bytes whole =
        wave::readFile(make("whole.flac", "-ac 1 -frame_size 1152", 20, 8000));
    const std::size_t start = blockStart(whole, 70);
    const std::size_t next = blockStart(whole, 71);
    ASSERT_LT(start, next);
    ASSERT_LT(next, whole.size());

    for (const std::size_t length : {start, start + 3, (start + next) / 2, next - 1}) {
        wave::Bytes bytes = whole;
        bytes.resize(length);

        const Recording recording = readFile(folder.write("cut.flac", bytes));

        // Blocks 0 to 69: 70 * 1152.
        EXPECT_EQ(recording.samples.size(), 80640u) << length - start;
        // 80640 / 8000 = 10.08.
        ASSERT_FALSE(recording.notes.empty());
        EXPECT_EQ(recording.notes.back(), "ends early: 10.1 of 20.0 s could be read");
    }
}

TEST_F(MediaArmour, SaysThatAWaveEndsEarly)
{
    const wave::Bytes data = wave::samples16(std::vector<int>(16000, 100));

    const Recording recording = readFile(
        folder.write("a.wav", wave::fileClaiming(wave::format(1, 1, 16), 5 * 16000, data)));

    EXPECT_THAT(recording.notes, ElementsAre("ends early: 2.0 of 5.0 s could be read"));
}

// Of these the library tells what is there and not what they state.
TEST_F(MediaArmour, SaysOfEachUncompressedFormatThatItEndsEarly)
{
    constexpr std::pair<const char*, const char*> forms[] = {
        {"a.wav", ""},
        {"a.w64", ""},
        {"a.caf", ""},
        {"a.aiff", ""},
        {"a.au", ""},
        {"ima.caf", "-c:a adpcm_ima_qt"},
        {"a.mov", "-c:a pcm_s16le -movflags +faststart"}};
    for (const auto& [form, options] : forms) {
        const std::string name = form;
        wave::Bytes bytes = wave::readFile(make("whole_" + name, options, 20, 8000));
        bytes.resize(bytes.size() / 2);

        const Recording recording = readFile(folder.write(name, bytes));

        // Headers take some milliseconds' worth.
        EXPECT_NEAR(recording.durationSeconds, 10.0, 0.05) << name;
        // Behind a word on the packet that is cut, which is a note by itself for some.
        ASSERT_FALSE(recording.notes.empty()) << name;
        EXPECT_EQ(recording.notes.back(), "ends early: 10.0 of 20.0 s could be read") << name;
    }
}

TEST_F(MediaArmour, SaysOfAWholeFileNothing)
{
    for (const std::string name : {"a.w64", "a.caf", "ima.caf"}) {
        const std::string options = name == "ima.caf" ? "-c:a adpcm_ima_qt" : "";

        EXPECT_THAT(readFile(make(name, options, 5, 8000)).notes, IsEmpty()) << name;
    }
}

// What is left of the only packet is not given by the library, and no error either.
TEST_F(MediaArmour, SaysThatNothingIsLeftOfASinglePacket)
{
    for (const std::string name : {"a.wv", "a.gsm"}) {
        const std::string whole = folder / ("whole_" + name);
        ASSERT_TRUE(encode("-f lavfi -i anoisesrc=r=8000:d=0.02:seed=1 -ac 1 " + whole));
        wave::Bytes bytes = wave::readFile(whole);
        bytes.resize(bytes.size() * 7 / 10);

        const Recording recording = readFile(folder.write(name, bytes));

        EXPECT_EQ(recording.failure, "") << name;
        EXPECT_THAT(recording.notes,
                    ElementsAre("holds no sound: it is empty, or ends before its sound begins"))
            << name;
    }
}

TEST_F(MediaArmour, ReadsAroundPiecesThatAreBroken)
{
    const std::string whole = make("whole.mp3", "-c:a libmp3lame -b:a 128k", 10, 44100);
    wave::Bytes bytes = wave::readFile(whole);
    for (std::size_t i = bytes.size() / 2; i < bytes.size() / 2 + 3000; ++i)
        bytes[i] = 0xA5;

    const Recording recording = readFile(folder.write("hole.mp3", bytes));

    EXPECT_EQ(recording.failure, "");
    EXPECT_NEAR(recording.durationSeconds, 10.0, 0.4);
}

TEST_F(MediaArmour, SaysHowManyPiecesAreBroken)
{
    const std::string whole = make("whole.m4a", "-c:a alac -movflags +faststart", 5, 44100);
    wave::Bytes bytes = wave::readFile(whole);
    for (std::size_t i = bytes.size() / 2; i < bytes.size() / 2 + 60000; ++i)
        bytes[i] = 0xFF;

    const Recording recording = readFile(folder.write("hole.m4a", bytes));

    EXPECT_NEAR(recording.durationSeconds, 5.0, 0.2);
    EXPECT_THAT(recording.notes,
                testing::Contains(testing::HasSubstr("of the sound could not be decoded")));
}

TEST_F(MediaArmour, SaysThatNothingCouldBeDecoded)
{
    const std::string whole = make("whole.m4a", "-c:a alac -movflags +faststart", 2, 44100);
    wave::Bytes bytes = wave::readFile(whole);
    const std::string text(bytes.begin(), bytes.end());
    for (std::size_t i = text.find("mdat") + 4; i < bytes.size(); ++i)
        bytes[i] = 0xFF;

    EXPECT_EQ(readFile(folder.write("broken.m4a", bytes)).failure,
              "has sound, but none of it could be decoded");
}

TEST_F(MediaArmour, SaysThatThereIsNoDecoder)
{
    const std::string whole = make("whole.mkv", "-c:a pcm_s16le", 2, 44100);
    wave::Bytes bytes = wave::readFile(whole);
    const std::string text(bytes.begin(), bytes.end());
    const std::string name = "A_PCM/INT/LIT";
    ASSERT_NE(text.find(name), std::string::npos);
    bytes[text.find(name) + 2] = 'X';

    EXPECT_EQ(readFile(folder.write("odd.mkv", bytes)).failure, "no decoder for its audio");
}

// The tag of a coding that games have. FFmpeg knows it, and what is read does not hold it.
TEST_F(MediaArmour, DecodesNothingThatIsNotOnTheList)
{
    const wave::Bytes bytes = wave::file(wave::format(0x200, 1, 4), wave::Bytes(5000, 0x35));

    EXPECT_EQ(readFile(folder.write("a.wav", bytes)).failure, "no decoder for its audio");
}

// A file of blocks of 34 bytes that ends within the first.
TEST_F(MediaArmour, SaysThatNotEvenTheFirstPieceIsThere)
{
    const auto wide = [](wave::Bytes& bytes, std::uint64_t value) {
        for (int shift = 56; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<unsigned char>(value >> shift));
    };
    const auto half = [](wave::Bytes& bytes, std::uint32_t value) {
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<unsigned char>(value >> shift));
    };
    wave::Bytes bytes;
    wave::appendText(bytes, "caff");
    half(bytes, 0x00010000);
    wave::appendText(bytes, "desc");
    wide(bytes, 32);
    // 8000 as a float of 64 bits.
    wide(bytes, 0x40BF400000000000);
    wave::appendText(bytes, "ima4");
    // No flags, bytes and samples of a block, channels, and bits, which do not count.
    for (const std::uint32_t value : {0u, 34u, 64u, 1u, 0u})
        half(bytes, value);
    wave::appendText(bytes, "data");
    wide(bytes, 4 + 10);
    bytes.resize(bytes.size() + 4 + 10);

    EXPECT_EQ(readFile(folder.write("a.caf", bytes)).failure,
              "has sound, but none of it could be decoded");
}

TEST_F(MediaArmour, TakesAFileWithoutAnySoundAsItIs)
{
    const Recording recording = readFile(folder.write("a.wav", wave::file16({})));

    EXPECT_EQ(recording.failure, "");
    EXPECT_EQ(recording.durationSeconds, 0.0);
    EXPECT_THAT(recording.notes,
                ElementsAre("holds no sound: it is empty, or ends before its sound begins"));
}

// Paths as the shell gives them to who stands in the folder, and endings of all kinds.
TEST_F(MediaArmour, ReadsAFileOfAnyName)
{
    const auto former = std::filesystem::current_path();
    std::filesystem::current_path(folder.path);
    for (const char* name : {"sound", "sound.", ".sound", "sound.recording of a concert",
                             "sound.w\x01\xFFv", "sound%03d.wav", "concat:a.wav"}) {
        wave::writeFile(name, wave::file16({16384}));

        EXPECT_THAT(reading::samplesOf(readFile(name)), ElementsAre(0.5f)) << name;
    }
    std::filesystem::current_path(former);
}

TEST_F(MediaArmour, EndsWithinTheFileWhereTheHostSaysSo)
{
    const std::string path = folder / "long.flac";
    ASSERT_TRUE(encode("-f lavfi -i anoisesrc=r=48000:d=120 " + path));
    vxlsync::Callbacks callbacks;
    int questions = 0;
    callbacks.isCancelled = [&questions] { return ++questions > 2; };
    vxlsync::Run run(1, reading::plenty, callbacks);

    EXPECT_THROW(vxlsync::readAll({reading::fileSource(path)}, {}, run), vxlsync::Cancelled);
}

} // namespace
