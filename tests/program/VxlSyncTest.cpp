#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

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

constexpr std::uint32_t concert = 12345;
constexpr std::uint32_t talk = 777;
constexpr std::uint32_t elsewhere = 42;

// Recordings of one event hold the very same samples, so that offsets come out nearly exact.
constexpr double tolerance = 20e-6;

double secondsOf(double frames)
{
    return frames * 0.032;
}

// Offsets by path of one group.
std::map<std::string, double> offsetsOf(const json& group)
{
    std::map<std::string, double> offsets;
    for (const json& member : group.at("members"))
        offsets[member.at("path")] = member.at("offsetSeconds");
    return offsets;
}

// Members of all groups, with every number that they have.
json membersByPath(const Outcome& run)
{
    json members = json::object();
    const json result = json::parse(run.out);
    for (const json& group : result.at("groups")) {
        for (json member : group.at("members")) {
            // Its place among the arguments.
            member.erase("source");
            const auto path = member.at("path").get<std::string>();
            members[path] = std::move(member);
        }
    }
    return members;
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

    const json result = json::parse(run.out);
    ASSERT_EQ(result.at("groups").size(), 2u);
    const auto concertOffsets = offsetsOf(result.at("groups").at(0));
    const auto talkOffsets = offsetsOf(result.at("groups").at(1));
    ASSERT_EQ(concertOffsets.size(), 3u);
    EXPECT_EQ(concertOffsets.at(events.concertEarly), 0.0);
    EXPECT_NEAR(concertOffsets.at(events.concertMiddle), secondsOf(75), tolerance);
    EXPECT_NEAR(concertOffsets.at(events.concertLate), secondsOf(160), tolerance);
    ASSERT_EQ(talkOffsets.size(), 2u);
    EXPECT_NEAR(talkOffsets.at(events.talkLate), secondsOf(201), tolerance);
    ASSERT_EQ(result.at("alone").size(), 1u);
    EXPECT_EQ(result.at("alone").at(0).at("name"), "stranger");
    EXPECT_EQ(result.at("alone").at(0).at("reason"), "no sound in common with any other");
    EXPECT_EQ(run.exitCode, 0);
}

TEST(VxlSync, TellsGroupsAndOffsetsAsText)
{
    const TwoEvents events;

    const Outcome run = program::run(events.paths());

    EXPECT_THAT(run.out, HasSubstr("Group 1: 3 recordings\n"));
    // 75 and 201 frames of 0.032 s.
    EXPECT_THAT(run.out, HasSubstr("2.4000 s"));
    EXPECT_THAT(run.out, HasSubstr("Group 2: 2 recordings\n"));
    EXPECT_THAT(run.out, HasSubstr("6.4320 s"));
    EXPECT_THAT(run.out, HasSubstr("Alone: 1 recording\n  stranger  "));
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitCode, 0);
}

TEST(VxlSync, TellsTheSameForAnyNumberOfJobs)
{
    const TwoEvents events;

    const Outcome one = program::run(with({"--format", "json", "--jobs", "1"}, events.paths()));
    const Outcome many = program::run(with({"--format", "json", "--jobs", "5"}, events.paths()));

    EXPECT_EQ(one.out, many.out);
}

// What a member is worth must not hang on the place of its file on the command line.
TEST(VxlSync, TellsTheSameForAnyOrderOfArguments)
{
    const TwoEvents events;
    const std::vector<std::string> paths = events.paths();
    std::vector<std::string> turned(paths.begin() + 2, paths.end());
    turned.insert(turned.end(), paths.begin(), paths.begin() + 2);
    std::vector<std::string> reversed(paths.rbegin(), paths.rend());

    const json first = membersByPath(program::run(with({"--format", "json"}, paths)));

    ASSERT_EQ(first.size(), 5u);
    EXPECT_EQ(membersByPath(program::run(with({"--format", "json"}, turned))), first);
    EXPECT_EQ(membersByPath(program::run(with({"--format", "json"}, reversed))), first);
}

TEST(VxlSync, TellsATable)
{
    const TwoEvents events;

    const Outcome run = program::run(with({"--format", "csv"}, events.paths()));

    // A heading and six recordings.
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 7);
}

