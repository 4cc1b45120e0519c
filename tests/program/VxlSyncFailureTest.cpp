#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "LongJob.h"
#include "Program.h"
#include "Sounds.h"
#include "Wave.h"

namespace
{

using nlohmann::json;
using program::Outcome;
using testing::EndsWith;
using testing::HasSubstr;

// The reason that the program gives for its one file, read by the library's own reader.
std::string reasonFor(const std::string& path)
{
    const json failed =
        json::parse(program::run({"--native", "--format", "json", path}).out).at("failed");
    if (failed.size() != 1 || failed.at(0).at("path") != path) return failed.dump();
    return failed.at(0).at("reason");
}

std::vector<std::string> with(std::vector<std::string> options,
                              const std::vector<std::string>& more)
{
    options.insert(options.end(), more.begin(), more.end());
    return options;
}

std::string writeWithRate(const wave::TempFolder& folder, std::uint32_t sampleRate)
{
    return folder.write("rate.wav", wave::file16(std::vector<int>(100, 0), sampleRate));
}

TEST(VxlSyncFailure, EndsWithThreeAndListsTheFileOnceBesideTheResult)
{
    const wave::TempFolder folder;
    const std::string first = folder.write("first.wav", sounds::recordingOf(12345, 0, 10));
    const std::string second = folder.write("second.wav", sounds::recordingOf(12345, 40, 10));
    const std::string missing = folder / "missing.wav";

    const Outcome run = program::run({first, missing, second});

    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.out, HasSubstr("Group 1: 2 recordings\n"));
    EXPECT_THAT(run.out, EndsWith("\n\nFailed: 1 file\n  " + missing + ": does not exist\n"));
    EXPECT_EQ(run.err, "");
}

TEST(VxlSyncFailure, SaysWhyAFileOfAnyFormatCannotBeRead)
{
    const wave::TempFolder folder;
    const std::string text = folder.write("text.mp4", wave::Bytes(1000, 'x'));
    const std::string pipe = folder / "pipe.mp4";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);

    const json failed =
        json::parse(program::run({"--format", "json", text, pipe}).out).at("failed");

    ASSERT_EQ(failed.size(), 2u);
    EXPECT_EQ(failed.at(0).at("reason"),
              "is in no format that can be read, or has lost its start or its end");
    EXPECT_EQ(failed.at(1).at("reason"), "is not a regular file");
}

TEST(VxlSyncFailure, TakesNoPathForANetworkAddress)
{
    const json failed =
        json::parse(program::run({"--format", "json", "http://localhost/a.wav"}).out).at("failed");

    EXPECT_EQ(failed.at(0).at("reason"), "does not exist");
}

TEST(VxlSyncFailure, EndsWithTwoForAFileThatIsNotAmongTheRecordings)
{
    EXPECT_EQ(program::run({"--reference", "b.wav", "a.wav"}).exitCode, 2);
    EXPECT_EQ(program::run({"--fix", "b.wav=1", "a.wav"}).exitCode, 2);
    EXPECT_EQ(program::run({"--apart", "a.wav,b.wav", "a.wav"}).exitCode, 2);
}

TEST(VxlSyncFailure, KeepsTheOrderOfTheCommandLine)
{
    const wave::TempFolder folder;
    const std::string later = folder / "z.wav";
    const std::string skipped = folder / "m.mp3";
    const std::string earlier = folder / "a.wav";

    const Outcome run = program::run({"--format", "json", later, skipped, earlier});

    const json failed = json::parse(run.out).at("failed");
    ASSERT_EQ(failed.size(), 3u);
    EXPECT_EQ(failed.at(0).at("path"), later);
    EXPECT_EQ(failed.at(1).at("path"), skipped);
    EXPECT_EQ(failed.at(2).at("path"), earlier);
}

TEST(VxlSyncFailure, NamesAFileThatDoesNotExist)
{
    const wave::TempFolder folder;

    EXPECT_EQ(reasonFor(folder / "gone.wav"), "does not exist");
}

TEST(VxlSyncFailure, NamesAFolder)
{
    const wave::TempFolder folder;
    const std::string path = folder / "folder.wav";
    std::filesystem::create_directory(path);

    EXPECT_EQ(reasonFor(path), "is a folder; give the files in it");
}

TEST(VxlSyncFailure, DoesNotWaitForAPipe)
{
    const wave::TempFolder folder;
    const std::string path = folder / "pipe.wav";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);

    EXPECT_EQ(reasonFor(path), "is not a regular file");
}

TEST(VxlSyncFailure, NamesWhatTheSystemSaysOfAPathItCannotOpen)
{
    const wave::TempFolder folder;

    EXPECT_EQ(reasonFor(folder / (std::string(300, 'x') + ".wav")),
              "cannot be opened: File name too long");
}

TEST(VxlSyncFailure, NamesAFileWithoutAWavHeader)
{
    const wave::TempFolder folder;

    EXPECT_EQ(reasonFor(folder.write("text.wav", wave::Bytes(1000, 'x'))),
              "is not a WAV file that can be read");
}

TEST(VxlSyncFailure, NamesAnEmptyFile)
{
    const wave::TempFolder folder;

    EXPECT_EQ(reasonFor(folder.write("empty.wav", {})), "is not a WAV file that can be read");
}

