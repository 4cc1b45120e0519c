// Gives up what vxl-sync gives up, and then tries one thing after the other. Called as
//     sandbox_probe none|landlock|filter|all FOLDER
// it writes on the first line what holds, and then a line for each attempt: its kind, what it is,
// and "refused" or "works". "Works" is said of all that is not refused: a call that fails for
// reasons of its own was let through. The folder holds what SandboxTest has put there.

#include <fcntl.h>
#include <linux/openat2.h>
#include <netinet/in.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/ptrace.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "Sandbox.h"

extern char** environ;

namespace
{

// A name, and a call that answers as system calls do: below 0 and errno.
struct Attempt {
    const char* name;
    std::function<long()> call;
};

// Calls that exist under no name in the build's headers.
constexpr long fchmodat2Call = 452;

bool isRefused(const Attempt& attempt)
{
    errno = 0;
    const bool failed = attempt.call() < 0;
    return failed && (errno == EPERM || errno == EACCES || errno == ENOSYS);
}

void write(const char* kind, const std::vector<Attempt>& attempts)
{
    for (const Attempt& attempt : attempts) {
        std::cout << kind << '/' << attempt.name << ": "
                  << (isRefused(attempt) ? "refused" : "works") << '\n';
    }
}

// What can be done through the path, and nothing beyond.
long opened(const std::string& path, int flags)
{
    const int file = open(path.c_str(), flags | O_CLOEXEC, 0600);
    if (file >= 0) close(file);
    return file;
}

long openedByRules(const std::string& path)
{
    open_how how{};
    how.flags = O_RDWR;
    return syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how);
}

// A socket on this machine's own network that does `use` with an address.
long usedSocket(int (*use)(int, const sockaddr*, socklen_t))
{
    const int opened = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (opened < 0) return opened;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(1);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const long result = use(opened, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const int error = errno;
    close(opened);
    errno = error;
    return result;
}

long pairOfSockets()
{
    int both[2];
    return socketpair(AF_UNIX, SOCK_STREAM, 0, both);
}

long forked()
{
    const pid_t child = fork();
    if (child == 0) _exit(0);
    if (child > 0) waitpid(child, nullptr, 0);
    return child;
}

long spawned(const std::string& program)
{
    std::string name = "program";
    char* arguments[] = {name.data(), nullptr};
    pid_t child = 0;
    const int error = posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ);
    errno = error;
    if (error == 0) waitpid(child, nullptr, 0);
    return error == 0 ? 0 : -1;
}

// Without a program that could take this one's place: what is not refused fails to be understood.
long executed(const std::string& path)
{
    std::string name = "script";
    char* arguments[] = {name.data(), nullptr};
    return execv(path.c_str(), arguments);
}

long openedByAThread(const std::string& path, int flags)
{
    long result = 0;
    int error = 0;
    std::thread([&] {
        result = opened(path, flags);
        error = errno;
    }).join();
    errno = error;
    return result;
}

// Something is in it.
long readFrom(const std::string& path)
{
    std::ifstream file(path);
    std::string word;
    return file >> word ? 0 : -1;
}

long listed(const std::string& path)
{
    return std::filesystem::directory_iterator(path) != std::filesystem::directory_iterator() ? 0
                                                                                              : -1;
}

void tryFiles(const std::string& folder)
{
    const std::string file = folder + "/file";
    const std::string inFolder = folder + "/folder/";
    write("files",
          {{"write", [=] { return opened(file, O_WRONLY); }},
           {"read and write", [=] { return opened(file, O_RDWR); }},
           {"append", [=] { return opened(file, O_WRONLY | O_APPEND); }},
           {"empty by opening", [=] { return opened(file, O_RDONLY | O_TRUNC); }},
           {"make", [=] { return opened(folder + "/new", O_RDONLY | O_CREAT); }},
           {"make without a name", [=] { return opened(folder, O_WRONLY | O_TMPFILE); }},
           {"make the old way", [=] { return creat((folder + "/old").c_str(), 0600); }},
           {"write in a thread", [=] { return openedByAThread(file, O_WRONLY); }},
           {"write to a device", [] { return opened("/dev/null", O_WRONLY); }},
           {"cut", [=] { return truncate(file.c_str(), 1); }},
           {"make a folder", [=] { return mkdir((folder + "/made").c_str(), 0700); }},
           {"make a pipe", [=] { return mkfifo((folder + "/pipe").c_str(), 0600); }},
           {"make a link", [=] { return symlink("x", (folder + "/link").c_str()); }},
           {"give a second name", [=] { return link(file.c_str(), (inFolder + "again").c_str()); }},
           {"rename",
            [=] { return rename((folder + "/first").c_str(), (folder + "/named").c_str()); }},
           {"move",
            [=] { return rename((folder + "/second").c_str(), (inFolder + "moved").c_str()); }},
           {"remove", [=] { return unlink((folder + "/third").c_str()); }},
           {"remove a folder", [=] { return rmdir((folder + "/empty").c_str()); }}});
}