TEST(VxlSync, TellsTheLibrarysOwnAnswer)
{
    const TwoEvents events;

    const Outcome run =
        program::run(with({"--landmarks-only", "--native", "--format", "json"}, events.paths()));

    const json result = json::parse(run.out);
    ASSERT_EQ(result.at("groups").size(), 2u);
    // The library counts in single precision.
    EXPECT_EQ(offsetsOf(result.at("groups").at(0)).at(events.concertLate),
              static_cast<double>(160.0F / sounds::framesPerSecond));
}

TEST(VxlSync, MeasuresDriftAgainstTheReferenceAskedFor)
{
    const TwoEvents events;

    const Outcome run =
        program::run(with({"--format", "json", "--reference", "concert-late"}, events.paths()));

    EXPECT_EQ(json::parse(run.out).at("groups").at(0).at("reference"), events.concertLate);
}

TEST(VxlSync, KeepsRecordingsApart)
{
    const TwoEvents events;

    const Outcome run =
        program::run(with({"--format", "json", "--apart", "talk-early,talk-late"}, events.paths()));

    const json result = json::parse(run.out);
    EXPECT_EQ(result.at("groups").size(), 1u);
    EXPECT_EQ(result.at("alone").size(), 3u);
}

TEST(VxlSync, TakesStartsThatAreKnown)
{
    const TwoEvents events;

    const Outcome run = program::run({"--format", "json", "--fix", "stranger=3", "--fix",
                                      "talk-early=1.5", events.stranger, events.talkEarly});

    const auto offsets = offsetsOf(json::parse(run.out).at("groups").at(0));
    EXPECT_NEAR(offsets.at(events.talkEarly), 1.5, 1e-6);
    EXPECT_NEAR(offsets.at(events.stranger), 3.0, 1e-6);
}

TEST(VxlSync, TellsProgramsHowFarItIs)
{
    const TwoEvents events;

    const Outcome run = program::run(with({"--progress", "json"}, events.paths()));

    std::istringstream lines(run.err);
    double share = -1.0;
    std::size_t files = 0;
    for (std::string line; std::getline(lines, line);) {
        const json told = json::parse(line);
        EXPECT_GE(told.at("share").get<double>(), share);
        share = told.at("share");
        files += told.contains("file");
    }
    EXPECT_GE(share, 0.92);
    EXPECT_EQ(files, events.paths().size());
}

TEST(VxlSync, EndsWithFourWhenNothingMatches)
{
    const wave::TempFolder folder;
    const std::string here = folder.write("here.wav", recordingOf(concert, 0, 10));
    const std::string there = folder.write("there.wav", recordingOf(elsewhere, 0, 10));

    const Outcome run = program::run({here, there});

    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(run.out, "Nothing matched.\n\nAlone: 2 recordings\n  here   " + here +
                           ": no sound in common with any other\n  there  " + there +
                           ": no sound in common with any other\n");
}

TEST(VxlSync, SaysWhichRecordingsAreSilentOrTooShort)
{
    const wave::TempFolder folder;
    const std::string silent = folder.write("silent.wav", wave::file16(std::vector<int>(80000, 0)));
    const std::string brief = folder.write("brief.wav", recordingOf(concert, 0, 1));

    const json alone =
        json::parse(program::run({"--format", "json", silent, brief}).out).at("alone");

    EXPECT_EQ(alone.at(0).at("reason"), "silent");
    EXPECT_EQ(alone.at(1).at("reason"), "too short");
}

TEST(VxlSync, EndsWithFourForARecordingWithoutSound)
{
    const wave::TempFolder folder;
    const std::string empty = folder.write("empty.wav", wave::file16({}));

    const Outcome run = program::run({"--format", "json", empty});

    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(json::parse(run.out).at("alone").at(0).at("reason"), "too short");
}

TEST(VxlSync, DoesNotMatchAFileWithItself)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("once.wav", recordingOf(concert, 0, 10));

    const Outcome run = program::run({"--format", "json", path, path});

    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(json::parse(run.out).at("alone").size(), 1u);
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
    EXPECT_EQ(members.at(0).at("path"), two);
    EXPECT_EQ(members.at(1).at("path"), one);
    EXPECT_NEAR(members.at(1).at("offsetSeconds").get<double>(), secondsOf(50), tolerance);
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
    constexpr double oneMillisecond = 0.001;
    for (const auto& entry : truth.items())
        EXPECT_NEAR(offsets.at(folder + entry.key()), entry.value().get<double>(), oneMillisecond);
    ASSERT_EQ(result.at("alone").size(), 1u);
    EXPECT_EQ(result.at("alone").at(0).at("name"), "elsewhere");
}

} // namespace
