#include "Limits.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HOSTILE_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) ||                         \
    __has_feature(memory_sanitizer)
#define HOSTILE_SANITIZED
#endif
#endif

namespace hostile
{

namespace
{

#ifdef HOSTILE_SANITIZED
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

#ifdef NDEBUG
constexpr bool isOptimised = true;
#else
constexpr bool isOptimised = false;
#endif

// Long enough for a slow machine and short enough to tell a hang from work.
constexpr unsigned int secondsUntilHang = 120;
constexpr std::size_t bytesPerKilobyte = 1024;

// A line of the process's own status, in bytes; 0 where the system has none.
std::size_t statusBytes(const std::string& name)
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::size_t kilobytes = 0;
        if (word == name + ":" && status >> kilobytes) return kilobytes * bytesPerKilobyte;
    }
    return 0;
}

void boundMemory(std::size_t bytes)
{
    rlimit limit{};
    getrlimit(RLIMIT_DATA, &limit);
    limit.rlim_cur = statusBytes("VmData") + bytes;
    setrlimit(RLIMIT_DATA, &limit);
}

[[noreturn]] void runAlone(const Limits& limits, const std::function<void()>& body)
{
    alarm(secondsUntilHang);
    if (!isSanitized) boundMemory(limits.bytes);
    try {
        body();
    } catch (const std::exception& exception) {
        ADD_FAILURE() << "threw " << exception.what();
    } catch (...) {
        ADD_FAILURE() << "threw what is no exception of the standard library";
    }
    std::cout.flush();
    std::fflush(nullptr);
    // Not _exit: what leaked is looked for on the way out.
    std::exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
}

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

} // namespace

bool isMeasured()
{
    return isOptimised && refusesMemory();
}

bool refusesMemory()
{
    if (isSanitized) return false;
    // Emulators take the limit and do not heed it.
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        constexpr std::size_t probe = std::size_t{64} << 20u;
        boundMemory(probe / 2);
        const void* memory =
            mmap(nullptr, probe, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        _exit(memory == MAP_FAILED ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == EXIT_SUCCESS;
}

void withinLimits(const std::function<void()>& body)
{
    withinLimits(Limits(), body);
}

void withinLimits(const Limits& limits, const std::function<void()>& body)
{
    const bool areHeld = isMeasured();
    const std::size_t bytesBefore = statusBytes("VmRSS");
    // What is still in a buffer would come twice.
    std::cout.flush();
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0) << "fork: errno " << errno;
    if (child == 0) runAlone(limits, body);

    int status = 0;
    rusage usage{};
    ASSERT_EQ(child, wait4(child, &status, 0, &usage));

    ASSERT_FALSE(WIFSIGNALED(status)) << "ended by signal " << WTERMSIG(status);
    ASSERT_EQ(EXIT_SUCCESS, WEXITSTATUS(status)) << "its process failed, see above";
    if (!areHeld) return;
    EXPECT_LE(secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime), limits.seconds);
    EXPECT_LE(static_cast<std::size_t>(usage.ru_maxrss) * bytesPerKilobyte,
              bytesBefore + limits.bytes);
}

} // namespace hostile
