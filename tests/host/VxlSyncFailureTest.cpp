#include <filesystem>

#include <sys/stat.h>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Program.h"
#include "Sounds.h"
#include "Wave.h"

namespace
{

using nlohmann::json;
using program::Outcome;
using testing::EndsWith;
using testing::HasSubstr;

// The reason that the program gives for its one file.
std::string reasonFor(const std::string& path)
{
    const json failed = json::parse(program::run({"--format", "json", path}).out).at("failed");
    if (failed.size() != 1 || failed.at(0).at("path") != path) return failed.dump();
    return failed.at(0).at("reason");
}

std::string writeWithRate(const wave::TempFolder& folder, std::uint32_t sampleRate)
{
    return folder.write("rate.wav", wave::file16(std::vector<int>(100, 0), sampleRate));
}

TEST(VxlSyncFailure, EndsWithThreeAndListsTheFileBesideTheResult)
{
    const wave::TempFolder folder;
    const std::string first = folder.write("first.wav", sounds::recordingOf(12345, 0, 10));
    const std::string second = folder.write("second.wav", sounds::recordingOf(12345, 40, 10));
    const std::string missing = folder / "missing.wav";

    const Outcome run = program::run({first, missing, second});

    EXPECT_EQ(run.exitCode, 3);
    // 40 frames of 0.032 s.
    EXPECT_EQ(run.out, "Group 1: 2 recordings\n       0.000 s  first   " + first +
                           "\n       1.280 s  second  " + second + "\n\nFailed: 1 file\n  " +
                           missing + ": does not exist\n");
    EXPECT_THAT(run.err, EndsWith("vxl-sync: " + missing + ": does not exist\n"));
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

TEST(VxlSyncFailure, NamesAFileThatTheLibrarySkips)
{
    const wave::TempFolder folder;

    EXPECT_EQ(reasonFor(folder.write("loud.WAV", sounds::recordingOf(1, 0, 1))),
              "name does not end in .wav");
}

TEST(VxlSyncFailure, NamesAFolder)
{
    const wave::TempFolder folder;
    const std::string path = folder / "folder.wav";
    std::filesystem::create_directory(path);

    EXPECT_EQ(reasonFor(path), "is not a regular file");
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

    EXPECT_EQ(reasonFor(writeWithRate(folder, 7999)), "sample rate other than 8000 Hz");
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

TEST(VxlSyncFailure, PrintsHelpAndVersionOnStandardOutput)
{
    const Outcome help = program::run({"--help"});
    const Outcome version = program::run({"--version"});

    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, HasSubstr("Exit codes:\n  0  every file is in a group"));
    EXPECT_EQ(help.err, "");
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_THAT(version.out, testing::StartsWith("vxl-sync "));
}

} // namespace
