#include "Program.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <thread>

extern char** environ;

namespace program
{

namespace
{

void require(bool held, const std::string& what)
{
    if (!held) throw std::runtime_error("vxl-sync: cannot be run: " + what);
}

std::string textOf(const std::string& path)
{
    const wave::Bytes bytes = wave::readFile(path);
    return std::string(bytes.begin(), bytes.end());
}

// Where the two streams of the program go.
struct Streams {
    std::string outPath;
    std::string errPath;
};

Streams streamsIn(const wave::TempFolder& folder)
{
    return {folder / "out", folder / "err"};
}

pid_t start(const std::string& path, const std::vector<std::string>& arguments,
            const Streams& streams)
{
    std::string name = "vxl-sync";
    std::vector<std::string> copies(arguments);
    std::vector<char*> pointers{name.data()};
    for (std::string& copy : copies)
        pointers.push_back(copy.data());
    pointers.push_back(nullptr);

    constexpr int writing = O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY;
    posix_spawn_file_actions_t actions;
    require(posix_spawn_file_actions_init(&actions) == 0, "file actions");
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, streams.outPath.c_str(), writing, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, streams.errPath.c_str(), writing, 0600);
    pid_t child = 0;
    const int error =
        posix_spawn(&child, path.c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    require(error == 0, path);
    return child;
}

int exitCodeOf(pid_t child)
{
    int status = 0;
    require(waitpid(child, &status, 0) == child, "waitpid");
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

Outcome runProgram(const std::string& path, const std::vector<std::string>& arguments)
{
    const wave::TempFolder folder;
    const Streams streams = streamsIn(folder);
    const int exitCode = exitCodeOf(start(path, arguments, streams));
    return {exitCode, textOf(streams.outPath), textOf(streams.errPath)};
}

Outcome run(const std::vector<std::string>& arguments)
{
    return runProgram(VXL_SYNC_PROGRAM, arguments);
}

Outcome runAfter(const std::string& commands, const std::vector<std::string>& arguments)
{
    std::vector<std::string> shell{"-c", commands + "; exec \"$0\" \"$@\"", VXL_SYNC_PROGRAM};
    shell.insert(shell.end(), arguments.begin(), arguments.end());
    return runProgram("/bin/sh", shell);
}

Outcome runInto(const std::string& outPath, const std::vector<std::string>& arguments)
{
    const wave::TempFolder folder;
    const Streams streams{outPath, folder / "err"};
    const int exitCode = exitCodeOf(start(VXL_SYNC_PROGRAM, arguments, streams));
    return {exitCode, std::string(), textOf(streams.errPath)};
}

Outcome runOnTerminal(const std::vector<std::string>& arguments, int signalNumber,
                      unsigned short columns)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    require(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0, "no terminal");
    const std::string terminalPath = ptsname(terminal);
    // Held open, so that the terminal does not end before the program has opened it.
    const int ours = open(terminalPath.c_str(), O_RDWR | O_NOCTTY);
    require(ours >= 0, terminalPath);
    winsize size = {};
    size.ws_col = columns;
    require(ioctl(ours, TIOCSWINSZ, &size) == 0, terminalPath);

    const wave::TempFolder folder;
    const Streams streams{folder / "out", terminalPath};
    const pid_t child = start(VXL_SYNC_PROGRAM, arguments, streams);
    close(ours);
    // A terminal holds little, so it is read while the program runs; reading fails when the program
    // has ended.
    Outcome result{0, std::string(), std::string()};
    char bytes[4096];
    for (ssize_t count = read(terminal, bytes, sizeof(bytes)); count > 0;
         count = read(terminal, bytes, sizeof(bytes))) {
        if (signalNumber != 0 && result.err.empty()) kill(child, signalNumber);
        result.err.append(bytes, static_cast<std::size_t>(count));
    }
    result.exitCode = exitCodeOf(child);
    close(terminal);
    result.out = textOf(streams.outPath);
    return result;
}

Running::Running(const std::vector<std::string>& arguments)
    : id(start(VXL_SYNC_PROGRAM, arguments, streamsIn(folder)))
{
}

Running::~Running()
{
    if (ended) return;
    kill(id, SIGKILL);
    waitpid(id, nullptr, 0);
}

bool Running::isRunning() const
{
    // Looks without waiting, and leaves the end to be waited for.
    siginfo_t state{};
    require(waitid(P_PID, static_cast<id_t>(id), &state, WEXITED | WNOHANG | WNOWAIT) == 0,
            "waitid");
    return state.si_pid == 0;
}

void Running::waitForError() const
{
    constexpr std::chrono::milliseconds pause(2);
    while (isRunning() && textOf(streamsIn(folder).errPath).empty())
        std::this_thread::sleep_for(pause);
}

Outcome Running::finish()
{
    const int exitCode = exitCodeOf(id);
    ended = true;
    const Streams streams = streamsIn(folder);
    return {exitCode, textOf(streams.outPath), textOf(streams.errPath)};
}

} // namespace program
