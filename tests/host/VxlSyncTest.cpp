#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Program.h"
#include "Sounds.h"
#include "Wave.h"

namespace
{

using nlohmann::json;
using program::Outcome;
using sounds::recordingOf;
using testing::HasSubstr;
using testing::Not;

constexpr std::uint32_t concert = 12345;
constexpr std::uint32_t talk = 777;
constexpr std::uint32_t elsewhere = 42;

// Offsets that a run over whole frames gives, in the library's single precision.
double secondsOf(float frames)
{
    return static_cast<double>(frames / sounds::framesPerSecond);
}

json memberOf(const std::string& name, const std::string& path, double offsetSeconds)
{
    return {{"name", name}, {"path", path}, {"offsetSeconds", offsetSeconds}};
}

// Two events and a stranger, mixed on the command line. All recordings of one event begin a whole
// number of frames apart, so that their frames hold the same samples.
class TwoEvents
{
public:
    const wave::TempFolder folder;
    const std::string concertLate = folder.write("concert-late.wav", recordingOf(concert, 160, 20));
    const std::string talkEarly = folder.write("talk-early.wav", recordingOf(talk, 0, 20));
    const std::string stranger = folder.write("stranger.wav", recordingOf(elsewhere, 0, 20));
    const std::string concertEarly = folder.write("concert-early.wav", recordingOf(concert, 0, 20));
    const std::string talkLate = folder.write("talk-late.wav", recordingOf(talk, 201, 20));
    const std::string concertMiddle =
        folder.write("concert-middle.wav", recordingOf(concert, 75, 20));

    std::vector<std::string> paths() const
    {
        return {concertLate, talkEarly, stranger, concertEarly, talkLate, concertMiddle};
    }
};

std::vector<std::string> with(std::vector<std::string> options,
                              const std::vector<std::string>& paths)
{
    options.insert(options.end(), paths.begin(), paths.end());
    return options;
}

TEST(VxlSync, TellsGroupsAndOffsetsAsJson)
{
    const TwoEvents events;

    const Outcome run = program::run(with({"--format", "json"}, events.paths()));

    const json expected = {
        {"version", 1},
        {"groups",
         {{{"members",
            {memberOf("concert-early", events.concertEarly, 0.0),
             memberOf("concert-middle", events.concertMiddle, secondsOf(75.0f)),
             memberOf("concert-late", events.concertLate, secondsOf(160.0f))}}},
          {{"members",
            {memberOf("talk-early", events.talkEarly, 0.0),
             memberOf("talk-late", events.talkLate, secondsOf(201.0f))}}}}},
        {"alone", {{{"name", "stranger"}, {"path", events.stranger}}}},
        {"failed", json::array()},
    };
    EXPECT_EQ(json::parse(run.out), expected);
    EXPECT_EQ(run.exitCode, 0);
}

TEST(VxlSync, TellsGroupsAndOffsetsAsText)
{
    const TwoEvents events;

    const Outcome run = program::run(events.paths());

    // 75, 160 and 201 frames of 0.032 s.
    EXPECT_EQ(run.out, "Group 1: 3 recordings\n"
                       "       0.000 s  concert-early   " +
                           events.concertEarly +
                           "\n"
                           "       2.400 s  concert-middle  " +
                           events.concertMiddle +
                           "\n"
                           "       5.120 s  concert-late    " +
                           events.concertLate +
                           "\n"
                           "\n"
                           "Group 2: 2 recordings\n"
                           "       0.000 s  talk-early  " +
                           events.talkEarly +
                           "\n"
                           "       6.432 s  talk-late   " +
                           events.talkLate +
                           "\n"
                           "\n"
                           "Alone: 1 recording\n"
                           "  stranger  " +
                           events.stranger + "\n");
    EXPECT_EQ(run.exitCode, 0);
}

TEST(VxlSync, LeavesTheLibrarysLinesToStandardError)
{
    const wave::TempFolder folder;
    const std::string first = folder.write("first.wav", recordingOf(concert, 0, 10));
    const std::string second = folder.write("second.wav", recordingOf(concert, 40, 10));

    const Outcome run = program::run({first, second});

    EXPECT_EQ(run.err, "STARTING: " + first + " (id 1)\n" +
                           "FEATURE EXTRACTION COMPLETE: " + first + "\n" + "STARTING: " + second +
                           " (id 2)\n" + "FEATURE EXTRACTION COMPLETE: " + second + "\n");
    EXPECT_THAT(run.out, Not(HasSubstr("STARTING")));
}

TEST(VxlSync, EndsWithFourWhenNothingMatches)
{
    const wave::TempFolder folder;
    const std::string here = folder.write("here.wav", recordingOf(concert, 0, 10));
    const std::string there = folder.write("there.wav", recordingOf(elsewhere, 0, 10));

    const Outcome run = program::run({here, there});

    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(run.out, "Nothing matched.\n\nAlone: 2 recordings\n  here   " + here + "\n  there  " +
                           there + "\n");
}

TEST(VxlSync, EndsWithFourForARecordingWithoutSound)
{
    const wave::TempFolder folder;
    const std::string empty = folder.write("empty.wav", wave::file16({}));

    const Outcome run = program::run({"--format", "json", empty});

    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(json::parse(run.out).at("alone"), json({{{"name", "empty"}, {"path", empty}}}));
}

TEST(VxlSync, DoesNotMatchAFileWithItself)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("once.wav", recordingOf(concert, 0, 10));

