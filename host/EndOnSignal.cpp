#include "EndOnSignal.h"

#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "ProgressBar.h"

namespace vxlsync::host
{

namespace
{

// What a shell adds to the number of the signal that ended a program.
constexpr int shellSignalBase = 128;

} // namespace

extern "C" {

static void endAtOnce(int number)
{
    std::quick_exit(shellSignalBase + number);
}

static void endWithoutBar(int number)
{
    const auto ignored = write(STDERR_FILENO, eraseLine, std::char_traits<char>::length(eraseLine));
    static_cast<void>(ignored);
    std::quick_exit(shellSignalBase + number);
}
}

void endAtOnceOnSignals(bool barOnTerminal)
{
    // Where a handler is refused the signal ends the program all the same.
    for (const int number : {SIGINT, SIGTERM})
        static_cast<void>(signal(number, barOnTerminal ? endWithoutBar : endAtOnce));
    static_cast<void>(signal(SIGPIPE, SIG_DFL));
}

} // namespace vxlsync::host
