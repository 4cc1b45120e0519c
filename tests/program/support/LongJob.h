#ifndef VXL_SYNC_TESTS_LONGJOB_H
#define VXL_SYNC_TESTS_LONGJOB_H

#include <cstdint>
#include <string>
#include <vector>

#include "Sounds.h"
#include "Wave.h"

namespace program
{

// Recordings that take one thread so long that a test which has seen the first letter of progress
// comes in time for whatever it wants to do to the program.
class LongJob
{
public:
    LongJob()
    {
        constexpr std::uint32_t events = 12;
        constexpr std::size_t seconds = 60;
        for (std::uint32_t event = 1; event <= events; ++event) {
            arguments.push_back(folder.write(std::to_string(event) + ".wav",
                                             sounds::recordingOf(event, 0, seconds)));
        }
    }

private:
    const wave::TempFolder folder;

public:
    std::vector<std::string> arguments{"--jobs", "1"};
};

} // namespace program

#endif
