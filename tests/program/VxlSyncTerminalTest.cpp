#include <signal.h>

#include <gmock/gmock.h>

#include "LongJob.h"
#include "Program.h"
#include "ProgressBar.h"
#include "Sounds.h"
#include "Wave.h"

namespace
{

using program::LongJob;
using program::Outcome;
using testing::HasSubstr;
using testing::Not;
using vxlsync::host::eraseLine;

// Whatever the tests themselves run on.
class VxlSyncTerminal : public testing::Test
{
protected:
    void SetUp() override { setenv("TERM", "xterm", 1); }
};

TEST_F(VxlSyncTerminal, ShowsABarOnATerminal)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("short.wav", sounds::recordingOf(1, 0, 5));

    const Outcome run = program::runOnTerminal({path});

    EXPECT_THAT(run.err, HasSubstr("Reading     ["));
    EXPECT_THAT(run.err, HasSubstr("Comparing   [####"));
    EXPECT_EQ(run.exitCode, 4);
}

TEST_F(VxlSyncTerminal, ShowsANarrowBarOnANarrowTerminal)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("short.wav", sounds::recordingOf(1, 0, 5));

    const Outcome run = program::runOnTerminal({path}, 0, 42);

    EXPECT_THAT(run.err, HasSubstr("Reading     [.......]"));
}

TEST_F(VxlSyncTerminal, ShowsNoBarThatTheTerminalCannotTakeAway)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("short.wav", sounds::recordingOf(1, 0, 5));
    setenv("TERM", "dumb", 1);

    EXPECT_EQ(program::runOnTerminal({path}).err, "");
}

TEST_F(VxlSyncTerminal, LeavesNothingOfTheBarBehind)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("short.wav", sounds::recordingOf(1, 0, 5));

    const Outcome run = program::runOnTerminal({path});

    EXPECT_THAT(run.err, testing::EndsWith(eraseLine));
}

TEST_F(VxlSyncTerminal, TakesTheBarAwayWhenItIsInterrupted)
{
    const LongJob job;

    for (const int number : {SIGINT, SIGTERM}) {
        const Outcome run = program::runOnTerminal(job.arguments, number);

        // 130 and 143, as a shell shows a program that these signals ended.
        EXPECT_EQ(run.exitCode, 128 + number);
        EXPECT_EQ(run.out, "");
        EXPECT_THAT(run.err, testing::StartsWith("Reading     ["));
        EXPECT_THAT(run.err, testing::EndsWith(eraseLine));
    }
}

TEST_F(VxlSyncTerminal, DrawsABarAsWideAsMostWhereItIsWantedInAFile)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("short.wav", sounds::recordingOf(1, 0, 5));

    const Outcome run = program::run({"--progress", "bar", path});

    EXPECT_THAT(run.err, HasSubstr("Reading     [" + std::string(40, '.') + "]"));
}

TEST_F(VxlSyncTerminal, KeepsTheBarOutOfAFile)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("short.wav", sounds::recordingOf(1, 0, 5));

    const Outcome run = program::run({path});

    EXPECT_THAT(run.err, Not(HasSubstr("[")));
    EXPECT_THAT(run.err, Not(HasSubstr("\r")));
}

} // namespace
