#ifndef VXL_SYNC_TESTS_PROGRAM_H
#define VXL_SYNC_TESTS_PROGRAM_H

#include <string>
#include <vector>

// Runs vxl-sync as a user does, in a process of its own.
namespace program
{

struct Outcome {
    // 128 and the signal's number if a signal ended it.
    int exitCode;
    std::string out;
    std::string err;
};

Outcome run(const std::vector<std::string>& arguments);
// The same with a terminal as standard error. The terminal turns each newline into "\r\n".
Outcome runOnTerminal(const std::vector<std::string>& arguments);
// The same with standard output going to the file, which `out` does not repeat.
Outcome runInto(const std::string& outPath, const std::vector<std::string>& arguments);

} // namespace program

#endif
