#include "job/Machine.h"

#include <algorithm>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace vxlsync
{

namespace
{

// Of a machine that does not say what it has.
constexpr std::size_t assumedMemoryBytes = std::size_t{4} << 30U;

} // namespace

std::size_t threadsOf(const Options& options)
{
    if (options.threads > 0) return options.threads;
    return std::max(1U, std::thread::hardware_concurrency());
}

std::size_t machineMemory()
{
#ifdef _WIN32
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    GlobalMemoryStatusEx(&status);
    return static_cast<std::size_t>(status.ullTotalPhys);
#else
    // Both are negative where they are not known.
    const long pages = std::max(0L, sysconf(_SC_PHYS_PAGES));
    const long pageBytes = std::max(0L, sysconf(_SC_PAGE_SIZE));
    return static_cast<std::size_t>(pages) * static_cast<std::size_t>(pageBytes);
#endif
}

std::size_t memoryOf(const Options& options, std::size_t machineBytes)
{
    if (options.memoryBytes > 0) return options.memoryBytes;
    // The rest is for the system and whatever else runs.
    return std::max((machineBytes > 0 ? machineBytes : assumedMemoryBytes) / 4 * 3,
                    leastMemoryBytes);
}

} // namespace vxlsync