TEST(VxlSyncFailure, NamesTheSampleRateThatItSaw)
{
    const wave::TempFolder folder;

    EXPECT_EQ(reasonFor(writeWithRate(folder, 44100)), "sample rate 44100 Hz, expected 8000 Hz");
}

TEST(VxlSyncFailure, NamesASampleRateThatNoRecorderUses)
{
    const wave::TempFolder folder;

    EXPECT_EQ(reasonFor(writeWithRate(folder, 7999)), "sample rate 7999 Hz, expected 8000 Hz");
}

TEST(VxlSyncFailure, KnowsTheSampleRateOfAPathWithANewline)
{
    const wave::TempFolder folder;
    const std::string path =
        folder.write("two\nlines.wav", wave::file16(std::vector<int>(100, 0), 16000));

    EXPECT_EQ(reasonFor(path), "sample rate 16000 Hz, expected 8000 Hz");
}

TEST(VxlSyncFailure, EndsWithTwoForACommandLineThatItDoesNotUnderstand)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {"--format", "xml", "a.wav"}, {"--loud", "a.wav"}}) {
        const Outcome run = program::run(arguments);

        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err, "");
    }
}

TEST(VxlSyncFailure, EndsWithTwoThoughAFileIsUnreadable)
{
    EXPECT_EQ(program::run({"gone.wav", "--format", "xml"}).exitCode, 2);
}

TEST(VxlSyncFailure, EndsWithOneWhenTheResultCannotBeWritten)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("short.wav", wave::file16(std::vector<int>(100, 0)));

    const Outcome run = program::runInto("/dev/full", {path});

    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.err, HasSubstr("vxl-sync: standard output: the result could not be written\n"));
}

// The first file that is opened then stands where standard output was.
TEST(VxlSyncFailure, WritesNothingIntoARecordingWhereOutputIsClosed)
{
    const wave::TempFolder folder;
    const wave::Bytes bytes = wave::file16(std::vector<int>(100, 0));
    const std::string path = folder.write("short.wav", bytes);

    for (const char* closed : {"exec 1>&-", "exec 1>&- 2>&-"}) {
        EXPECT_EQ(program::runAfter(closed, {path}).exitCode, 1) << closed;
        EXPECT_EQ(wave::readFile(path), bytes) << closed;
    }
}

TEST(VxlSyncFailure, EndsWithTwoForAnEmptyName)
{
    const Outcome run = program::run({"a.wav", ""});

    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err, "vxl-sync: a file with an empty name cannot be read\n");
}

// Half a second at most, and the codes that a shell shows.
TEST(VxlSyncFailure, EndsAtOnceWhenItIsAskedTo)
{
    const program::LongJob job;
    for (const int number : {SIGINT, SIGTERM}) {
        program::Running running(with({"--progress", "plain"}, job.arguments));
        running.waitForError();

        const auto asked = std::chrono::steady_clock::now();
        kill(running.id, number);
        const Outcome run = running.finish();
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - asked;

        EXPECT_EQ(run.exitCode, 128 + number);
        EXPECT_EQ(run.out, "");
        EXPECT_LT(passed.count(), 0.5);
    }
}

// The reader has gone before anything is written; whoever started the program had the signal off.
TEST(VxlSyncFailure, EndsInSilenceWhenNobodyReads)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("short.wav", wave::file16(std::vector<int>(100, 0)));
    const std::string command = "trap '' PIPE; { sleep 0.2; " VXL_SYNC_PROGRAM " " + path + " 2>" +
                                (folder / "err") + "; echo $? >" + (folder / "code") + "; } | true";

    ASSERT_EQ(std::system(command.c_str()), 0);

    EXPECT_THAT(wave::readFile(folder / "code"), testing::ElementsAre('1', '4', '1', '\n'));
    EXPECT_THAT(wave::readFile(folder / "err"), testing::IsEmpty());
}

TEST(VxlSyncFailure, RefusesAStartThatIsNoTime)
{
    const Outcome run = program::run({"--fix", "a.wav=1e308", "--format", "json", "a.wav"});

    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("a.wav: 1e308 is no time within 100 days of 0"));
}

TEST(VxlSyncFailure, EndsWithTwoForOptionsThatContradictEachOther)
{
    const Outcome apart = program::run({"--apart", "a.wav,a", "a.wav"});
    const Outcome fixed = program::run({"--fix", "a.wav=1", "--fix", "a=2", "a.wav"});

    EXPECT_EQ(apart.exitCode, 2);
    EXPECT_EQ(apart.err, "vxl-sync: --apart: a.wav and a are the same recording\n");
    EXPECT_EQ(fixed.exitCode, 2);
    EXPECT_EQ(fixed.err, "vxl-sync: --fix: a: given two starts that differ\n");
}

TEST(VxlSyncFailure, PrintsHelpAndVersionOnStandardOutput)
{
    const Outcome help = program::run({"--help"});
    const Outcome version = program::run({"--version"});

    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, HasSubstr("Exit codes:\n  0    every file is in a group"));
    EXPECT_EQ(help.err, "");
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_THAT(version.out, testing::StartsWith("vxl-sync "));
}

} // namespace
