#include "EndOnSignal.h"

#include <signal.h>

#include <cstdlib>

#include <gmock/gmock.h>

// There in builds that count which lines run, and loses its counts where nobody asks for them.
extern "C" void __gcov_dump() __attribute__((weak));

namespace
{

using testing::ExitedWithCode;
using testing::KilledBySignal;
using vxlsync::host::endAtOnceOnSignals;

void keepCounts()
{
    if (__gcov_dump != nullptr) static_cast<void>(std::at_quick_exit(__gcov_dump));
}

void endBySignal(int number, bool barOnTerminal)
{
    keepCounts();
    endAtOnceOnSignals(barOnTerminal);
    raise(number);
}

TEST(EndOnSignalDeathTest, EndTheProcessWithTheCodesOfAShell)
{
    EXPECT_EXIT(endBySignal(SIGINT, false), ExitedWithCode(130), "^$");
    EXPECT_EXIT(endBySignal(SIGTERM, false), ExitedWithCode(143), "^$");
}

TEST(EndOnSignalDeathTest, TakeTheBarAwayFirst)
{
    EXPECT_EXIT(endBySignal(SIGINT, true), ExitedWithCode(130), "^\r\x1b\\[K$");
    EXPECT_EXIT(endBySignal(SIGTERM, true), ExitedWithCode(143), "^\r\x1b\\[K$");
}

TEST(EndOnSignalDeathTest, LeaveAClosedPipeToTheSystem)
{
    const auto endByPipe = [] {
        signal(SIGPIPE, SIG_IGN);
        endBySignal(SIGPIPE, true);
    };

    EXPECT_EXIT(endByPipe(), KilledBySignal(SIGPIPE), "^$");
}

} // namespace
