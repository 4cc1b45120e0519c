#include "Sandbox.h"

#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdint>

namespace vxlsync::host
{

namespace
{

// The rule set of Landlock as the kernel takes it. The build's headers may be older than the kernel
// that the program runs on, so what the versions have brought is spelt out here. A kernel takes a
// longer structure than it knows as long as the rest is zero.
struct Ruleset {
    std::uint64_t files;
    std::uint64_t network;
    std::uint64_t scopes;
};

// What a version of Landlock brought.
struct Addition {
    int version;
    Ruleset rights;
};

constexpr std::uint64_t bit(unsigned int number)
{
    return std::uint64_t{1} << number;
}

// Bits 2 and 3 are reading files and folders, which stays free.
constexpr std::uint64_t firstFileRights =
    bit(0) |                            // to execute
    bit(1) |                            // to write
    bit(4) | bit(5) |                   // to remove folders, files
    bit(6) | bit(7) | bit(8) | bit(9) | // to make devices, folders, files, sockets
    bit(10) | bit(11) | bit(12);        // to make pipes, block devices, links
constexpr std::array additions{
    Addition{1, {firstFileRights, 0, 0}}, Addition{2, {bit(13), 0, 0}}, // to move between folders
    Addition{3, {bit(14), 0, 0}},                                       // to truncate
    Addition{4, {0, bit(0) | bit(1), 0}}, // to bind TCP, to connect it
    Addition{5, {bit(15), 0, 0}},         // to command devices
    Addition{6, {0, 0, bit(0) | bit(1)}}, // abstract sockets and signals of other processes
};

} // namespace

int confineByLandlock()
{
#ifdef SYS_landlock_restrict_self
    constexpr unsigned long askForVersion = 1;
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, askForVersion);
    if (version < 1) return 0;
    Ruleset ruleset{};
    for (const Addition& addition : additions) {
        if (addition.version > version) break;
        ruleset.files |= addition.rights.files;
        ruleset.network |= addition.rights.network;
        ruleset.scopes |= addition.rights.scopes;
    }
    // A set without rules refuses all that it handles.
    const long set = syscall(SYS_landlock_create_ruleset, &ruleset, sizeof ruleset, 0);
    if (set < 0) return 0;
    // The kernel asks for it, so that no program with rights of its own is confused by ours.
    const bool confined = prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                          syscall(SYS_landlock_restrict_self, set, 0) == 0;
    close(static_cast<int>(set));
    return confined ? static_cast<int>(version) : 0;
#else
    return 0;
#endif
}

} // namespace vxlsync::host
