#include "Program.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "Wave.h"

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

pid_t start(const std::vector<std::string>& arguments, const Streams& streams)
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
        posix_spawn(&child, VXL_SYNC_PROGRAM, &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    require(error == 0, VXL_SYNC_PROGRAM);
    return child;
}

int exitCodeOf(pid_t child)
{
    int status = 0;
    require(waitpid(child, &status, 0) == child, "waitpid");
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

Outcome run(const std::vector<std::string>& arguments)
{
    const wave::TempFolder folder;
    const Streams streams{folder / "out", folder / "err"};
    const int exitCode = exitCodeOf(start(arguments, streams));
    return {exitCode, textOf(streams.outPath), textOf(streams.errPath)};
}

Outcome runInto(const std::string& outPath, const std::vector<std::string>& arguments)
{
    const wave::TempFolder folder;
    const Streams streams{outPath, folder / "err"};
    const int exitCode = exitCodeOf(start(arguments, streams));
    return {exitCode, std::string(), textOf(streams.errPath)};
}

Outcome runOnTerminal(const std::vector<std::string>& arguments)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    require(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0, "no terminal");
    const std::string terminalPath = ptsname(terminal);
    // Held open, so that the terminal does not end before the program has opened it.
    const int ours = open(terminalPath.c_str(), O_RDWR | O_NOCTTY);
    require(ours >= 0, terminalPath);

    const wave::TempFolder folder;
    const Streams streams{folder / "out", terminalPath};
    const pid_t child = start(arguments, streams);
    close(ours);
    // A terminal holds little, so it is read while the program runs; reading fails when the program
    // has ended.
    Outcome result{0, std::string(), std::string()};
    char bytes[4096];
    for (ssize_t count = read(terminal, bytes, sizeof(bytes)); count > 0;
         count = read(terminal, bytes, sizeof(bytes))) {
        result.err.append(bytes, static_cast<std::size_t>(count));
    }
    result.exitCode = exitCodeOf(child);
    close(terminal);
    result.out = textOf(streams.outPath);
    return result;
}

} // namespace program
