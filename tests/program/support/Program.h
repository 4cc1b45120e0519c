#ifndef VXL_SYNC_TESTS_PROGRAM_H
#define VXL_SYNC_TESTS_PROGRAM_H

#include <sys/types.h>

#include <string>
#include <vector>

#include "Wave.h"

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
// The same for another program, by its path.
Outcome runProgram(const std::string& path, const std::vector<std::string>& arguments);
// The same after commands of the shell, such as "ulimit -v 100000".
Outcome runAfter(const std::string& commands, const std::vector<std::string>& arguments);
// The same with standard output going to the file, which `out` does not repeat.
Outcome runInto(const std::string& outPath, const std::vector<std::string>& arguments);
// The same with a terminal as standard error. The terminal turns each newline into "\r\n". Once the
// first letter has come, the signal is sent, unless it is 0. A terminal of no columns does not say
// how wide it is.
Outcome runOnTerminal(const std::vector<std::string>& arguments, int signalNumber = 0,
                      unsigned short columns = 0);

// The program while it runs, both its streams going to files.
class Running
{
public:
    explicit Running(const std::vector<std::string>& arguments);
    // Kills it if nobody has waited for its end.
    ~Running();
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    bool isRunning() const;
    // Waits until something stands on standard error, or the program ends without.
    void waitForError() const;
    Outcome finish();

private:
    const wave::TempFolder folder;

public:
    const pid_t id;

private:
    bool ended = false;
};

} // namespace program

#endif
