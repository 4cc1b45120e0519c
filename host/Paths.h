#ifndef VXL_SYNC_PATHS_H
#define VXL_SYNC_PATHS_H

#include <cstddef>
#include <string>
#include <vector>

namespace vxlsync::host
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

// Index of the path that the user means: by the same path, another path to the same file, or the
// file's bare name with or without extension. The number of paths if there is none or more than
// one.
std::size_t findPath(const std::vector<std::string>& paths, const std::string& wanted);

} // namespace vxlsync::host

#endif
