#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Program.h"
#include "Signals.h"
#include "Wave.h"

// Files as recorders, phones and cameras write them, made by ffmpeg.
namespace
{

using nlohmann::json;

// The one event of these tests, at 48 kHz: sweeps with a little noise.
wave::Bytes eventFile(std::size_t startSeconds, std::size_t seconds)
{
    constexpr int sampleRate = 48000;
    const std::vector<float> sweeps =
        signals::chirps(0.0, (startSeconds + seconds) * signals::rate);
    const std::vector<float> noise = signals::noise(1, (startSeconds + seconds) * signals::rate);
    std::vector<int> samples;
    for (std::size_t i = startSeconds * signals::rate; i < sweeps.size(); ++i) {
        const int value = static_cast<int>(20000.0F * (sweeps[i] + 0.2F * noise[i]));
        // Every sample six times makes 48 kHz of 8 kHz; what that puts above 4 kHz is no harm.
        samples.insert(samples.end(), sampleRate / signals::rate, value);
    }
    return wave::file16(samples, sampleRate);
}

bool make(const std::string& arguments)
{
    const std::string command = std::string(VXL_SYNC_FFMPEG_PROGRAM) + " -v error -nostdin -y " +
                                arguments + " 2>/dev/null";
    return std::system(command.c_str()) == 0;
}

struct Form {
    const char* file;
    // Between input and output.
    const char* options;
    // Seconds by which the file shows its sound late, because its format does not say how much its
    // encoder put in front.
    double late;
    double tolerance;
};

void PrintTo(const Form& form, std::ostream* out)
{
    *out << form.file;
}

class Formats : public testing::TestWithParam<Form>
{
};

// Three seconds later than the reference, through the encoder.
TEST_P(Formats, ComeOutWhereTheirSoundIs)
{
    const wave::TempFolder folder;
    const std::string reference = folder.write("reference.wav", eventFile(0, 15));
    const std::string source = folder.write("source.wav", eventFile(3, 15));
    const std::string path = folder / GetParam().file;
    ASSERT_TRUE(make("-i " + source + " " + GetParam().options + " " + path));

    const json result = json::parse(program::run({"--format", "json", reference, path}).out);

    ASSERT_EQ(result.at("groups").size(), 1u) << result.dump(1);
    const json member = result.at("groups").at(0).at("members").at(1);
    EXPECT_EQ(member.at("path"), path);
    EXPECT_NEAR(member.at("offsetSeconds").get<double>(), 3.0 - GetParam().late,
                GetParam().tolerance);
}

constexpr double exact = 50e-6;
constexpr double lossy = 300e-6;

constexpr const char* withVideo =
    "-f lavfi -i testsrc=s=64x48:r=10 -shortest -c:v mpeg4 -map 0:a -map 1:v ";

const Form forms[] = {
    {"pcm24.wav", "-c:a pcm_s24le", 0.0, exact},
    {"float.wav", "-c:a pcm_f32le -ar 44100", 0.0, exact},
    {"bytes.wav", "-c:a pcm_u8 -ar 11025", 0.0, lossy},
    {"adpcm.wav", "-c:a adpcm_ima_wav -ar 22050", 0.0, lossy},
    {"big.aiff", "-c:a pcm_s16be -ar 32000", 0.0, exact},
    {"law.au", "-c:a pcm_mulaw -ar 8000", 0.0, lossy},
    {"free.flac", "-ar 96000", 0.0, exact},
    {"pack.wv", "-ar 48000", 0.0, exact},
    {"lossless.m4a", "-c:a alac -ar 44100", 0.0, exact},
    {"phone.m4a", "-c:a aac -b:a 96k", 0.0, lossy},
    {"player.mp3", "-c:a libmp3lame -b:a 128k -ar 44100", 0.0, lossy},
    {"player.ogg", "-c:a libvorbis", 0.0, lossy},
    {"call.opus", "-c:a libopus -b:a 64k", 0.0, lossy},
    // The decoder's own overlap of half a block of 512.
    {"disc.ac3", "-c:a ac3 -b:a 192k", 256.0 / 48000.0, lossy},
    {"web.webm", "-c:a libopus -b:a 64k", 0.0, lossy},
};

INSTANTIATE_TEST_SUITE_P(All, Formats, testing::ValuesIn(forms),
                         [](const testing::TestParamInfo<Form>& form) {
                             std::string name = form.param.file;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

// The offset of one file against the reference, or -1.
double offsetOf(const wave::TempFolder& folder, const std::string& path,
                const std::vector<std::string>& options = {})
{
    std::vector<std::string> arguments{"--format", "json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(folder.write("reference.wav", eventFile(0, 25)));
    arguments.push_back(path);
    const json result = json::parse(program::run(arguments).out);
    if (result.at("groups").empty()) return -1.0;
    return result.at("groups").at(0).at("members").at(1).at("offsetSeconds");
}

class Videos : public testing::Test
{
protected:
    const wave::TempFolder folder;
    const std::string source = folder.write("source.wav", eventFile(3, 20));
};

TEST_F(Videos, GiveTheirSound)
{
    const std::string path = folder / "clip.mp4";
    ASSERT_TRUE(make("-i " + source + " " + withVideo + "-c:a aac " + path));

    EXPECT_NEAR(offsetOf(folder, path), 3.0, lossy);
}

TEST_F(Videos, KeepALateStartOfTheSound)
{
    // The sound starts 1.5 s into the clip, so the clip started 1.5 s before its sound.
    const std::string path = folder / "late.mkv";
    ASSERT_TRUE(make("-itsoffset 1.5 -i " + source + " " + withVideo + "-c:a pcm_s16le " + path));

    EXPECT_NEAR(offsetOf(folder, path), 1.5, 0.001);
}

TEST_F(Videos, FillGapsBetweenPackets)
{
    // From 5 to 7 s nothing is stored. Were the gap closed, the first 5 s and the other 13 s would
    // give offsets that are 2 s apart.
    const std::string path = folder / "gap.mkv";
    ASSERT_TRUE(
        make("-i " + source + " -af \"aselect='not(between(t,5,7))'\" -c:a pcm_s16le " + path));

    EXPECT_NEAR(offsetOf(folder, path), 3.0, 0.001);
}

TEST_F(Videos, GiveTheStreamAskedFor)
{
    const std::string start = folder.write("start.wav", eventFile(0, 15));
    const std::string other = folder.write("other.wav", eventFile(6, 15));
    const std::string path = folder / "two.mkv";
    const std::string reference = folder / "reference.mkv";
    ASSERT_TRUE(
        make("-i " + source + " -i " + other + " -map 0:a -map 1:a -c:a pcm_s16le " + path));
    ASSERT_TRUE(
        make("-i " + other + " -i " + start + " -map 0:a -map 1:a -c:a pcm_s16le " + reference));

    EXPECT_NEAR(offsetOf(folder, path), 3.0, exact);
    const json result =
        json::parse(program::run({"--format", "json", "--stream", "2", reference, path}).out);
    const json member = result.at("groups").at(0).at("members").at(1);
    EXPECT_EQ(member.at("path"), path);
    EXPECT_NEAR(member.at("offsetSeconds").get<double>(), 6.0, exact);
}

TEST_F(Videos, GiveTheStreamAskedForOfOneFileAlone)
{
    const std::string reference = folder.write("start.wav", eventFile(0, 15));
    const std::string other = folder.write("other.wav", eventFile(6, 15));
    const std::string path = folder / "two.mkv";
    ASSERT_TRUE(
        make("-i " + source + " -i " + other + " -map 0:a -map 1:a -c:a pcm_s16le " + path));

    const json result = json::parse(
        program::run({"--format", "json", "--stream", path + "=2", reference, path}).out);
    const json member = result.at("groups").at(0).at("members").at(1);
    EXPECT_EQ(member.at("path"), path);
    EXPECT_NEAR(member.at("offsetSeconds").get<double>(), 6.0, exact);
    EXPECT_EQ(result.at("sources").at(1).at("stream"), 2);
    EXPECT_EQ(result.at("sources").at(0).at("stream"), 1);
}

TEST_F(Videos, GiveTheChannelAskedFor)
{
    const std::string silence =
        folder.write("silence.wav", wave::file16(std::vector<int>(20 * 48000, 0), 48000));
    const std::string path = folder / "right.wav";
    ASSERT_TRUE(
        make("-i " + silence + " -i " + source + " -filter_complex amerge=inputs=2 " + path));

    EXPECT_EQ(offsetOf(folder, path), -1.0);
    EXPECT_NEAR(offsetOf(folder, path, {"--channel", "mix"}), 3.0, exact);
}

TEST_F(Videos, LoseOnlyTheTailThatIsBroken)
{
    const std::string whole = folder / "whole.mp3";
    ASSERT_TRUE(make("-i " + source + " -c:a libmp3lame -ar 44100 " + whole));
    wave::Bytes bytes = wave::readFile(whole);
    bytes.resize(bytes.size() * 3 / 4);
    bytes.insert(bytes.end(), 5000, 0xA5);

    EXPECT_NEAR(offsetOf(folder, folder.write("broken.mp3", bytes)), 3.0, lossy);
}

// A result with all that can be in it, checked by another program's reading of the schema.
TEST(Schema, FitsTheResult)
{
    const wave::TempFolder folder;
    const std::string film = folder / "MVI_0001.mov";
    ASSERT_TRUE(make("-f lavfi -i color=size=16x16:rate=25:duration=5 -f lavfi -i "
                     "anoisesrc=duration=5:seed=3 -c:v mpeg4 -timecode 10:00:00:00 "
                     "-metadata creation_time=2026-06-01T10:00:37Z " +
                     film));
    const std::string early = folder.write("early.wav", eventFile(0, 20));
    const std::string late = folder.write("late.wav", eventFile(4, 20));
    const std::string silent = folder.write("silent.wav", wave::file16(std::vector<int>(40000, 0)));
    const program::Outcome run = program::run({"--format", "json", "--device", "camera=" + film,
                                               early, late, silent, film, folder / "gone.wav"});
    const std::string result =
        folder.write("result.json", wave::Bytes(run.out.begin(), run.out.end()));

    const std::string command = std::string(VXL_SYNC_PYTHON) +
                                " -c \"import json, jsonschema, sys; "
                                "jsonschema.validate(json.load(open(sys.argv[1])), "
                                "json.load(open(sys.argv[2])))\" " +
                                result + " " VXL_SYNC_SCHEMA;

    EXPECT_EQ(std::system(command.c_str()), 0) << run.out;
}

TEST(Schema, RefusesAnotherVersion)
{
    const wave::TempFolder folder;
    const std::string text =
        R"({"version": 2, "sources": [], "groups": [], "alone": [], "refusedLinks": [], "failed": []})";
    const std::string result = folder.write("result.json", wave::Bytes(text.begin(), text.end()));

    const std::string command = std::string(VXL_SYNC_PYTHON) +
                                " -c \"import json, jsonschema, sys; "
                                "jsonschema.validate(json.load(open(sys.argv[1])), "
                                "json.load(open(sys.argv[2])))\" " +
                                result + " " VXL_SYNC_SCHEMA " 2>/dev/null";

    EXPECT_NE(std::system(command.c_str()), 0);
}

} // namespace