    const Outcome run = program::run({"--format", "json", path, path});

    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(json::parse(run.out).at("alone"), json({{{"name", "once"}, {"path", path}}}));
    EXPECT_THAT(run.err,
                HasSubstr("vxl-sync: " + path + ": the same file as " + path + ", taken once\n"));
}

TEST(VxlSync, TellsRecordingsOfOneNameApartByTheirPaths)
{
    const wave::TempFolder folder;
    std::filesystem::create_directories(folder / "one");
    std::filesystem::create_directories(folder / "two");
    const std::string one = folder.write("one/take.wav", recordingOf(concert, 50, 10));
    const std::string two = folder.write("two/take.wav", recordingOf(concert, 0, 10));

    const Outcome run = program::run({"--format", "json", one, two});

    const json members = json::parse(run.out).at("groups").at(0).at("members");
    EXPECT_EQ(members, json({memberOf("take", two, 0.0), memberOf("take", one, secondsOf(50.0f))}));
}

TEST(VxlSync, SurvivesANameThatIsNotUtf8)
{
    const wave::TempFolder folder;
    const std::string odd = folder.write("odd\xFF\n.wav", recordingOf(concert, 0, 10));
    const std::string plain = folder.write("plain.wav", recordingOf(concert, 31, 10));

    const Outcome run = program::run({"--format", "json", odd, plain});

    EXPECT_EQ(run.exitCode, 0);
    const json members = json::parse(run.out).at("groups").at(0).at("members");
    EXPECT_EQ(members.at(0).at("name"), "odd\xEF\xBF\xBD\n");
    EXPECT_EQ(members.at(1).at("offsetSeconds").get<double>(), secondsOf(31.0f));
}

TEST(VxlSync, FindsTheEventOfTheExampleRecordings)
{
    const std::string folder = std::string(VXS_EXAMPLE_RECORDINGS) + "/";
    std::ifstream truthFile(folder + "truth.json");
    const json truth = json::parse(truthFile).at("groups").at(0);
    std::vector<std::string> paths{folder + "elsewhere.wav"};
    for (const auto& entry : truth.items())
        paths.push_back(folder + entry.key());

    const Outcome run = program::run(with({"--format", "json"}, paths));

    EXPECT_EQ(run.exitCode, 0);
    const json result = json::parse(run.out);
    ASSERT_EQ(result.at("groups").size(), 1u);
    std::map<std::string, double> offsets;
    for (const json& member : result.at("groups").at(0).at("members"))
        offsets[member.at("path")] = member.at("offsetSeconds");
    EXPECT_EQ(offsets.size(), truth.size());
    constexpr double oneFrame = 0.032;
    for (const auto& entry : truth.items())
        EXPECT_NEAR(offsets.at(folder + entry.key()), entry.value().get<double>(), oneFrame);
    EXPECT_EQ(result.at("alone"),
              json({{{"name", "elsewhere"}, {"path", folder + "elsewhere.wav"}}}));
}

} // namespace
