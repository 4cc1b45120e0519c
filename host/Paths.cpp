#include "Paths.h"

#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

namespace vxlsync
{

namespace
{

// Names that the library skips are compared as they are: a link that it takes must not fall to one
// that it does not.
std::pair<bool, std::string> identityOf(const std::string& path)
{
    if (!hasWavExtension(path)) return {false, path};
    std::error_code error;
    const std::filesystem::path canonical = std::filesystem::canonical(path, error);
    return {true, error ? path : canonical.string()};
}

} // namespace

bool hasWavExtension(const std::string& path)
{
    const std::string extension = ".wav";
    return path.size() >= extension.size() &&
           path.compare(path.size() - extension.size(), extension.size(), extension) == 0;
}

DistinctPaths distinctPaths(const std::vector<std::string>& paths)
{
    DistinctPaths result;
    std::map<std::pair<bool, std::string>, std::string> firsts;
    for (const std::string& path : paths) {
        const auto entry = firsts.emplace(identityOf(path), path);
        if (entry.second) {
            result.kept.push_back(path);
        } else {
            result.repeats.push_back({path, entry.first->second});
        }
    }
    return result;
}

} // namespace vxlsync