void tryFacts(const std::string& folder)
{
    const std::string file = folder + "/file";
    write("facts",
          {{"who may use it", [=] { return chmod(file.c_str(), 0600); }},
           {"whose it is", [=] { return chown(file.c_str(), getuid(), getgid()); }},
           {"when it was used", [=] { return utimensat(AT_FDCWD, file.c_str(), nullptr, 0); }},
           {"a label", [=] { return setxattr(file.c_str(), "user.a", "b", 1, 0); }}});
}

// Calls that not every kernel has, so that a refusal need not be ours.
void tryYoungCalls(const std::string& folder)
{
    const std::string file = folder + "/file";
    write("young", {{"write by rules", [=] { return openedByRules(file); }},
                    {"who may use it",
                     [=] { return syscall(fchmodat2Call, AT_FDCWD, file.c_str(), 0600, 0); }},
                    {"queues of calls", [] { return syscall(SYS_io_uring_setup, 1, nullptr); }}});
}

void tryTalking()
{
    write("network", {{"connect", [] { return usedSocket(connect); }},
                      {"bind", [] { return usedSocket(bind); }}});
    const int device = open("/dev/null", O_RDONLY | O_CLOEXEC);
    write("sockets", {{"local", [] { return socket(AF_UNIX, SOCK_STREAM, 0); }},
                      {"network", [] { return socket(AF_INET, SOCK_DGRAM, 0); }},
                      {"pair", [] { return pairOfSockets(); }},
                      {"type into a terminal", [=] { return ioctl(device, TIOCSTI, "x"); }}});
}

void tryProcesses(const std::string& folder)
{
    write("programs", {{"become another", [=] { return executed(folder + "/script"); }},
                       {"start", [] { return spawned("/bin/true"); }}});
    write("signals", {{"the parent", [] { return kill(getppid(), 0); }}});
    write("processes",
          {{"fork", [] { return forked(); }},
           {"look into", [] { return process_vm_readv(getpid(), nullptr, 0, nullptr, 0, 0); }},
           {"trace", [] { return ptrace(PTRACE_PEEKDATA, -1, nullptr, nullptr); }},
           {"hold", [] { return syscall(SYS_pidfd_open, getpid(), 0); }}});
}

void tryWhatIsNeeded(const std::string& folder)
{
    const std::string file = folder + "/kept";
    char letter = 0;
    write("needed",
          {{"read", [=] { return readFrom(file); }},
           {"read in a thread", [=] { return openedByAThread(file, O_RDONLY); }},
           {"ask for a size", [=] { return std::filesystem::file_size(file) == 4 ? 0 : -1; }},
           {"list a folder", [=] { return listed(folder); }},
           {"signal itself", [] { return kill(getpid(), 0); }},
           {"signal its thread", [] { return syscall(SYS_tgkill, getpid(), gettid(), 0); }},
           {"draw random bytes", [&] { return getrandom(&letter, 1, 0); }}});
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3) return 2;
    const std::string kind = argv[1];
    const std::string folder = argv[2];
    vxlsync::host::Confinement holds;
    if (kind == "all") holds = vxlsync::host::confine();
    if (kind == "landlock") holds.landlockVersion = vxlsync::host::confineByLandlock();
    if (kind == "filter") holds.callsFiltered = vxlsync::host::filterCalls();
    std::cout << holds.landlockVersion << ' ' << holds.callsFiltered << '\n';
    tryFiles(folder);
    tryFacts(folder);
    tryYoungCalls(folder);
    tryTalking();
    tryProcesses(folder);
    tryWhatIsNeeded(folder);
    return 0;
}
