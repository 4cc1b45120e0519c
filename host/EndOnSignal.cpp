#include "EndOnSignal.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "ProgressBar.h"

namespace vxlsync::host
{

namespace
{

// What a shell adds to the number of the signal that ended a program.
constexpr int shellSignalBase = 128;

// Covers any bar, with a return to the start of the line at both ends.
constexpr std::array<char, greatestBarWidth + 2> blank = [] {
    std::array<char, greatestBarWidth + 2> letters{};
    for (char& letter : letters)
        letter = ' ';
    letters.front() = '\r';
    letters.back() = '\r';
    return letters;
}();

} // namespace

extern "C" {

static void endAtOnce(int number)
{
    std::quick_exit(shellSignalBase + number);
}

static void endWithoutBar(int number)
{
    const auto ignored = write(STDERR_FILENO, blank.data(), blank.size());
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
