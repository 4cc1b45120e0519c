#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Reading.h"
#include "Signals.h"
#include "Wave.h"

// Files as recorders, phones, cameras and editors write them, made by ffmpeg.
namespace
{

using reading::encode;
using reading::readFile;
using reading::samplesOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vxlsync::Recording;

// The decoders would fill the output of the tests with their remarks.
class Tamed : public testing::Environment
{
public:
    void SetUp() override
    {
        vxlsync::silenceDecoders();
        vxlsync::boundDecoders();
    }
};

const testing::Environment* const tamed = testing::AddGlobalTestEnvironment(new Tamed);

// Sweeps, as a file.
wave::Bytes soundFile(std::size_t seconds, int sampleRate = 48000)
{
    const auto rate = static_cast<std::size_t>(sampleRate);
    const std::vector<float> sweeps = signals::chirps(0.0, seconds * signals::rate);
    std::vector<int> samples;
    for (std::size_t i = 0; i < seconds * rate; ++i)
        samples.push_back(static_cast<int>(20000.0f * sweeps[i * signals::rate / rate]));
    return wave::file16(samples, static_cast<std::uint32_t>(sampleRate));
}

class MediaReader : public testing::Test
{
protected:
    // Path of a file that ffmpeg made of the sound.
    std::string make(const std::string& name, const std::string& options,
                     std::size_t seconds = 3) const
    {
        const std::string source = folder.write("source.wav", soundFile(seconds));
        EXPECT_TRUE(encode("-i " + source + " " + options + " " + (folder / name))) << name;
        return folder / name;
    }

