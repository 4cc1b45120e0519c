#include "Paths.h"

#include <filesystem>
#include <map>
#include <system_error>

namespace vxlsync
{

namespace
{

std::string identityOf(const std::string& path)
{
    std::error_code error;
    const std::filesystem::path canonical = std::filesystem::canonical(path, error);
    return error ? path : canonical.string();
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
    std::map<std::string, std::string> firsts;
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

std::size_t findPath(const std::vector<std::string>& paths, const std::string& wanted)
{
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (paths[i] == wanted || identityOf(paths[i]) == identityOf(wanted)) return i;
    }
    // The bare name, where it is the only one of its kind.
    std::size_t found = paths.size();
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const std::filesystem::path path(paths[i]);
        if (path.filename() != wanted && path.stem() != wanted) continue;
        if (found != paths.size()) return paths.size();
        found = i;
    }
    return found;
}

} // namespace vxlsync
