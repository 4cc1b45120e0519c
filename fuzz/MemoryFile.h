#ifndef FUZZ_MEMORYFILE_H
#define FUZZ_MEMORYFILE_H

#include <cstddef>
#include <cstdint>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

#include "Harness.h"

namespace fuzz
{

// A file without a place on disk, which goes with the object. It has a path all the same.
class MemoryFile
{
public:
    MemoryFile(const std::uint8_t* data, std::size_t size) : descriptor(memfd_create("input", 0))
    {
        require(descriptor >= 0, "a file in memory");
        require(write(descriptor, data, size) == static_cast<ssize_t>(size), "a file written");
    }
    ~MemoryFile() { close(descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

private:
    int descriptor;
};

} // namespace fuzz

#endif