    const wave::TempFolder folder;
};

// The formats know nothing of how much their encoders put in front.
enum class Start { exact, late };

struct Form {
    const char* file;
    const char* options;
    Start start = Start::exact;
};

void PrintTo(const Form& form, std::ostream* out)
{
    *out << form.file;
}

class MediaForms : public MediaReader, public testing::WithParamInterface<Form>
{
};

// How much of a second in the middle is not that of the source, `late` samples before.
double differenceOf(const std::vector<float>& samples, const std::vector<float>& source,
                    std::size_t late)
{
    double product = 0.0;
    double energy = 0.0;
    double sourceEnergy = 0.0;
    for (std::size_t i = 8000; i < 16000; ++i) {
        const double out = samples[i + late];
        const double in = source[i];
        product += out * in;
        energy += out * out;
        sourceEnergy += in * in;
    }
    return 1.0 - product * product / energy / sourceEnergy;
}

TEST_P(MediaForms, GiveTheirSoundInItsPlace)
{
    const Recording recording = readFile(make(GetParam().file, GetParam().options));
    const std::vector<float> source = samplesOf(readFile(folder / "source.wav"));

    ASSERT_EQ(recording.failure, "");
    EXPECT_NEAR(recording.durationSeconds, 3.0, 0.15);
    const std::vector<float> samples = samplesOf(recording);
    double least = differenceOf(samples, source, 0);
    // Up to a tenth of a second.
    for (std::size_t late = 1; GetParam().start == Start::late && late <= 800; ++late)
        least = std::min(least, differenceOf(samples, source, late));
    // Late by a fraction of a sample, which costs the highest tones most.
    EXPECT_LT(least, GetParam().start == Start::late ? 0.25 : 0.02);
    EXPECT_THAT(recording.notes, IsEmpty());
}

constexpr Form forms[] = {
    {"wide.wav", "-c:a pcm_s32le"},
    {"pcm24.wav", "-c:a pcm_s24le"},
    {"huge.wav", "-c:a pcm_s64le -f nut"},
    {"float.wav", "-c:a pcm_f32le -ar 44100"},
    {"double.wav", "-c:a pcm_f64le"},
    {"bytes.wav", "-c:a pcm_u8 -ar 11025"},
    {"adpcm.wav", "-c:a adpcm_ima_wav -ar 22050"},
    {"ms.wav", "-c:a adpcm_ms -ar 22050"},
    {"wide.w64", "-c:a pcm_s16le"},
    {"big.aiff", "-c:a pcm_s16be -ar 32000"},
    {"core.caf", "-c:a pcm_s16be"},
    {"law.au", "-c:a pcm_mulaw -ar 8000"},
    {"voice.voc", "-c:a pcm_u8 -ar 20000"},
    {"free.flac", "-ar 96000"},
    {"pack.wv", "-ar 48000"},
    {"true.tta", "-ar 44100"},
    {"lossless.m4a", "-c:a alac -ar 44100"},
    {"phone.m4a", "-c:a aac -b:a 96k"},
    {"phone.3gp", "-c:a aac -b:a 96k"},
    {"raw.aac", "-c:a aac -b:a 96k -af atrim=start_sample=1024"},
    {"player.mp3", "-c:a libmp3lame -b:a 128k -ar 44100"},
    {"player.ogg", "-c:a libvorbis"},
    {"call.opus", "-c:a libopus -b:a 64k"},
    {"call.spx", "-c:a libspeex -ar 16000", Start::late},
    {"web.webm", "-c:a libopus -b:a 64k"},
    {"film.avi", "-c:a pcm_s16le"},
    {"film.mov", "-c:a pcm_s24le"},
    {"film.mxf", "-f lavfi -i testsrc=s=64x48:r=25 -shortest -c:v mpeg2video -c:a pcm_s16le"},
    {"film.asf", "-c:a wmav2 -b:a 128k", Start::late},
    {"film.flv", "-c:a libmp3lame -ar 44100", Start::late},
    {"film.nut", "-c:a flac"},
};

INSTANTIATE_TEST_SUITE_P(All, MediaForms, testing::ValuesIn(forms),
                         [](const testing::TestParamInfo<Form>& form) {
                             std::string name = form.param.file;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

constexpr const char* withVideo =
    "-f lavfi -i testsrc=s=64x48:r=10 -shortest -c:v mpeg4 -map 0:a -map 1:v ";

TEST_F(MediaReader, GivesTheSoundOfAFilm)
{
    const Recording recording = readFile(make("clip.mp4", std::string(withVideo) + "-c:a aac"));

    EXPECT_NEAR(recording.durationSeconds, 3.0, 0.1);
    EXPECT_THAT(recording.notes, IsEmpty());
}

TEST_F(MediaReader, KeepsALateStartOfTheSound)
{
    const std::string source = folder.write("source.wav", soundFile(3));
    const std::string path = folder / "late.mkv";
    ASSERT_TRUE(encode("-itsoffset 1.5 -i " + source + " " + withVideo + "-c:a pcm_s16le " + path));

    const Recording recording = readFile(path);

    EXPECT_FALSE(recording.samples.hasSound(0, 8192));
    EXPECT_NEAR(recording.durationSeconds, 4.5, 0.1);
}

TEST_F(MediaReader, FillsGapsBetweenPackets)
{
    const std::string path =
        make("gap.mkv", "-af \"aselect='not(between(t,5,7))'\" -c:a pcm_s16le", 10);

    const Recording recording = readFile(path);

    EXPECT_NEAR(static_cast<double>(recording.samples.size()), 10.0 * 8000.0, 200.0);
    const std::vector<float> samples = samplesOf(recording);
    for (std::size_t i = 5 * 8000 + 1000; i < 7 * 8000 - 1000; ++i)
        ASSERT_EQ(samples[i], 0.0f) << i;
    EXPECT_THAT(recording.notes, ElementsAre("1 gap of 2.0 s is filled with silence"));
}

TEST_F(MediaReader, GivesTheStreamAskedFor)
{
    const std::string source = folder.write("source.wav", soundFile(3));
    const std::string other = folder.write("other.wav", soundFile(2));
    const std::string path = folder / "two.mkv";
    ASSERT_TRUE(
        encode("-i " + source + " -i " + other + " -map 0:a -map 1:a -c:a pcm_s16le " + path));
    vxlsync::Options options;

    EXPECT_EQ(readFile(path, options).samples.size(), 3u * 8000u);
    options.stream = 2;
    EXPECT_EQ(readFile(path, options).samples.size(), 2u * 8000u);
    options.stream = 3;
    EXPECT_EQ(readFile(path, options).failure, "no audio stream 3");
}

TEST_F(MediaReader, SaysThatThereIsNoSound)
{
    const std::string path = folder / "mute.mp4";
    ASSERT_TRUE(encode("-f lavfi -i testsrc=s=64x48:r=10 -t 2 -c:v mpeg4 " + path));

    EXPECT_EQ(readFile(path).failure, "no audio stream");
}

TEST_F(MediaReader, TakesTheLeftChannelTheMixOrAnyOther)
{
    const std::string path = folder.write(
        "stereo.wav", wave::file(wave::format(1, 2, 16), wave::samples16({16384, -8192})));
    vxlsync::Options options;

    EXPECT_THAT(samplesOf(readFile(path, options)), ElementsAre(0.5f));
    options.channel = vxlsync::Channel::mix;
    // (0.5 - 0.25) / 2.
    EXPECT_THAT(samplesOf(readFile(path, options)), ElementsAre(0.125f));
    options.channel = vxlsync::Channel::numbered;
    options.channelNumber = 2;
    EXPECT_THAT(samplesOf(readFile(path, options)), ElementsAre(-0.25f));
    options.channelNumber = 3;
    EXPECT_EQ(readFile(path, options).failure, "no channel 3 among 2");
}

// By its rate of none the sound would last for ever.
TEST_F(MediaReader, TakesNoLengthFromASecondFormat)
{
    wave::Format none;
    none.sampleRate = 0;
    wave::Bytes bytes = wave::riffStart();
    wave::append(bytes, wave::formatChunk(wave::Format()));
    wave::append(bytes, wave::formatChunk(none));
    wave::append(bytes, wave::chunk("data", wave::samples16(std::vector<int>(8000, 100))));

    const Recording recording = readFile(folder.write("a.wav", bytes));

    EXPECT_EQ(recording.durationSeconds, 1.0);
    EXPECT_THAT(recording.notes, IsEmpty());
}

// The reciprocal of such a sample is so small that its own is infinite.
TEST_F(MediaReader, ScalesDownSamplesNearTheLargestDouble)
{
    const std::vector<std::uint64_t> largestItsHalfBelowZeroAndZero{0x7FEFFFFFFFFFFFFF,
                                                                    0xFFDFFFFFFFFFFFFF, 0};
    wave::Bytes samples;
    for (const std::uint64_t bits : largestItsHalfBelowZeroAndZero) {
        wave::append32(samples, static_cast<std::uint32_t>(bits));
        wave::append32(samples, static_cast<std::uint32_t>(bits >> 32U));
    }
    const Recording recording =
        readFile(folder.write("a.wav", wave::file(wave::format(3, 1, 64), samples)));

    EXPECT_THAT(samplesOf(recording), ElementsAre(1.0f, -0.5f, 0.0f));
    EXPECT_THAT(recording.notes,
                ElementsAre("samples go beyond full scale by about 10 to the power of 308; "
                            "they are scaled down"));
}

TEST_F(MediaReader, KeepsWhatTheAnalysisLeavesOutForTheRefinement)
{
    const Recording recording = readFile(folder.write("a.wav", soundFile(2)));

    EXPECT_EQ(recording.samples.size(), 16000u);
    EXPECT_EQ(recording.fineRate, 16000);
    EXPECT_EQ(recording.fine.size(), 32000u);
}

// The reader of WAV files alone, which takes its place where there is no FFmpeg, gives the same.
class MediaWaves : public MediaReader, public testing::WithParamInterface<const char*>
{
};

TEST_P(MediaWaves, AreReadAlikeWithoutFfmpeg)
{
    const std::string path = make("a.wav", GetParam());
    vxlsync::Options options;
    options.channel = vxlsync::Channel::mix;

    const Recording media = reading::readWith(vxlsync::readMedia, path, options).recording;
    const Recording wave = reading::readWith(vxlsync::readWave, path, options).recording;

    EXPECT_GT(media.samples.size(), 0u);
    EXPECT_EQ(samplesOf(wave), samplesOf(media));
    EXPECT_EQ(wave.fineRate, media.fineRate);
    EXPECT_EQ(reading::allOf(wave.fine), reading::allOf(media.fine));
}

INSTANTIATE_TEST_SUITE_P(All, MediaWaves,
                         testing::Values("-c:a pcm_u8 -ar 8000", "-c:a pcm_s16le -ar 11025",
                                         "-c:a pcm_s24le -ar 44100 -ac 2",
                                         "-c:a pcm_s32le -ar 192000", "-c:a pcm_f32le -ar 96000",
                                         "-c:a pcm_f64le -ac 6", "-c:a pcm_s16le -rf64 always"));

} // namespace
