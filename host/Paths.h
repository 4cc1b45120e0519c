#ifndef VXL_SYNC_PATHS_H
#define VXL_SYNC_PATHS_H

#include <string>
#include <vector>

namespace vxlsync
{

// Paths to work on, and those left out because an earlier one leads to the same file.
struct DistinctPaths {
    struct Repeat {
        std::string path;
        // The path that was kept.
        std::string first;
    };

    std::vector<std::string> kept;
    std::vector<Repeat> repeats;
};

// Sorts out paths that lead to one file, links followed. A recording taken twice would match
// itself, and a group of one recording would look like a success.
DistinctPaths distinctPaths(const std::vector<std::string>& paths);

// True if the library looks at a file of this name at all.
bool hasWavExtension(const std::string& path);

} // namespace vxlsync

#endif
