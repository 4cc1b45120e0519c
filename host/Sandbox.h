#ifndef VXL_SYNC_SANDBOX_H
#define VXL_SYNC_SANDBOX_H

namespace vxlsync::host
{

// What holds for the process from now on.
struct Confinement {
    // Version of Landlock that the kernel offers, and by which files and TCP are closed; 0 for
    // none.
    int landlockVersion = 0;
    // True if the kernel refuses system calls that the program has no use for.
    bool callsFiltered = false;
};

// Gives up, for this process and all threads to come, what lining up recordings does not need:
// opening a file for writing, making, removing, renaming or changing one, network and sockets,
// starting programs, and laying hands on other processes. What is open stays open, and reading
// stays free. So a file that takes over a decoder gains nothing but what the program could read.
// Each part holds only where the kernel has it. Requires that no thread has been started.
Confinement confine();

// The two parts of it. The version that holds, or 0; requires that no thread has been started.
int confineByLandlock();
bool filterCalls();

} // namespace vxlsync::host

#endif
